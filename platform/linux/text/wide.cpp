// Text of this host, UTF-8, as the platform's wide text and back.
#include "text/wide.h"

#include "text/utf8.h"

std::wstring WideOf(const std::string& strText)
{
    std::wstring strWide(strText.size(), L'\0'); // never more characters than bytes
    const int iLength = static_cast<int>(strText.size());
    strWide.resize(
        static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, strText.data(), iLength, strWide.data(), iLength)));
    return strWide;
}

std::string NarrowOf(const WCHAR* pText, size_t iLength)
{
    std::string strNarrow;
    for (size_t i = 0; i < iLength; ++i)
        AppendUtf8(strNarrow, static_cast<char32_t>(pText[i]));
    return strNarrow;
}

std::string NarrowOf(LPCWSTR pText)
{
    return pText == nullptr ? "" : NarrowOf(pText, std::wcslen(pText));
}

bool GiveText(const std::wstring& strText, LPWSTR pBuffer, DWORD* pRoom)
{
    const auto dwLength = static_cast<DWORD>(strText.size());
    if (pBuffer == nullptr || *pRoom <= dwLength)
    {
        *pRoom = dwLength + 1;
        return false;
    }
    std::wmemcpy(pBuffer, strText.c_str(), dwLength + 1);
    *pRoom = dwLength;
    return true;
}
