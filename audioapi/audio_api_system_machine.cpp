// What the machine is, its environment, its runtime libraries.
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_file_search.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"
#include "audioapi/audio_api_time.h"

#include <objbase.h>

#include <cmath>
#include <cstdio>

namespace
{
constexpr INT32 MAJOR_VERSION_10 = 10;
constexpr INT32 FIRST_BUILD_OF_11 = 22000;
constexpr INT32 MINUTES_PER_HOUR = 60;
constexpr INT64 MS_PER_HOUR = 3600000;
constexpr int GUID_ATTEMPTS = 6;

struct CPUVendorText
{
    const char* pText;
    AudioCPUVendor eVendor;
};
constexpr CPUVendorText g_aCPUVendors[] = {
    {"INTEL", AUDIO_CPU_INTEL}, {"AMD", AUDIO_CPU_AMD}, {"SNAPDRAGON", AUDIO_CPU_SNAPDRAGON}};

std::string FolderKey(const std::string& strPath)
{
    return CAudioSTR::TrimDelimiter(CAudioSTR::ToUpper(strPath), "\\");
}

// iBias: milliseconds that UTC is ahead.
std::string FileTimeText(const FILETIME& stFileTime, INT64 iBias)
{
    if (stFileTime.dwLowDateTime == 0 && stFileTime.dwHighDateTime == 0)
        return "0";
    return CAudioTIME::MsToStrTime(CAudioTIME::FileTimeToMs(stFileTime) - iBias, AUDIO_LOG_TIME_FORMAT);
}
} // namespace

AudioCPUVendor CAudioSYS::GetCPUVendors()
{
    std::string strCPUName;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(CPU_INFO_PATH, CPU_NAME_STRING, strCPUName)) != 0)
        return AUDIO_CPU_UNKNOWN;
    strCPUName = CAudioSTR::ToUpper(strCPUName);
    for (const CPUVendorText& stVendor : g_aCPUVendors)
        if (strCPUName.find(stVendor.pText) != std::string::npos)
            return stVendor.eVendor;
    return AUDIO_CPU_UNKNOWN;
}

INT32 CAudioSYS::IsWindows11System()
{
    std::string strSystemName;
    std::string strBuildNumber;
    INT32 iMajorVersion = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_SYSTEM_VERSION_PATH, AUDIO_SYSTEM_NAME, strSystemName));
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_SYSTEM_VERSION_PATH, AUDIO_MAJOR_VERSION, iMajorVersion));
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_SYSTEM_VERSION_PATH, AUDIO_SYSTEM_VERSION, strBuildNumber));
    if (iMajorVersion >= MAJOR_VERSION_10 && CAudioSTR::ToInt(strBuildNumber) >= FIRST_BUILD_OF_11)
        strSystemName = CAudioSTR::ReplaceFirst(CAudioSTR::ToUpper(strSystemName), AUDIO_WINDOWS11, AUDIO_WINDOWS10);
    AUDIOLOG_DEBUG("Current System:" + strSystemName + " Build Number:" + strBuildNumber);
    return 0;
}

std::string CAudioSYS::GetEnvVariable(const std::string& strName)
{
    // The value may grow between the question for its size and the one for itself.
    std::string strValue;
    DWORD dwRoom = GetEnvironmentVariableA(strName.c_str(), nullptr, 0);
    while (dwRoom > strValue.size())
    {
        strValue.resize(dwRoom);
        dwRoom = GetEnvironmentVariableA(strName.c_str(), &strValue[0], dwRoom);
    }
    strValue.resize(dwRoom);
    return strValue;
}

bool CAudioSYS::IsExistEnvInPath(const std::string& strPath)
{
    const std::string strFolder = FolderKey(strPath);
    for (const std::string& strListed : CAudioSTR::Split(GetEnvVariable(AUDIO_ENV_PATH_NAME), ";"))
        if (FolderKey(strListed) == strFolder)
            return true;
    AUDIOLOG_WARN(strFolder + " not exist in PATH environment!");
    return false;
}

void CAudioSYS::SetEnvVariable(const std::string& strEvnName, const std::string& strPath)
{
    if (IsExistEnvInPath(strPath))
        return;
    AUDIOLOG_DEBUG("Add to PATH environment " + strPath);
    std::string strPathValue = GetEnvVariable(strEvnName);
    if (strPathValue.empty())
        return;
    strPathValue += ";" + strPath;
    AUDIO_CHECK(CAudioREG::WriteRegValue(AUDIO_ENV_ITEM + strEvnName, strPathValue));
}

void CAudioSYS::CopySystemDependenceDLL(const std::string& strSrcDir)
{
    std::string strCopied;
    for (const char* const pName : AUDIO_SYSTEM_DEPENDENCE_DLL)
    {
        const std::string strSrcDllPath = strSrcDir + pName;
        const std::string strDstDllPath = std::string(AUDIO_SYSTEM_DIR) + pName;
        if (GetFileAttributesA(strDstDllPath.c_str()) != INVALID_FILE_ATTRIBUTES)
            continue;
        if (AUDIO_CHECK_WIN(CopyFileA(strSrcDllPath.c_str(), strDstDllPath.c_str(), TRUE)) == 0)
            strCopied += std::string(pName) + " ";
    }
    if (!strCopied.empty())
        AUDIOLOG_DEBUG("Fill up system dependence dll " + strCopied);
}

void CAudioSYS::PrintFileInfo(const std::string& strPath)
{
    WIN32_FIND_DATAA stFound{};
    const CFileSearch oSearch(strPath, stFound);
    if (!oSearch.IsOpen())
        return;
    TIME_ZONE_INFORMATION stZone{};
    const bool bKnown = GetTimeZoneInformation(&stZone) != TIME_ZONE_ID_INVALID;
    const INT64 iBias = bKnown ? std::lround(static_cast<double>(stZone.Bias) / MINUTES_PER_HOUR) * MS_PER_HOUR : 0;
    AUDIOLOG_DEBUG(strPath + " CreationTime:" + FileTimeText(stFound.ftCreationTime, iBias) +
                   ",LastAccessTime:" + FileTimeText(stFound.ftLastAccessTime, iBias) +
                   ",LastWriteTime:" + FileTimeText(stFound.ftLastWriteTime, iBias));
}

std::string CAudioSYS::CreateGuidString()
{
    GUID stGuid{};
    for (int iAttempt = 1; AUDIO_CHECK(CoCreateGuid(&stGuid)) != S_OK; ++iAttempt)
    {
        if (iAttempt == GUID_ATTEMPTS)
            return {};
        Sleep(1);
    }
    const BYTE* const p = stGuid.Data4;
    char strGuid[37];
    std::snprintf(strGuid, sizeof(strGuid), "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                  static_cast<unsigned int>(stGuid.Data1), stGuid.Data2, stGuid.Data3, p[0], p[1], p[2], p[3], p[4],
                  p[5], p[6], p[7]);
    return strGuid;
}
