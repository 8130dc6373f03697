// Path text helpers.
#include <shlwapi.h>

#include "base/error.h"

#include <cstring>
#include <string>
#include <vector>

namespace
{
std::vector<std::string> Split(const std::string& strPath)
{
    std::vector<std::string> vecParts(1);
    for (const char cLetter : strPath)
    {
        if (cLetter == '\\')
            vecParts.emplace_back();
        else
            vecParts.back() += cLetter;
    }
    return vecParts;
}

// How many leading parts ".." can't remove: a drive, the root's empty part, a share's server and name.
size_t RootParts(const std::vector<std::string>& vecParts)
{
    if (vecParts.size() > 2 && vecParts[0].empty() && vecParts[1].empty())
        return 4;
    return vecParts[0].empty() || vecParts[0].back() == ':' ? 1 : 0;
}
} // namespace

BOOL PathCanonicalizeA(LPSTR pszBuf, LPCSTR pszPath)
{
    if (pszBuf == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    pszBuf[0] = 0;
    if (pszPath == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (std::strlen(pszPath) >= MAX_PATH)
        return FailWith(ERROR_FILENAME_EXCED_RANGE);

    const std::vector<std::string> vecParts = Split(pszPath);
    const size_t iRootParts = RootParts(vecParts);
    std::vector<std::string> vecKept;
    for (const std::string& strPart : vecParts)
    {
        if (strPart == "..")
        {
            if (vecKept.size() > iRootParts)
                vecKept.pop_back();
        }
        else if (strPart != ".")
        {
            vecKept.push_back(strPart);
        }
    }
    std::string strResult;
    for (const std::string& strPart : vecKept)
        strResult += (&strPart == vecKept.data() ? "" : "\\") + strPart;
    if (strResult.empty() || (vecKept.size() == 1 && strResult.back() == ':'))
        strResult += '\\';
    if (strResult.size() >= MAX_PATH)
        return FailWith(ERROR_FILENAME_EXCED_RANGE);
    std::memcpy(pszBuf, strResult.c_str(), strResult.size() + 1);
    return TRUE;
}
