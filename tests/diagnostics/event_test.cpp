// Reports in the event log: the three kinds, the text's suffixes and cut, the switch, a log that refuses.
#include "tests/diagnostics/diagnostics_test.h"

namespace
{
class EventTest : public DiagnosticsTest
{
protected:
    static void Report(const std::string& strMessage, INT64 iErrorCode = 0, INT64 pObject = 0)
    {
        CAudioLog::Instance()->RecordEventItem("Func", "file.cpp", 1, AUDIO_LEVEL_WARN, iErrorCode, strMessage,
                                               EVENTLOG_WARNING_TYPE, 0x80020F02, pObject);
    }
};
} // namespace

TEST_F(EventTest, ReportsCarryTypeNumberAndTheCutText)
{
    const std::string strSource = ModuleName() + "\t";
    const std::string strWarning = strSource + "warning\t0x80020F02\t";
    StartLog(AUDIO_LEVEL_ERROR);
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_SET_GAIN_OK) + "Set MutilPA Gain Success!");
    AUDIOLOG_EVENT_WARN("warning");
    AUDIOLOG_EVENT_ERROR(2, "error");
    std::vector<std::string> vecExpected = {strSource + "information\t0x40020F01\t3841203 Set MutilPA Gain Success!",
                                            strWarning + "warning", strSource + "error\t0xC0020F03\terror[E2]"};
    const struct
    {
        std::string strMessage;
        INT64 iErrorCode;
        INT64 pObject;
        std::string strText;
    } oCases[] = {
        {"text", -1, 0, "text[E-1]"},
        {"text", 5, 0xAB, "text[E5][AB]"},
        {"", 0, 0, ""},
        {std::string(64, 'x'), 0, 0, std::string(64, 'x')},
        {std::string(70, 'x'), 7, 0, std::string(64, 'x')},
        {std::string(62, 'x'), 7, 1, std::string(62, 'x') + "[E"},
        {"two\nlines\tand \\", 0, 0, "two\\nlines\\tand \\\\"},
    };
    for (const auto& oCase : oCases)
    {
        Report(oCase.strMessage, oCase.iErrorCode, oCase.pObject);
        vecExpected.push_back(strWarning + oCase.strText);
    }
    EXPECT_EQ(ReadEvents(), vecExpected);
    EXPECT_EQ(ReadLog().size(), 1u); // the level leaves only the error's line
}

TEST_F(EventTest, TheSwitchAndTheLevelAreIndependent)
{
    const struct
    {
        DWORD dwDebugLevel, dwEventLevel;
        size_t iLines, iReports;
    } oCases[] = {{0, 1, 0, 1}, {0, 0, 0, 0}, {AUDIO_LEVEL_WARN, 0, 1, 0}, {AUDIO_LEVEL_WARN, 5, 1, 1}};
    StartLog(AUDIO_LEVEL_WARN);
    for (const auto& oCase : oCases)
    {
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, oCase.dwDebugLevel);
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_EVENT_LEVEL, oCase.dwEventLevel);
        WaitForWorkers();
        const size_t iLines = CountLog("report");
        const size_t iReports = ReadEvents().size();
        AUDIOLOG_EVENT_WARN("report");
        EXPECT_EQ(CountLog("report") - iLines, oCase.iLines) << oCase.dwDebugLevel << oCase.dwEventLevel;
        EXPECT_EQ(ReadEvents().size() - iReports, oCase.iReports) << oCase.dwDebugLevel << oCase.dwEventLevel;
    }
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_EVENT_LEVEL, 0);
    WaitForWorkers();
    DeleteRegistryValue(AUDIO_DEBUG_PATH, AUDIO_EVENT_LEVEL); // on, unless it is turned off
    DeleteRegistryValue(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL); // off, unless it is turned on
    WaitForWorkers();
    AUDIOLOG_EVENT_WARN("unasked");
    EXPECT_EQ(CountLog("unasked"), 0U);
    EXPECT_NE(ReadEvents().back().find("unasked"), std::string::npos);
}

TEST_F(EventTest, ARefusalIsLoggedAndTheNextReportGoesOn)
{
    const struct
    {
        const char* pCall;
        int iSkip;
        const char* pText;
        long long iErrorCode;
        size_t iReports; // of three
    } oCases[] = {
        {"ReportEventA", 1,
         "ReportEventA(pThis->m_hEventSource, pItem->dwEventType, 0, pItem->dwEventID, nullptr, 1, 0, &lpEventbuffer, "
         "nullptr)",
         31, 2},
        {"RegisterEventSourceA", 0, "m_hEventSource", 31, 0},
    };
    for (const auto& oCase : oCases)
    {
        const size_t iBefore = ReadEvents().size();
        machine::FailNext(oCase.pCall, 0, 1, oCase.iSkip);
        StartLog(AUDIO_LEVEL_ERROR);
        for (int i = 0; i < 3; ++i)
            Report("report");
        EXPECT_EQ(ReadEvents().size() - iBefore, oCase.iReports) << oCase.pCall;
        const std::vector<LogLine> vecLines = FindLog(oCase.pText);
        ASSERT_EQ(vecLines.size(), 1u) << oCase.pCall;
        EXPECT_EQ(vecLines[0].iErrorCode, oCase.iErrorCode) << oCase.pCall;
        EmptyLog();
    }
}
