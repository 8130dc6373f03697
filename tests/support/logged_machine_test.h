// The fixture for tests that link the module's code: the log runs on the test's machine and is read back line by line.
#pragma once

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_system.h"
#include "platform/control/machine.h"
#include "tests/support/machine_test.h"

#include <algorithm>
#include <sstream>

// A line of the log's files, taken apart; strLevel is empty for a line that has neither form.
struct LogLine
{
    std::string strTime; // month to millisecond
    unsigned long ulThread = 0;
    std::string strLevel;
    long long iErrorCode = 0;
    std::string strMessage;
    std::string strFunction;
    std::string strFile;
    int iLine = 0;
};

inline LogLine ParseLogLine(const std::string& strLine)
{
    LogLine oLine;
    char cTime[32] = {};
    char cLevel[8] = {};
    int iStart = 0;
    if (sscanf(strLine.c_str(), "[%31[^]]][T%lu][%7[A-Z]]:%n", cTime, &oLine.ulThread, cLevel, &iStart) < 3 || !iStart)
        return oLine;
    unsigned long long ullHex = 0;
    int iCodeLen = 0;
    if (sscanf(strLine.c_str() + iStart, "ErrorCode:%llX(%lld),%n", &ullHex, &oLine.iErrorCode, &iCodeLen) == 2)
        iStart += iCodeLen;
    // The place stands in the last brackets.
    const size_t iPlace = strLine.rfind(" [");
    std::istringstream oPlace(strLine.substr(iPlace + 2));
    std::getline(oPlace, oLine.strFunction, '|');
    std::getline(oPlace, oLine.strFile, '|');
    oPlace >> oLine.iLine;
    oLine.strMessage = strLine.substr(static_cast<size_t>(iStart) + 1, iPlace - static_cast<size_t>(iStart) - 1);
    oLine.strTime = cTime;
    oLine.strLevel = cLevel;
    return oLine;
}

class LoggedMachineTest : public MachineTest
{
protected:
    // Takes the log and the monitor down; a derived fixture takes down what it started before.
    void TearDown() override
    {
        CAudioMonitor::DeleteInstance();
        CAudioLog::DeleteInstance();
        MachineTest::TearDown();
    }

    static std::string LogFolder() { return CAudioSYS::GetDiagnosticsPath(CAudioSYS::GetModuleBaseName(nullptr)); }

    // Stands the clock still at 2024-03-14 09:26:53.007.
    static void FreezeClock()
    {
        machine::FreezeClock();
        machine::SetClock({2024, 3, 0, 14, 9, 26, 53, 7});
    }

    // Starts the log at the level, with the defaults beside it, and returns when its workers wait.
    static void StartLog(DWORD dwLevel = AUDIO_LEVEL_TRACE)
    {
        MakeFolder(LogFolder());
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, dwLevel);
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_SIZE, 0);
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_NUM, 0);
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_EVENT_LEVEL, 1);
        CAudioLog::Instance()->Initialize(nullptr);
        WaitForWorkers();
    }

    // Takes the log down and its files away.
    static void EmptyLog()
    {
        CAudioLog::DeleteInstance();
        for (const std::string& strName : ListFiles(LogFolder()))
            DeleteFileA((LogFolder() + "\\" + strName).c_str());
    }

    // Every line written so far, file by file in the order of their names.
    static std::vector<LogLine> ReadLog()
    {
        WaitForWorkers();
        std::vector<LogLine> vecLines;
        for (const std::string& strName : ListFiles(LogFolder()))
        {
            if (strName.find(".log") == std::string::npos)
                continue;
            std::istringstream oFile(GetFile(LogFolder() + "\\" + strName));
            for (std::string strLine; std::getline(oFile, strLine);)
                vecLines.push_back(ParseLogLine(strLine));
        }
        return vecLines;
    }

    // The lines whose message has the text in it.
    static std::vector<LogLine> FindLog(const std::string& strText)
    {
        std::vector<LogLine> vecLines = ReadLog();
        const auto fOther = [&](const LogLine& oLine) { return oLine.strMessage.find(strText) == std::string::npos; };
        vecLines.erase(std::remove_if(vecLines.begin(), vecLines.end(), fOther), vecLines.end());
        return vecLines;
    }
    static size_t CountLog(const std::string& strText) { return FindLog(strText).size(); }
};
