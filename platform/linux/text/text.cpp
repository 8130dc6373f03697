// Conversion between wide text (UTF-32 here) and narrow text (UTF-8).
#include "base/error.h"

#include <cstring>
#include <cwchar>
#include <string>

namespace
{
constexpr char32_t REPLACEMENT = 0xFFFD;

struct CUtf8Form
{
    unsigned iLead;     // the first byte's fixed bits
    unsigned iLeadMask; // and which they are
    int iFollowing;
    char32_t iFirstCode;
};
constexpr CUtf8Form g_aForms[] = {
    {0x00, 0x80, 0, 0}, {0xC0, 0xE0, 1, 0x80}, {0xE0, 0xF0, 2, 0x800}, {0xF0, 0xF8, 3, 0x10000}};

bool IsScalar(char32_t iCode)
{
    return iCode < 0xD800 || (iCode > 0xDFFF && iCode <= 0x10FFFF);
}

void AppendUtf8(std::string& strText, char32_t iCode)
{
    const CUtf8Form* pForm = &g_aForms[3];
    while (iCode < pForm->iFirstCode)
        --pForm;
    strText += static_cast<char>(pForm->iLead | (iCode >> (6 * pForm->iFollowing)));
    for (int iByte = pForm->iFollowing - 1; iByte >= 0; --iByte)
        strText += static_cast<char>(0x80 | ((iCode >> (6 * iByte)) & 0x3F));
}

// Takes one character off the text's front. False for bytes that are none; one of them is taken then.
bool TakeUtf8(std::string_view& strText, char32_t& iCode)
{
    const auto ByteAt = [&strText](size_t iIndex) { return static_cast<unsigned char>(strText[iIndex]); };
    for (const CUtf8Form& stForm : g_aForms)
    {
        const size_t iLength = static_cast<size_t>(stForm.iFollowing) + 1;
        if ((ByteAt(0) & stForm.iLeadMask) != stForm.iLead || strText.size() < iLength)
            continue;
        iCode = ByteAt(0) & ~stForm.iLeadMask & 0xFF;
        bool bGood = true;
        for (size_t iIndex = 1; iIndex < iLength; ++iIndex)
        {
            bGood = bGood && (ByteAt(iIndex) & 0xC0) == 0x80;
            iCode = iCode << 6 | (ByteAt(iIndex) & 0x3F);
        }
        if (!bGood || iCode < stForm.iFirstCode || !IsScalar(iCode))
            break;
        strText.remove_prefix(iLength);
        return true;
    }
    strText.remove_prefix(1);
    return false;
}

bool IsKnownCodePage(UINT iCodePage)
{
    return iCodePage == CP_ACP || iCodePage == CP_UTF8;
}

// Size of the result, or its copy into the caller's room, as both conversions end. An empty result is an error.
template <class T> int GiveText(const std::basic_string<T>& strText, T* pRoom, int iRoom)
{
    const int iLength = static_cast<int>(strText.size());
    if (iRoom == 0)
        return iLength;
    if (iRoom < iLength)
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    std::copy(strText.begin(), strText.end(), pRoom);
    return iLength;
}
} // namespace

int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWCH lpWideCharStr, int cchWideChar, LPSTR lpMultiByteStr,
                        int cbMultiByte, LPCCH lpDefaultChar, LPBOOL lpUsedDefaultChar)
{
    const bool bDefault = lpDefaultChar != nullptr || lpUsedDefaultChar != nullptr;
    if (!IsKnownCodePage(CodePage) || (CodePage == CP_UTF8 && bDefault) || lpWideCharStr == nullptr ||
        cchWideChar == 0 || cchWideChar < -1 || cbMultiByte < 0 || (cbMultiByte > 0 && lpMultiByteStr == nullptr))
        return FailWith(ERROR_INVALID_PARAMETER);
    const size_t iLength = cchWideChar == -1 ? std::wcslen(lpWideCharStr) + 1 : static_cast<size_t>(cchWideChar);
    std::string strText;
    for (size_t iIndex = 0; iIndex < iLength; ++iIndex)
    {
        const char32_t iCode = static_cast<char32_t>(lpWideCharStr[iIndex]);
        if (!IsScalar(iCode) && (dwFlags & WC_ERR_INVALID_CHARS) != 0)
            return FailWith(ERROR_NO_UNICODE_TRANSLATION);
        AppendUtf8(strText, IsScalar(iCode) ? iCode : REPLACEMENT);
    }
    if (lpUsedDefaultChar != nullptr)
        *lpUsedDefaultChar = FALSE;
    return GiveText(strText, lpMultiByteStr, cbMultiByte);
}

int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCCH lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr,
                        int cchWideChar)
{
    if (!IsKnownCodePage(CodePage) || lpMultiByteStr == nullptr || cbMultiByte == 0 || cbMultiByte < -1 ||
        cchWideChar < 0 || (cchWideChar > 0 && lpWideCharStr == nullptr))
        return FailWith(ERROR_INVALID_PARAMETER);
    std::string_view strLeft(lpMultiByteStr,
                             cbMultiByte == -1 ? std::strlen(lpMultiByteStr) + 1 : static_cast<size_t>(cbMultiByte));
    std::wstring strText;
    while (!strLeft.empty())
    {
        char32_t iCode = 0;
        const bool bGood = TakeUtf8(strLeft, iCode);
        if (!bGood && (dwFlags & MB_ERR_INVALID_CHARS) != 0)
            return FailWith(ERROR_NO_UNICODE_TRANSLATION);
        strText += static_cast<wchar_t>(bGood ? iCode : REPLACEMENT);
    }
    return GiveText(strText, lpWideCharStr, cchWideChar);
}
