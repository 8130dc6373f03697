// Names of this host as the platform's wide text.
#include "text/wide.h"

#include "registry/registry_text.h"

std::wstring WideOf(const std::string& strText)
{
    std::wstring strWide(strText.size(), L'\0'); // never more characters than bytes
    const int iLength = static_cast<int>(strText.size());
    strWide.resize(
        static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, strText.data(), iLength, strWide.data(), iLength)));
    return strWide;
}

std::string NarrowOf(LPCWSTR pText)
{
    return pText == nullptr ? "" : Utf8FromWide(pText, std::wcslen(pText));
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
