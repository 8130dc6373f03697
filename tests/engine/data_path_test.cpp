// The data path: what the library is given and what comes back, in both ways of running.
#include "tests/engine/engine_test.h"

#include <limits>

class DataPathTest : public EngineTest
{
protected:
    // A system frame whose channel ch is all ch + 1 through a started inline engine; what its channels come back as,
    // each of one value throughout.
    std::vector<float> PlayChannels(int iChannel)
    {
        std::vector<float> vecIn;
        for (int i = 0; i < 480 * iChannel; ++i)
            vecIn.push_back(static_cast<float>(i % iChannel + 1));
        EXPECT_EQ(Input(vecIn), 0);
        const std::vector<float> vecOut = Output(480);
        for (size_t i = static_cast<size_t>(iChannel); i < vecOut.size(); ++i)
            EXPECT_EQ(vecOut[i], vecOut[i % static_cast<size_t>(iChannel)]);
        return {vecOut.begin(), vecOut.begin() + iChannel};
    }
};

TEST_F(DataPathTest, ChannelsReachTheLibraryAndComeBackByTheTables)
{
    StartLog(AUDIO_LEVEL_WARN);
    struct Row
    {
        int iChannel, iDIVMode, iRecordChannel;
        INT64 iSwap;
        std::vector<float> vecLibrary, vecOut;
    };
    const std::vector<Row> vecRows = {
        {1, 0, 8, 0, {1, 0, 0, 0}, {1}},
        {2, 0, 8, 1, {1, 2, 0, 0}, {1, 2}},
        {2, 1, 8, 0, {1, 2, 1, 2}, {1, 2}},
        {4, 0, 8, 0, {1, 2, 1, 2}, {11, 12, 21, 22}},
        {4, 0, 8, 1, {1, 2, 1, 2}, {21, 22, 11, 12}},
        {4, 0, 8, 2, {1, 2, 1, 2}, {11, 21, 12, 22}},
        {4, 1, 8, 0, {1, 2, 3, 4}, {11, 12, 23, 24}},
        {6, 0, 8, 0, {1, 2, 3, 4}, {1, 2, 3, 4, 5, 6}},
        {8, 1, 8, 0, {1, 2, 3, 4}, {1, 2, 3, 4, 5, 6, 7, 8}},
        {6, 0, 4, 0, {1, 2, 3, 4}, {1, 2, 3, 4, 0, 0}},
    };
    for (const Row& oRow : vecRows)
    {
        SCOPED_TRACE(std::to_string(oRow.iChannel) + " channels, DIV " + std::to_string(oRow.iDIVMode));
        CManagerInside::Tuning().m_iDIVMode = oRow.iDIVMode;
        CManagerInside::Tuning().m_iAlgoCtrlParam[6] = oRow.iSwap;
        SetRecordChannels(oRow.iRecordChannel);
        std::vector<float> vecLibrary;
        m_oLibrary.fnApply = [&](KelvaneDataStruct& oData)
        {
            vecLibrary = {oData.psDataIn[0][7], oData.psDataIn[1][7], oData.psDataIn[2][7], oData.psDataIn[3][7]};
            // Tells the pairs of a four channel stream apart.
            for (int ch = 0; oRow.iChannel == 4 && ch < 4; ++ch)
                for (int s = 0; s < 240; ++s)
                    oData.psDataOut[ch][s] += ch < 2 ? 10.0F : 20.0F;
        };
        MakeEngine(0, 48000, true);
        ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
        SetFormat(oRow.iChannel, 48000); // behind the start, as a first lock hands it over
        EXPECT_EQ(PlayChannels(oRow.iChannel), oRow.vecOut);
        EXPECT_EQ(PlayChannels(oRow.iChannel), oRow.vecOut);
        EXPECT_EQ(vecLibrary, oRow.vecLibrary);
    }
    // Eight channels in DIV mode drive ten, two of which have no arrays; then a record that is too narrow.
    EXPECT_EQ(CountLog("has no array"), 2U);
}

TEST_F(DataPathTest, FailedFramesPassOnAndUnusableOnesAreSilenced)
{
    StartLog(AUDIO_LEVEL_WARN);
    MakeEngine(2, 48000, true);
    ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
    m_oLibrary.iApplyCode = 77;
    EXPECT_EQ(PlayChannels(2), (std::vector<float>{1, 2}));
    EXPECT_EQ(FindLog("m_fAudioKelvaneApply(m_pRunBuf, m_pScratchBuf, m_pDataStruct)").at(0).iErrorCode, 77);
    EXPECT_EQ(CountLog("pThis->AudioKelvaneApply()"), 2U);

    m_oLibrary.iApplyCode = 0;
    const float fInfinity = std::numeric_limits<float>::infinity();
    for (const float fBad : {fInfinity, -fInfinity, std::numeric_limits<float>::quiet_NaN()})
    {
        m_oLibrary.fnApply = [fBad](KelvaneDataStruct& oData) { oData.psDataOut[1][239] = fBad; };
        EXPECT_EQ(PlayChannels(2), (std::vector<float>{0, 0}));
    }
    EXPECT_EQ(CountLog("not finite"), 1U);
    m_oLibrary.fnApply = nullptr;
    EXPECT_EQ(PlayChannels(2), (std::vector<float>{1, 2}));
}

TEST_F(DataPathTest, WorkerPlaysTheStreamThreePeriodsLateAndRenewsTheBattery)
{
    StartLog(AUDIO_LEVEL_WARN);
    machine::SetPowerStatus({255, 0, 255, 0, 0, 0});
    std::atomic<int> iPriority{0};
    m_oLibrary.fnApply = [&](KelvaneDataStruct&) { iPriority = GetThreadPriority(GetCurrentThread()); };
    MakeEngine();
    ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
    std::vector<std::vector<float>> vecIn;
    for (size_t i = 0; i < 60; ++i)
    {
        if (i == 10)
        {
            EXPECT_EQ(m_oLibrary.iBattery, 0); // unknown
            EXPECT_EQ(m_oLibrary.iACLine, 0);
            machine::SetPowerStatus({1, 0, 88, 0, 0, 0});
        }
        vecIn.push_back(Ramp(480));
        ASSERT_EQ(Input(vecIn.back()), 0);
        WaitForWorkers();
        ASSERT_EQ(Output(480), i < 3 ? std::vector<float>(960, 0.0F) : vecIn[i - 3]) << i;
    }
    EXPECT_EQ(m_oLibrary.iApplyCount, 120);
    EXPECT_EQ(m_oLibrary.iBattery, 88);
    EXPECT_EQ(m_oLibrary.iACLine, 1);
    EXPECT_EQ(iPriority, THREAD_PRIORITY_TIME_CRITICAL);
    // An underflow leaves the buffer as it was.
    for (int i = 0; i < 3; ++i)
        Output(480);
    EXPECT_EQ(CountLog("Output Queue"), 0U);
    EXPECT_EQ(Output(480, 5.0F), std::vector<float>(960, 5.0F));
    EXPECT_EQ(FindLog("Output Queue").at(0).strMessage, "[POST_EFX] Output Queue is empty, will be appear PoP!");
}
