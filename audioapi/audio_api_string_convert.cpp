// Text helpers: code pages, ids and paths, as the platform knows them.
#include "audioapi/audio_api_string.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <objbase.h>
#include <shlwapi.h>

#include <algorithm>

std::string CAudioSTR::ToString(const std::wstring& strText, UINT iCodePage)
{
    const int iTextLen = static_cast<int>(strText.size());
    if (iTextLen == 0)
        return {};
    const int iLen = WideCharToMultiByte(iCodePage, 0, strText.c_str(), iTextLen, nullptr, 0, nullptr, nullptr);
    std::string strResult(static_cast<size_t>(std::max(iLen, 0)), '\0');
    if (iLen > 0 &&
        WideCharToMultiByte(iCodePage, 0, strText.c_str(), iTextLen, &strResult[0], iLen, nullptr, nullptr) == iLen)
        return strResult;
    AUDIOLOG_ERROR(AUDIO_BAD_DATA, "Turn wstring to string faild! CodePage[" + ToString(iCodePage) + "]");
    return {};
}

std::wstring CAudioSTR::ToWString(const std::string& strText, UINT iCodePage)
{
    const int iTextLen = static_cast<int>(strText.size());
    if (iTextLen == 0)
        return {};
    const int iLen = MultiByteToWideChar(iCodePage, 0, strText.c_str(), iTextLen, nullptr, 0);
    std::wstring strResult(static_cast<size_t>(std::max(iLen, 0)), L'\0');
    if (iLen > 0 && MultiByteToWideChar(iCodePage, 0, strText.c_str(), iTextLen, &strResult[0], iLen) == iLen)
        return strResult;
    AUDIOLOG_ERROR(AUDIO_BAD_DATA, "Turn string to wstring faild! CodePage[" + ToString(iCodePage) + "]");
    return {};
}

std::string CAudioSTR::GuidToString(const GUID& stGuid)
{
    OLECHAR aText[39] = {};
    std::string strResult;
    for (int i = 0, iLen = StringFromGUID2(stGuid, aText, 39) - 1; i < iLen; ++i)
        strResult += static_cast<char>(aText[i]); // braces, dashes and digits only
    return strResult;
}

std::string CAudioSTR::FormatPathString(const std::string& strPath)
{
    char strPathBuffer[1024] = {};
    if (AUDIO_CHECK_WIN(PathCanonicalizeA(strPathBuffer, strPath.c_str())) != 0 || strPathBuffer[0] == '\0')
        return strPath;
    return strPathBuffer;
}
