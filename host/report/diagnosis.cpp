// The module's log of a run, and the reasons for a bypass.
#include "host/report/diagnosis.h"

#include "audioapi/audio_api_rates.h"
#include "host/registry/registry_text.h"
#include "platform/hostpath.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace fs = std::filesystem;

namespace
{

constexpr const char* PROTECTION_LIBRARY = "Kelvane_x64.dll";
// Where this value is, a codec driver reports the jack and the module doesn't follow "Headset".
constexpr const char* CODEC_JACK = "HKLM\\SOFTWARE\\Realtek\\Audio\\RtkAudUService\\Others\\InternalSpeakerOutput";
constexpr size_t MESSAGES_KEPT = 5;
// The watch of the module's folder ends by a read that is cancelled, at every stop. Elsewhere it is a fault.
constexpr const char* STOP_MESSAGE = "ErrorCode:000003E3(995), Read Directory Changes failed!";
constexpr const char* SET_GIVEN[] = {"Get Parameter from strKey=", "Use Default first Parameter strKey="};
constexpr const char* FILE_GIVEN = "Fuzzy Match to File:";
constexpr const char* TEMPERATURE_GIVEN = "),EC Temperature:"; // hundredths of a degree

// A line reads "[time][thread][LEVEL]: message [function|file|line]", with the code behind the level of an error.
std::string MessageOf(const std::string& strLine, size_t iLevel)
{
    const size_t iStart = strLine.find("]:", iLevel) + 2;
    const size_t iEnd = strLine.rfind(" [");
    std::string strMessage = strLine.substr(iStart, iEnd > iStart ? iEnd - iStart : std::string::npos);
    strMessage.erase(0, strMessage.find_first_not_of(' '));
    return strMessage;
}

// What stands behind a mark, up to the next blank; empty without the mark.
std::string TextBehind(const std::string& strLine, const std::string& strMark)
{
    const size_t iMark = strLine.find(strMark);
    if (iMark == std::string::npos)
        return "";
    const size_t iBegin = iMark + strMark.size();
    return strLine.substr(iBegin, strLine.find_first_of(" ,", iBegin) - iBegin);
}

// The parameter sets and temperatures that the library was given.
void ReadGiven(const std::string& strLine, const CStreamTime& oTime, ModuleLog& oLog)
{
    double f64Seconds = 0;
    if (strLine.empty() || !oTime.SecondsOf(strLine.substr(1), f64Seconds))
        return;
    for (const char* pMark : SET_GIVEN)
        if (const std::string strKey = TextBehind(strLine, pMark); !strKey.empty())
            oLog.vecSets.push_back({f64Seconds, strKey});
    if (const std::string strNumber = TextBehind(strLine, TEMPERATURE_GIVEN); !strNumber.empty())
        oLog.vecTemperatures.push_back({f64Seconds, std::atoi(strNumber.c_str()) / 10});
}

bool IsBehindEnd(const std::string& strLine, const CStreamTime& oTime)
{
    double f64Seconds = 0;
    return oTime.SecondsOf(strLine.substr(1), f64Seconds) && oTime.IsBehindEnd(f64Seconds);
}

void ReadLogFile(const fs::path& oPath, const CStreamTime& oTime, ModuleLog& oLog)
{
    std::ifstream oFile(oPath);
    for (std::string strLine; std::getline(oFile, strLine);)
    {
        ReadGiven(strLine, oTime, oLog);
        const size_t iError = std::min(strLine.find("[ERROR]:"), strLine.find("[FATA]:"));
        const size_t iLevel = std::min(iError, strLine.find("[WARN]:"));
        if (iLevel == std::string::npos)
            continue;
        const std::string strMessage = MessageOf(strLine, iLevel);
        if (strMessage == STOP_MESSAGE && IsBehindEnd(strLine, oTime))
        {
            ++oLog.i64StopLines;
            continue;
        }
        ++(iError != std::string::npos ? oLog.i64Errors : oLog.i64Warnings);
        auto& vecMessages = oLog.vecMessages;
        if (vecMessages.size() < MESSAGES_KEPT &&
            std::find(vecMessages.begin(), vecMessages.end(), strMessage) == vecMessages.end())
            vecMessages.push_back(strMessage);
    }
}

std::string LogFolder()
{
    const char* pProgramData = std::getenv("PROGRAMDATA");
    const std::string strRoot = pProgramData != nullptr && *pProgramData != 0 ? pProgramData : "C:\\PROGRAMDATA";
    return HostPath(strRoot + "\\ZVAudio\\KelvaneAPO");
}

// Of this process' module, in order.
std::vector<fs::path> FindLogFiles(fs::file_time_type tSince)
{
    std::vector<fs::path> vecFiles;
    const std::string strMark = "_P" + std::to_string(GetCurrentProcessId()) + "_";
    std::error_code oError;
    for (fs::directory_iterator itFile(LogFolder(), oError), itEnd; !oError && itFile != itEnd;
         itFile.increment(oError))
    {
        const fs::path& oPath = itFile->path();
        if (oPath.extension() == ".log" && oPath.filename().string().find(strMark) != std::string::npos &&
            itFile->last_write_time(oError) >= tSince)
            vecFiles.push_back(oPath);
    }
    std::sort(vecFiles.begin(), vecFiles.end());
    return vecFiles;
}

bool IsMapped(const std::string& strFileName)
{
    std::ifstream oMaps("/proc/self/maps");
    for (std::string strLine; std::getline(oMaps, strLine);)
    {
        if (strLine.size() >= strFileName.size() &&
            strLine.compare(strLine.size() - strFileName.size(), std::string::npos, strFileName) == 0)
            return true;
    }
    return false;
}

} // namespace

ModuleLog ReadModuleLog(fs::file_time_type tSince, const CStreamTime& oTime)
{
    ModuleLog oLog;
    const std::vector<fs::path> vecFiles = FindLogFiles(tSince);
    for (const fs::path& oPath : vecFiles)
        ReadLogFile(oPath, oTime, oLog);
    if (!vecFiles.empty())
        oLog.strPath = vecFiles.front().string();
    return oLog;
}

TuningGiven FindTuningGiven(fs::file_time_type tSince)
{
    TuningGiven oGiven;
    for (const fs::path& oPath : FindLogFiles(tSince))
    {
        std::ifstream oFile(oPath);
        for (std::string strLine; std::getline(oFile, strLine);)
        {
            if (const std::string strFile = TextBehind(strLine, FILE_GIVEN); !strFile.empty())
                oGiven.strFile = strFile;
            for (const char* pMark : SET_GIVEN)
                if (const std::string strKey = TextBehind(strLine, pMark); !strKey.empty())
                    oGiven.strSet = strKey;
        }
    }
    return oGiven;
}

std::vector<std::string> FindBypassReasons(int iRate)
{
    std::vector<std::string> vecReasons;
    const int* const pEnd = std::end(AUDIO_SUPPORTED_RATES);
    if (std::find(std::begin(AUDIO_SUPPORTED_RATES), pEnd, iRate) == pEnd)
        vecReasons.push_back("the module doesn't process " + std::to_string(iRate) + " Hz");
    if (!IsMapped(PROTECTION_LIBRARY))
        vecReasons.push_back("the protection library isn't loaded");
    RegistryData oJack;
    if (!ReadRegistryValue(ParseRegistryValue(CODEC_JACK), oJack) &&
        ReadRegistryNumber("Headset\\HeadsetStatus", 0) != 0)
        vecReasons.push_back("a headset is plugged (Headset\\HeadsetStatus)");
    if (ReadRegistryNumber("Bypass\\KelvaneStatus", 0) == 1)
        vecReasons.push_back("the bypass switch is on (Bypass\\KelvaneStatus)");
    return vecReasons;
}
