// The log from the call to the file: line forms, filter, settings, rotation, faults, and the stop.
#include "audioapi/audio_api_trace.h"
#include "tests/support/logged_machine_test.h"

#include <map>
#include <thread>

namespace
{
class LogTest : public LoggedMachineTest
{
protected:
    static void Record(UINT32 iLevel, const std::string& strMessage)
    {
        CAudioLog::Instance()->RecordItem("Probe", "probe.cpp", 1, iLevel, 0, strMessage);
    }

    static std::string FileOfSecond(const std::string& strSecond)
    {
        return CAudioSYS::GetModuleBaseName(nullptr) + "_P" + std::to_string(GetCurrentProcessId()) + "_20240314_0926" +
               strSecond + ".log";
    }

    static size_t CountLines(const std::string& strName)
    {
        const std::string strText = GetFile(LogFolder() + "\\" + strName);
        return static_cast<size_t>(std::count(strText.begin(), strText.end(), '\n'));
    }

    // Lines end as the platform's do.
    static std::string TextOfSecond(const std::string& strSecond)
    {
        std::string strText = GetFile(LogFolder() + "\\" + FileOfSecond(strSecond));
        strText.erase(std::remove(strText.begin(), strText.end(), '\r'), strText.end());
        return strText;
    }
};
} // namespace

TEST_F(LogTest, WritesTheTwoLineForms)
{
    const std::string strLong(300000, 'x');
    const struct
    {
        UINT32 iLevel;
        INT64 iErrorCode;
        std::string strFile;
        std::string strMessage;
        INT64 pObject;
        std::string strTail;
    } oCases[] = {
        {3, 0, "a\\b.cpp", "text", 0, "[INFO]: text [Func|b.cpp|12]"},
        {1, 0, "/a/b/c.cpp", "text", 0xAB, "[TRACE]: [AB]text [Func|c.cpp|12]"},
        {5, 6, "c.cpp", "m_hEvent", 0, "[ERROR]:ErrorCode:00000006(6), m_hEvent [Func|c.cpp|12]"},
        {6, -5, "", "a|b [c] %s%n", -1,
         "[FATA]:ErrorCode:FFFFFFFFFFFFFFFB(-5), [FFFFFFFFFFFFFFFF]a|b [c] %s%n [Func||12]"},
        {4, 0x123456789AB, "c.cpp", "", 0, "[WARN]:ErrorCode:123456789AB(1250999896491),  [Func|c.cpp|12]"},
        {2, 0, "c.cpp", strLong, 0, "[DEBUG]: " + strLong + " [Func|c.cpp|12]"},
    };
    FreezeClock();
    StartLog();
    std::string strExpected = TextOfSecond("53");
    const std::string strHead = "[03-14 09:26:53.007][T" + std::to_string(GetCurrentThreadId()) + "]";
    for (const auto& oCase : oCases)
    {
        CAudioLog::Instance()->RecordItem("Func", oCase.strFile, 12, oCase.iLevel, oCase.iErrorCode, oCase.strMessage,
                                          oCase.pObject);
        strExpected += strHead + oCase.strTail + "\n";
    }
    WaitForWorkers();
    EXPECT_EQ(TextOfSecond("53"), strExpected);
}

TEST_F(LogTest, KeepsTheLevelsFromTheThresholdUp)
{
    const std::pair<DWORD, std::string> oCases[] = {{0, ""},  {1, "123456"}, {3, "3456"},
                                                    {6, "6"}, {7, ""},       {0xFFFFFFFF, ""}};
    for (const auto& [dwLevel, strKept] : oCases)
    {
        StartLog(dwLevel);
        std::string strWritten;
        for (UINT32 iLevel = 1; iLevel <= 6; ++iLevel)
            Record(iLevel, "probe " + std::to_string(iLevel));
        for (const LogLine& oLine : FindLog("probe "))
            strWritten += oLine.strMessage.substr(6);
        EXPECT_EQ(strWritten, strKept) << "DebugLevel " << dwLevel;
        EmptyLog();
    }
}

TEST_F(LogTest, ChangesTheFileBehindTheLineThatFillsIt)
{
    FreezeClock();
    StartLog(AUDIO_LEVEL_FATA);
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_SIZE, 1);
    WaitForWorkers();
    const auto fRecord = [](int iCount)
    {
        for (int i = 0; i < iCount; ++i)
            Record(AUDIO_LEVEL_FATA, std::string(400000, 'x'));
        WaitForWorkers();
    };
    fRecord(2);
    const size_t iWritten = TextOfSecond("53").size(); // one more fills the file to the byte
    Record(AUDIO_LEVEL_FATA, std::string(1000000 - iWritten - (iWritten / 2 - 400000), 'x'));
    WaitForWorkers();
    machine::AdvanceClock(2000);
    EXPECT_EQ(TextOfSecond("53").size(), 1000000U);
    fRecord(3);
    // The name of a second that goes on is taken again: the next file is the same one.
    fRecord(1);
    EXPECT_EQ(ListFiles(LogFolder()), (std::vector<std::string>{FileOfSecond("53"), FileOfSecond("55")}));
    EXPECT_EQ(CountLines(FileOfSecond("53")), 3u);
    EXPECT_EQ(CountLines(FileOfSecond("55")), 4u);

    // A file taken away is made again under its name.
    ASSERT_TRUE(DeleteFileA((LogFolder() + "\\" + FileOfSecond("55")).c_str()));
    machine::AdvanceClock(2000);
    fRecord(1);
    EXPECT_EQ(CountLines(FileOfSecond("55")), 1u);

    // More megabytes than a 32-bit number of bytes can tell are the most that it can.
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_SIZE, 4295);
    WaitForWorkers();
    fRecord(2);
    EXPECT_EQ(CountLines(FileOfSecond("55")), 3u);
}

TEST_F(LogTest, LosesNothingAndKeepsEachThreadsOrder)
{
    constexpr int THREADS = 4;
    constexpr int LINES = 5000;
    StartLog(AUDIO_LEVEL_INFO);
    std::vector<std::thread> vecThreads;
    for (int iThread = 0; iThread < THREADS; ++iThread)
        vecThreads.emplace_back(
            []
            {
                for (int i = 0; i < LINES; ++i)
                    AUDIOLOG_INFO("number " + std::to_string(i));
            });
    for (std::thread& oThread : vecThreads)
        oThread.join();
    std::map<unsigned long, int> oNext;
    for (const LogLine& oLine : FindLog("number "))
        ASSERT_EQ(oLine.strMessage, "number " + std::to_string(oNext[oLine.ulThread]++));
    ASSERT_EQ(oNext.size(), static_cast<size_t>(THREADS));
    for (const auto& [ulThread, iCount] : oNext)
        EXPECT_EQ(iCount, LINES) << "thread " << ulThread;
}

// What a line costs must not come back with each line that is lost.
TEST_F(LogTest, WithoutAFileItDropsItsLinesRestsAndSaysSoOnce)
{
    StartLog();
    machine::FailNext("fopen_s", 13, -1);
    const auto fRecord = []
    {
        for (int i = 0; i < 1000; ++i)
            Record(AUDIO_LEVEL_INFO, "nowhere to go");
        WaitForWorkers();
        return machine::GetFootprint().iBytes;
    };
    const size_t iBytes = fRecord();
    fRecord();
    EXPECT_LE(SANITIZED ? 0 : fRecord(), iBytes + 100000);
    machine::ClearFailures();
    Record(AUDIO_LEVEL_INFO, "found");
    const std::vector<LogLine> vecFailures = FindLog("fopen_s(&pFile, oFileInfo.strFileName.c_str(), \"at+\")");
    ASSERT_EQ(vecFailures.size(), 1u);
    EXPECT_EQ(vecFailures[0].strLevel + vecFailures[0].strFunction, "ERRORGetFileInfo");
    EXPECT_EQ(vecFailures[0].iErrorCode, 13);
    EXPECT_EQ(CountLog("nowhere to go"), 0u);
    EXPECT_EQ(CountLog("found"), 1u);
}

TEST_F(LogTest, ALineKeepsTheTimeOfItsCall)
{
    FreezeClock();
    StartLog(AUDIO_LEVEL_FATA);
    CAudioLog::DeleteInstance();
    machine::FailNext("WaitForSingleObject", 6, -1); // no worker gets to its work
    CAudioLog::Instance()->Initialize(nullptr);
    Record(AUDIO_LEVEL_FATA, "early");
    machine::AdvanceClock(2000);
    machine::ClearFailures();
    EXPECT_EQ(FindLog("early").at(0).strTime, "03-14 09:26:53.007");
}

TEST_F(LogTest, GoesOnWithoutWhatThePlatformRefuses)
{
    const struct
    {
        const char* pCall;
        int iTimes;
        int iSkip;
        const char* pText; // null: no writer, so no line at all
        long long iErrorCode;
    } oCases[] = {
        {"CreateThreadpoolWork", 1, 0, nullptr, 0},
        {"CreateThreadpoolWork", 1, 2, "Create Thread failed!", 6},
        {"CreateEventW", 2, 1, "pThis->m_hRegistEvent", 6}, // beside the event reporter's
        {"RegNotifyChangeKeyValue", 1, 0, "CAudioREG::RegNotifyStart(AUDIO_DEBUG_PATH, hKey, pThis->m_hRegistEvent)",
         8},
    };
    for (const auto& oCase : oCases)
    {
        machine::FailNext(oCase.pCall, 8, oCase.iTimes, oCase.iSkip);
        StartLog(AUDIO_LEVEL_ERROR);
        const std::string strCase = oCase.pText != nullptr ? oCase.pText : oCase.pCall;
        if (oCase.pText == nullptr)
        {
            Record(AUDIO_LEVEL_FATA, "waits in the queue");
            EXPECT_TRUE(ReadLog().empty()) << strCase;
        }
        else
        {
            EXPECT_EQ(FindLog(oCase.pText).at(0).iErrorCode, oCase.iErrorCode);
            // Nobody follows the registry: the values stay as read at the start.
            SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, 0);
            WaitForWorkers();
            EXPECT_TRUE(CAudioLog::Instance()->IsRecorded(AUDIO_LEVEL_ERROR)) << strCase;
        }
        EmptyLog();
    }
}

TEST_F(LogTest, TimesAScope)
{
    FreezeClock();
    StartLog(AUDIO_LEVEL_DEBUG);
    const auto fScope = [](UINT32 iLevel, const std::string& strExtra)
    {
        const CTraceLog oTraceLog("Scope", "a\\scope.cpp", 7, iLevel, strExtra);
        machine::AdvanceClock(250);
    };
    fScope(AUDIO_LEVEL_TRACE, "below the level");
    fScope(AUDIO_LEVEL_DEBUG, "");
    fScope(AUDIO_LEVEL_WARN, "extra");
    std::string strMessages;
    for (const LogLine& oLine : ReadLog())
        if (oLine.strFunction == "Scope" && oLine.strFile == "scope.cpp" && oLine.iLine == 7)
            strMessages += oLine.strLevel + oLine.strMessage + ";";
    EXPECT_EQ(strMessages, "DEBUG==>;DEBUG [250ms]<==;WARN==>[extra];WARN [250ms]<==[extra];");
}

TEST_F(LogTest, ChecksEvaluateOnceAndNameTheirExpression)
{
    StartLog(AUDIO_LEVEL_ERROR);
    int iCalls = 0;
    const auto fFail = [&](auto tResult) { return ++iCalls, tResult; };
    const HRESULT iNoInterface = static_cast<HRESULT>(0x80004002);
    void* pMissing = nullptr;

    EXPECT_EQ(AUDIO_CHECK(fFail(iNoInterface)), iNoInterface);
    EXPECT_EQ(AUDIO_CHECK(fFail(0)), 0);
    SetLastError(5);
    EXPECT_EQ(AUDIO_CHECK_WIN(fFail(FALSE)), 5u);
    EXPECT_TRUE(AUDIO_FAIL_IF(iCalls > 2, 13));
    EXPECT_TRUE(AUDIO_MISSING(pMissing, 87));
    AUDIOLOG_INFO("text " + std::to_string(++iCalls)); // a level that is off: the text is not even built
    EXPECT_EQ(iCalls, 3);
    // A text that can't be had costs the line.
    const auto fNoMemory = []() -> std::string { throw std::bad_alloc(); };
    AUDIOLOG_ERROR(1, fNoMemory());
    AUDIOLOG_EVENT_WARN(fNoMemory());

    std::string strLines;
    for (const LogLine& oLine : ReadLog())
        strLines += oLine.strMessage + "=" + std::to_string(oLine.iErrorCode) + ";";
    EXPECT_EQ(strLines, "fFail(iNoInterface)=-2147467262;fFail(FALSE)=5;iCalls > 2=13;pMissing=87;");
}
