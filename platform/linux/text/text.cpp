// Conversion between wide text (UTF-32 here) and narrow text (UTF-8).
#include "base/error.h"
#include "text/utf8.h"

#include <algorithm>
#include <string>

namespace
{
constexpr char32_t REPLACEMENT = 0xFFFD;

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

int WideCharToMultiByte(UINT CodePage, DWORD, LPCWCH lpWideCharStr, int cchWideChar, LPSTR lpMultiByteStr,
                        int cbMultiByte, LPCCH, LPBOOL)
{
    if (!IsKnownCodePage(CodePage) || lpWideCharStr == nullptr || cchWideChar <= 0)
        return FailWith(ERROR_INVALID_PARAMETER);
    std::string strText;
    for (int iIndex = 0; iIndex < cchWideChar; ++iIndex)
    {
        const char32_t iCode = static_cast<char32_t>(lpWideCharStr[iIndex]);
        AppendUtf8(strText, IsScalar(iCode) ? iCode : REPLACEMENT);
    }
    return GiveText(strText, lpMultiByteStr, cbMultiByte);
}

int MultiByteToWideChar(UINT CodePage, DWORD, LPCCH lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr,
                        int cchWideChar)
{
    if (!IsKnownCodePage(CodePage) || lpMultiByteStr == nullptr || cbMultiByte <= 0)
        return FailWith(ERROR_INVALID_PARAMETER);
    std::string_view strLeft(lpMultiByteStr, static_cast<size_t>(cbMultiByte));
    std::wstring strText;
    while (!strLeft.empty())
    {
        char32_t iCode = 0;
        strText += static_cast<wchar_t>(TakeUtf8(strLeft, iCode) ? iCode : REPLACEMENT);
    }
    return GiveText(strText, lpWideCharStr, cchWideChar);
}
