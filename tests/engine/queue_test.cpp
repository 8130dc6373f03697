// The two queues: limits, bad input, frames that no longer fit.
#include "tests/engine/engine_test.h"

using QueueTest = EngineTest;

TEST_F(QueueTest, FullQueuesDropTheOldest)
{
    StartLog(AUDIO_LEVEL_INFO);
    SetRegistry(CPU_INFO_PATH, CPU_NAME_STRING, std::string("some"));
    const HANDLE hLate = CreateEventW(nullptr, TRUE, FALSE, AUDIO_CPU_STATUS_EVENT); // somebody looks at the processor
    MakeHandEngine();
    Input(Ramp(240 * 199));
    EXPECT_EQ(CEngineInside::InputQueue(*m_pEngine).Size(), 199);
    EXPECT_EQ(CountLog("KelvaneInpuSize:"), 0U);
    EXPECT_EQ(WaitForSingleObject(hLate, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    Input(Ramp(240));
    EXPECT_EQ(WaitForSingleObject(hLate, 0), static_cast<DWORD>(WAIT_OBJECT_0));
    CloseHandle(hLate);
    EXPECT_EQ(CEngineInside::InputQueue(*m_pEngine).Size(), 15);
    EXPECT_EQ(CountLog("3841137 KelvaneInpuSize:200"), 1U);
    EXPECT_EQ(FindLog("InputQueue Overflow Size : 200").at(0).iErrorCode, 0);
    // The newest audio stays: the first frame left is the 186th of the stream.
    EXPECT_EQ(CEngineInside::InputQueue(*m_pEngine).Pop().pData[0], 185.0F * 240 + 1);

    m_pEngine->ClearAllQueues();
    CEngineInside::CacheFrameCount(*m_pEngine) = 0;
    for (int i = 0; i < 101; ++i)
    {
        Input(Ramp(480));
        RunAlgorithm();
    }
    Output(480);
    EXPECT_EQ(CEngineInside::OutputQueue(*m_pEngine).Size(), 7);
    EXPECT_EQ(FindLog("OutputQueue Overflow Size : 100").at(0).strFunction, "CheckOutputQueueThreshold");

    CEngineInside::Stream(*m_pEngine).m_bInlineMode = 1;
    m_pEngine->ResetOutputQueue();
    for (int i = 0; i < 2000; ++i) // nobody else fills it: a wait in each would outlast the test
        ASSERT_EQ(Output(1, 5.0F), std::vector<float>(2, 5.0F));
    m_pEngine->ClearAllQueues();
    Input(Ramp(480 * 300));
    Output(480 * 300);
    for (int i = 0; i < 101; ++i)
        Input(Ramp(480));
    Output(480);
    EXPECT_EQ(CEngineInside::OutputQueue(*m_pEngine).Size(), 100);
    m_pEngine->CBaseEngine::InputStandardFrameToQueue(Ramp(240 * 200).data(), 2, 480 * 200);
    m_pEngine->CheckInputQueueThreshold();
    EXPECT_EQ(CEngineInside::InputQueue(*m_pEngine).Size(), 200);
    EXPECT_EQ(CountLog("Overflow"), 2U);
}

TEST_F(QueueTest, FramesOfAnOldLengthAreNeverPlayed)
{
    MakeHandEngine();
    CEngineInside::CacheFrameCount(*m_pEngine) = 0;
    Input(Ramp(480));
    RunAlgorithm();
    m_pEngine->ResetOutputQueue();
    EXPECT_EQ(CEngineInside::CacheFrameCount(*m_pEngine), 3);
    CEngineInside::CacheFrameCount(*m_pEngine) = 0;
    // A worker cuts one more frame of the old length behind the reset.
    Input(Ramp(480));
    RunAlgorithm();
    const std::vector<float> vecIn = Ramp(960);
    Input(vecIn);
    RunAlgorithm();
    EXPECT_EQ(Output(960), vecIn);
    EXPECT_TRUE(CEngineInside::OutputQueue(*m_pEngine).Empty());
}

TEST_F(QueueTest, BadInputIsRefusedOrQueuedAsSilence)
{
    StartLog(AUDIO_LEVEL_WARN);
    MakeHandEngine();
    const UINT32 ulFrameCount = 480;
    EXPECT_EQ(m_pEngine->InputDataToQueue(nullptr, 0, ulFrameCount), 13);
    EXPECT_EQ(CountLog("iAlgoDataLen <= 0"), 1U);
    EXPECT_EQ(m_pEngine->InputDataToQueue(nullptr, 2, ulFrameCount), 22);
    ASSERT_EQ(CEngineInside::InputQueue(*m_pEngine).Size(), 2);
    EXPECT_EQ(CEngineInside::InputQueue(*m_pEngine).Pop().pData[479], 0.0F);
    EXPECT_EQ(CountLog("InputStandardFrameToQueue(pMicInputFrames, iInputChannelNum, ulFrameCount * iInputChannelNum)"),
              2U);
}
