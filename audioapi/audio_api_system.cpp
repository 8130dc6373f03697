// Searches for files, and this module's place.
#include "audioapi/audio_api_system.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_file_search.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_time.h"

#include <algorithm>
#include <functional>
#include <map>

namespace
{
constexpr DWORD MAX_MATCH_SIZE = 16 << 20; // bytes: a tuning file has a few megabytes at most
}

void CAudioSYS::GetMatchFileList(const std::string& strDir, const std::string& strPattern,
                                 std::vector<WIN32_FIND_DATAA>& oFileList)
{
    std::string strPrefix;
    std::string strSuffix;
    CAudioSTR::SplitPair(strPattern, strPrefix, strSuffix, "*");
    WIN32_FIND_DATAA stFound{};
    CFileSearch oSearch(strDir + "*", stFound);
    if (!oSearch.IsOpen())
    {
        AUDIOLOG_ERROR(AudioLastError(), "Find First File failed!" + strDir + "*");
        return;
    }
    do
    {
        const std::string strName = stFound.cFileName;
        if (stFound.dwFileAttributes == PLAIN_DIRECTORY || strName.find(strPrefix) == std::string::npos ||
            strName.find(strSuffix) == std::string::npos)
            continue;
        if (stFound.nFileSizeHigh != 0 || stFound.nFileSizeLow > MAX_MATCH_SIZE)
            AUDIOLOG_ERROR(ERROR_FILE_TOO_LARGE, "File is too large:" + strDir + strName);
        else
            oFileList.push_back(stFound);
    } while (oSearch.Next(stFound));
}

std::string CAudioSYS::GetFuzzyMatchFile(const std::string& strDir, const std::string& strPattern)
{
    std::vector<WIN32_FIND_DATAA> vecFile;
    GetMatchFileList(strDir, strPattern, vecFile);
    std::map<INT64, std::string, std::greater<INT64>> mapNewest; // of equal ages the last listed stays
    for (const WIN32_FIND_DATAA& stFile : vecFile)
    {
        const INT64 iAge =
            std::max(CAudioTIME::FileTimeToMs(stFile.ftCreationTime), CAudioTIME::FileTimeToMs(stFile.ftLastWriteTime));
        mapNewest[iAge] = stFile.cFileName;
        AUDIOLOG_DEBUG(std::string("Fuzzy find to File:") + stFile.cFileName);
    }
    if (mapNewest.empty())
        return {};
    std::string strPath = strDir + mapNewest.begin()->second;
    AUDIOLOG_INFO("Fuzzy Match to File:" + strPath);
    return strPath;
}

std::string CAudioSYS::GetModuleBaseName(HMODULE hModule)
{
    char strFileName[1024] = {};
    const DWORD dwLen = GetModuleFileNameA(hModule, strFileName, static_cast<DWORD>(sizeof(strFileName)));
    if (dwLen == 0 || dwLen >= sizeof(strFileName))
        return {};
    const std::string strName = CAudioSTR::RightOf(strFileName, "\\", 1);
    return strName.substr(0, strName.find('.'));
}

std::string CAudioSYS::GetDiagnosticsPath(const std::string& strModuleName)
{
    std::string strBase = GetEnvVariable(AUDIO_PROGRAMDATA_ENV);
    if (strBase.empty())
        strBase = AUDIO_PROGRAMDATA_DEFAULT;
    return strBase + "\\" + AUDIO_DATA_FOLDER + "\\" + strModuleName;
}
