// Text helpers: trimming, splitting, key and version texts, letter case.
#include "audioapi/audio_api_string.h"

#include <algorithm>
#include <utility>

namespace
{
constexpr char WHITE_SPACE[] = "\r\t\n ";

size_t FindDelimiter(const std::string& strText, const std::string& strDelimiter, INT32 iMode)
{
    if (strDelimiter.empty())
        return std::string::npos;
    return iMode == 1 ? strText.rfind(strDelimiter) : strText.find(strDelimiter);
}
} // namespace

std::string CAudioSTR::Trim(const std::string& strText)
{
    const size_t iFirst = strText.find_first_not_of(WHITE_SPACE);
    if (iFirst == std::string::npos)
        return {};
    return strText.substr(iFirst, strText.find_last_not_of(WHITE_SPACE) - iFirst + 1);
}

std::vector<std::string> CAudioSTR::Split(const std::string& strText, const std::string& strDelimiter)
{
    std::vector<std::string> vecPiece;
    size_t iStart = 0;
    while (iStart <= strText.size())
    {
        const size_t iFound = strDelimiter.empty() ? std::string::npos : strText.find(strDelimiter, iStart);
        const size_t iEnd = iFound == std::string::npos ? strText.size() : iFound;
        std::string strPiece = Trim(strText.substr(iStart, iEnd - iStart));
        if (!strPiece.empty())
            vecPiece.push_back(std::move(strPiece));
        if (iFound == std::string::npos)
            break;
        iStart = iFound + strDelimiter.size();
    }
    return vecPiece;
}

void CAudioSTR::SplitPair(const std::string& strText, std::string& strLeft, std::string& strRight,
                          const std::string& strDelimiter, INT32 iMode)
{
    const size_t iFound = FindDelimiter(strText, strDelimiter, iMode);
    const bool bFound = iFound != std::string::npos;
    // An out may be the text itself.
    std::string strBehind = bFound ? Trim(strText.substr(iFound + strDelimiter.size())) : "";
    strLeft = bFound ? Trim(strText.substr(0, iFound)) : "";
    strRight = std::move(strBehind);
}

std::string CAudioSTR::LeftOf(const std::string& strText, const std::string& strDelimiter, INT32 iMode)
{
    const size_t iFound = FindDelimiter(strText, strDelimiter, iMode);
    return Trim(strText.substr(0, iFound));
}

std::string CAudioSTR::RightOf(const std::string& strText, const std::string& strDelimiter, INT32 iMode)
{
    const size_t iFound = FindDelimiter(strText, strDelimiter, iMode);
    return Trim(iFound == std::string::npos ? strText : strText.substr(iFound + strDelimiter.size()));
}

std::string CAudioSTR::TrimDelimiter(const std::string& strText, const std::string& strDelimiter)
{
    std::string strResult = Trim(strText);
    const size_t iLen = strDelimiter.size();
    if (iLen == 0)
        return strResult;
    while (strResult.compare(0, iLen, strDelimiter) == 0)
        strResult.erase(0, iLen);
    while (strResult.size() >= iLen && strResult.compare(strResult.size() - iLen, iLen, strDelimiter) == 0)
        strResult.erase(strResult.size() - iLen);
    return strResult;
}

std::string CAudioSTR::GetKeyValue(const std::string& strText, const std::string& strKey,
                                   const std::string& strDelimiter)
{
    const size_t iFound = strText.find(strKey);
    if (iFound == std::string::npos)
        return {};
    const std::string strEntry = LeftOf(strText.substr(iFound), strDelimiter);
    const size_t iColon = strEntry.find(':');
    if (iColon == std::string::npos || Trim(strEntry.substr(0, iColon)) != Trim(strKey))
        return {};
    return Trim(strEntry.substr(iColon + 1));
}

std::string CAudioSTR::GetMaxVersion(const std::string& strA, const std::string& strB, const std::string& strSeparator)
{
    const std::vector<std::string> vecA = Split(strA, strSeparator);
    const std::vector<std::string> vecB = Split(strB, strSeparator);
    const size_t iCommon = std::min(vecA.size(), vecB.size());
    for (size_t i = 0; i < iCommon; ++i)
    {
        const INT32 iA = ToInt(vecA[i]);
        const INT32 iB = ToInt(vecB[i]);
        if (iA != iB)
            return iA > iB ? strA : strB;
    }
    return vecA.size() > vecB.size() ? strA : strB;
}

std::string CAudioSTR::ReplaceFirst(const std::string& strText, const std::string& strNew, const std::string& strOld)
{
    std::string strResult = strText;
    const size_t iFound = FindDelimiter(strText, strOld, 0);
    if (iFound != std::string::npos)
        strResult.replace(iFound, strOld.size(), strNew);
    return strResult;
}

std::string CAudioSTR::ToUpper(const std::string& strText)
{
    std::string strResult = strText;
    for (char& cLetter : strResult)
        if (cLetter >= 'a' && cLetter <= 'z')
            cLetter = static_cast<char>(cLetter - 'a' + 'A');
    return strResult;
}

std::wstring CAudioSTR::ToUpper(const std::wstring& strText)
{
    std::wstring strResult = strText;
    CharUpperW(strResult.data());
    return strResult;
}

std::string CAudioSTR::ToLower(const std::string& strText)
{
    std::string strResult = strText;
    for (char& cLetter : strResult)
        if (cLetter >= 'A' && cLetter <= 'Z')
            cLetter = static_cast<char>(cLetter - 'A' + 'a');
    return strResult;
}

std::wstring CAudioSTR::ToLower(const std::wstring& strText)
{
    std::wstring strResult = strText;
    CharLowerW(strResult.data());
    return strResult;
}
