// The real-time contract of one call, counted on the processing thread with the log off: heap blocks, and calls that
// may wait. And what a call does without a block.
#include "tests/engine/engine_test.h"
#include "tests/support/own_heap.h"

#include <mutex>

static thread_local int iTaken = 0;    // blocks that this thread took
static thread_local int iRefused = -1; // the one that it doesn't get

static bool IsBlockRefused(size_t)
{
    return iTaken++ == iRefused;
}

class RealtimeTest : public EngineTest
{
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        machine::SetPowerStatus({1, 0, 100, 0, 0, 0}); // the real one costs the layer blocks of its own
    }
};

// Each block that a call asks for is refused once: in the first period, and in a later one that is longer.
TEST_F(RealtimeTest, ARefusedBlockCostsAudioButNeitherTheRecordNorTheStream)
{
    const struct
    {
        FLOAT32 f32Rate;
        UINT32 u32FrameCount;
    } aFormats[] = {{48000, 480}, {48000, 441}, {22050, 441}};
    CPeriod(2, 480).Run(*OpenStream()); // has the module's singletons made
    for (const auto& oFormat : aFormats)
    {
        int iSeen = 1;
        for (int iBlock = 0; iBlock < iSeen; ++iBlock)
        {
            SCOPED_TRACE(std::to_string(oFormat.f32Rate) + ", block " + std::to_string(iBlock));
            const auto pObject = OpenStream(false, 2, oFormat.f32Rate);
            iSeen = 0;
            for (int i = 0; i < 20; ++i)
            {
                const bool bRefused = i == 0 || i == 8;
                CPeriod oPeriod(2, oFormat.u32FrameCount * (i == 8 ? 3 : 1));
                iTaken = iSeen;
                iRefused = bRefused ? iBlock : -1;
                oPeriod.Run(*pObject);
                iRefused = -1;
                iSeen = bRefused ? iTaken : iSeen;
                WaitForWorkers();
                EXPECT_EQ(oPeriod.m_oOutput.u32ValidFrameCount, oPeriod.m_oInput.u32ValidFrameCount);
                EXPECT_EQ(oPeriod.m_oOutput.u32BufferFlags, BUFFER_VALID);
                EXPECT_TRUE(i < 19 || CPeriod::IsAll(oPeriod.m_vecOutput, 1));
            }
        }
        EXPECT_GT(iSeen, 8);
    }
}

TEST_F(RealtimeTest, ABlockRefusedBehindTheLibraryIsTold)
{
    StartLog(AUDIO_LEVEL_ERROR);
    MakeHandEngine();
    for (const int iBlock : {-1, 1}) // the second round's system frame, behind its block's conversion
    {
        Input(Ramp(480));
        iTaken = 0;
        iRefused = iBlock;
        RunAlgorithm();
        iRefused = -1;
    }
    EXPECT_EQ(FindLog("pFloatFrameData").at(0).iErrorCode, 6);
    EXPECT_EQ(FindLog("FormatOutputFrameToQueue(pOutBuf, iChannelCount, AUDIO_KELVANE_FRAME_LEN)").at(0).iErrorCode, 6);
}

TEST_F(RealtimeTest, ALateWorkerIsNotWaitedFor)
{
    const auto pObject = OpenStream();
    std::mutex oHold;
    m_oLibrary.fnApply = [&](const KelvaneDataStruct&) { const std::lock_guard<std::mutex> oGuard(oHold); };
    CPeriod oPeriod(2, 480);
    {
        const std::lock_guard<std::mutex> oGuard(oHold);
        oPeriod.Run(*pObject);
        const size_t iBefore = machine::CallsThatMayWait();
        for (int i = 0; i < 8; ++i)
            oPeriod.Run(*pObject);
        EXPECT_EQ(machine::CallsThatMayWait(), iBefore);
        EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecOutput, 0));
    }
    WaitForWorkers();
}

TEST_F(RealtimeTest, ACallTakesABlockForEachFrameItQueuesBuildsNoTextAndWaitsForNothing)
{
    const struct
    {
        const char* pName;
        bool bInline;
        FLOAT32 f32Rate;
        UINT32 u32FrameCount;
        int iMost; // heap blocks that the dearest call takes
    } aCases[] = {
        {"EFX: two standard frames", false, 48000, 480, 2},
        {"EFX 44.1 kHz", false, 44100, 441, 10},
        {"OMFX: frames in, block, frame out", true, 48000, 480, 4},
        {"OMFX 44.1 kHz", true, 44100, 441, 18},
    };
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(oCase.pName);
        const auto pObject = OpenStream(oCase.bInline, 2, oCase.f32Rate);
        CPeriod oPeriod(2, oCase.u32FrameCount);
        int iMost = 0;
        size_t iMayWait = 0;
        for (int i = 0; i < 520; ++i) // a whole round of the periodic lines
        {
            iTaken = 0;
            const size_t iBefore = machine::CallsThatMayWait();
            oPeriod.Run(*pObject);
            const int iTakenHere = iTaken;
            iMayWait += machine::CallsThatMayWait() - iBefore;
            if (!oCase.bInline)
                WaitForWorkers();
            iMost = i < 8 ? 0 : std::max(iMost, iTakenHere); // behind lead-in and caches
        }
        EXPECT_EQ(iMost, oCase.iMost);
        EXPECT_EQ(iMayWait, 0U);
        EXPECT_TRUE(CPeriod::IsAll(oPeriod.m_vecOutput, 1));
    }
}
