// The dump from the call to the file: levels and names, contents, rotation, the bound of the queue.
#include "tests/diagnostics/diagnostics_test.h"
#include "tests/object/object_fixture.h"

#include <filesystem>

namespace
{
using DumpTest = DiagnosticsTest;

std::string Pid()
{
    return "_P" + std::to_string(GetCurrentProcessId());
}
} // namespace

TEST_F(DumpTest, LevelsDecideWhatIsKeptAndUnderWhichName)
{
    const std::string strTime = "_20240314_092653.pcm";
    const std::string strThread = "_T" + std::to_string(GetCurrentThreadId());
    const std::string strPlain = "Item" + Pid() + strTime;
    const struct
    {
        DWORD dwLevel;
        std::vector<std::string> vecFiles;
    } oCases[] = {
        {0, {}},
        {1, {strPlain, "Unknow" + Pid() + strTime}},
        {2, {"Item" + Pid() + strThread + strTime, "Unknow" + Pid() + strThread + strTime}},
        {3, {"Detail" + Pid() + strTime, strPlain, "Unknow" + Pid() + strTime}},
        {9, {strPlain, "Unknow" + Pid() + strTime}},
        {0xFFFFFFFF, {}},
    };
    FreezeClock();
    Dump().RecordItemByName("before", 6, "Item"); // the start is to come
    for (const auto& oCase : oCases)
    {
        StartDump(oCase.dwLevel);
        Dump().RecordItemByName("one", 3, "Item");
        Dump().RecordItemByName("two", 3, "Item");
        Dump().RecordItemByName(nullptr, 3, "Item");
        Dump().RecordItemByName("no", 0, "Item");
        Dump().RecordItemByName("no", -1, "Item");
        Dump().RecordDetailItem("detail", 6, "Detail");
        Dump().RecordItem("x", 1, 4);
        WaitForWorkers();
        EXPECT_EQ(FilesOf(".pcm"), oCase.vecFiles) << "DumpLevel " << oCase.dwLevel;
        EXPECT_TRUE(oCase.vecFiles.empty() || ContentOf("Item") == "onetwo") << "DumpLevel " << oCase.dwLevel;
        CAudioDump::DeleteInstance();
        EmptyLog();
    }
    DeleteRegistryValue(AUDIO_DUMP_PATH, AUDIO_DUMP_LEVEL);
    Dump().Initialize(nullptr);
    EXPECT_FALSE(Dump().IsOn());
}

TEST_F(DumpTest, ChangesTheFileBehindTheBlockThatFillsItAndFollowsTheRegistry)
{
    const std::string strBlock(600000, 'x');
    const auto fRecord = [&]
    {
        Dump().RecordItemByName(strBlock.data(), static_cast<INT32>(strBlock.size()), "Item");
        WaitForWorkers();
    };
    const auto fSizeAt = [](const std::string& strSecond) {
        return GetFile(LogFolder() + "\\" + ModuleName() + "_Item" + Pid() + "_20240314_0926" + strSecond + ".pcm")
            .size();
    };
    FreezeClock();
    StartDump(1, 1);
    fRecord();
    machine::AdvanceClock(1000);
    fRecord(); // to the limit and past it: still the first file
    machine::AdvanceClock(1000);
    fRecord();
    EXPECT_EQ(fSizeAt("53"), 1200000u);
    EXPECT_EQ(fSizeAt("54"), 0u);
    EXPECT_EQ(fSizeAt("55"), 600000u);
    fRecord();
    fRecord(); // within the second the name is taken again, and the count begins anew
    EXPECT_EQ(fSizeAt("55"), 1800000u);

    SetDump(0, 1);
    WaitForWorkers();
    fRecord();
    SetDump(1, 0);
    WaitForWorkers();
    machine::AdvanceClock(1000);
    for (int i = 0; i < 3; ++i)
        fRecord();
    EXPECT_EQ(fSizeAt("55"), 3600000u);
}

TEST_F(DumpTest, BoundsItsQueueAndCountsWhatIsLost)
{
    constexpr INT32 BLOCK = static_cast<INT32>(CAudioDump::QUEUE_BOUND / 8);
    const std::string strBlock(BLOCK, 'x');
    StartLog(AUDIO_LEVEL_WARN);
    SetDump(1);
    machine::FailNext("WaitForSingleObject", 6, -1); // no worker gets to its work
    Dump().Initialize(nullptr);
    for (int i = 0; i < 8 + 4; ++i)
        Dump().RecordItemByName(strBlock.data(), BLOCK, "Item");
    machine::ClearFailures();
    WaitForWorkers();
    Dump().RecordItemByName("room", 4, "Item");
    WaitForWorkers();
    const std::vector<std::string> vecFiles = FilesOf(".pcm");
    ASSERT_EQ(vecFiles.size(), 1u);
    EXPECT_EQ(std::filesystem::file_size(HostFolder() + "/" + ModuleName() + "_" + vecFiles[0]),
              CAudioDump::QUEUE_BOUND + 4);
    EXPECT_EQ(CountLog("Dump queue is full, blocks are lost"), 1u);
    EXPECT_EQ(CountLog("Dump queue has room again, blocks lost:4"), 1u);
}

TEST_F(DumpTest, TheStreamDumpsWhatGoesInAndOut)
{
    StartLog(AUDIO_LEVEL_ERROR);
    StartDump(3);
    auto pObject = OpenObject(new CTestAPO<CKelvaneEFX>);
    CPeriod oPeriod(2, 480);
    oPeriod.Run(*pObject);
    CAudioMonitor::Instance()->StatusRecord().m_iKelvaneBypass = 1; // a bypassed period dumps nothing
    oPeriod.Run(*pObject);
    pObject.reset();
    EXPECT_EQ(ContentOf("PostDataIn"), BytesOf(std::vector<FLOAT32>(960, 1.0F)));
    EXPECT_EQ(ContentOf("PostDataOut"), BytesOf(std::vector<FLOAT32>(960, 7.0F)));

    // Four stream channels: the library's view has the first two twice, and so has what comes out.
    MakeHandEngine(4, 48000);
    std::vector<FLOAT32> vecInput(480 * 4);
    std::vector<FLOAT32> vecSeen(480 * 4);
    for (size_t i = 0; i < vecInput.size(); ++i)
    {
        vecInput[i] = static_cast<FLOAT32>(i);
        vecSeen[i] = static_cast<FLOAT32>(i - i % 4 + i % 2);
    }
    m_pEngine->InputDataToQueue(vecInput.data(), 4, 480);
    RunAlgorithm();
    EXPECT_EQ(ContentOf("PostInt32DataIn"), BytesOf(vecSeen));
    EXPECT_EQ(ContentOf("PostInt32DataOut"), BytesOf(vecSeen));
    EXPECT_EQ(ContentOf("OutputSample"), BytesOf(vecSeen));

    MakeHandEngine(2, 16000);
    const std::vector<FLOAT32> vecSlow(160 * 2, 0.5F);
    m_pEngine->InputDataToQueue(vecSlow.data(), 2, 160);
    EXPECT_EQ(ContentOf("InputSample").size(), 480 * 2 * sizeof(FLOAT32));
}
