// What goes with a frame: the record that the library reads, the times, the jobs, and what is said of silence.
#include "tests/engine/engine_test.h"

#include <map>

using FrameTest = EngineTest;

TEST_F(FrameTest, TheRecordTellsTheSpeakerAndHasEachSense)
{
    CAudioStatus& oStatus = CAudioMonitor::Instance()->StatusRecord();
    SetRecordChannels(4);
    MakeEngine(2, 48000, true);
    ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
    m_oLibrary.fnApply = [&](const KelvaneDataStruct& oData)
    {
        EXPECT_EQ(oData.SpeakerPersentVolume, oStatus.m_iSpeakerVolume);
        EXPECT_EQ(oData.SpeakerDBVolume, oStatus.m_fSpeakerVolumeDB);
        EXPECT_EQ(oData.iDataMode, 3);
        EXPECT_EQ(oData.iFrameLen, 240);
        for (int ch = 0; ch < KELVANE_MAX_CHANNELS; ++ch)
            for (const float* pSamples : {oData.psVoltageIn[ch], oData.psCurrentIn[ch], oData.psVoltageBatteryIn[ch]})
            {
                ASSERT_EQ(pSamples != nullptr, ch < 4) << ch;
                EXPECT_TRUE(pSamples == nullptr || std::count(pSamples, pSamples + 240, 0.0F) == 240);
            }
        oStatus.m_iSpeakerVolume = 71; // for the next frame
        oStatus.m_fSpeakerVolumeDB = -3.25F;
    };
    oStatus.m_iSpeakerVolume = 37;
    oStatus.m_fSpeakerVolumeDB = -12.5F;
    Input(Ramp(480));
    EXPECT_EQ(m_oLibrary.iApplyCount, 2);
}

// A period is 1001 frames; the library's time is the clock's.
TEST_F(FrameTest, EachTimingPeriodCountsItsOwnTimes)
{
    StartLog(AUDIO_LEVEL_WARN);
    MakeFolder(AUDIO_VOICE_LOG_DIR);
    CManagerInside::DebugMode() = 1;
    machine::SetClock({2026, 3, 2, 17, 12, 0, 0, 0});
    machine::FreezeClock();
    MakeHandEngine();
    int iFrame = 0;
    m_oLibrary.fnApply = [&](const KelvaneDataStruct&)
    {
        const std::map<int, int> mapTimes = {{500, 9}, {600, 7}, {700, 1}, {1500, 5}}; // of the others 3, then 2
        const auto itTime = mapTimes.find(iFrame);
        machine::AdvanceClock(itTime != mapTimes.end() ? itTime->second : iFrame < 1001 ? 3 : 2);
        ++iFrame;
    };
    for (int i = 0; i < 1001; ++i)
    {
        Input(std::vector<float>(960, 1.0F));
        RunAlgorithm();
    }
    const std::string strRecord = GetFile(AUDIO_PERFORMANCE_FILE + std::string("20260317.txt"));
    for (const char* pTimes :
         {"(3011),Max Time Required(9),Min Time Required(1),average Time Required(3.01) of Per 1001 frames.",
          "(2005),Max Time Required(5),Min Time Required(2),average Time Required(2.00) of Per 1001 frames."})
        EXPECT_NE(strRecord.find(std::string("Total Time Required") + pTimes), std::string::npos) << strRecord;
    // Two frames took longer than they play; two others as long.
    EXPECT_EQ(CountLog("Audio Kelvane Apply time gap:12"), 1U);
    EXPECT_EQ(CountLog("time gap:"), 1U);
}

TEST_F(FrameTest, AThousandSilentFramesInARowAreToldEachWay)
{
    StartLog(AUDIO_LEVEL_INFO);
    MakeHandEngine();
    CEngineInside::CacheFrameCount(*m_pEngine) = 0;
    const struct
    {
        int iPeriods; // of two frames in and one out
        float fSample;
        size_t iInputLines, iOutputLines; // so far
    } aSteps[] = {{499, 0, 0, 0}, {1, 0.5F, 0, 0}, {499, 0, 0, 0}, {1, 0, 1, 0},
                  {499, 0, 1, 0}, {1, 0, 2, 1},    {999, 0, 3, 1}, {1, 0, 4, 2}};
    for (const auto& oStep : aSteps)
    {
        for (int i = 0; i < oStep.iPeriods; ++i)
        {
            Input(std::vector<float>(960, oStep.fSample));
            RunAlgorithm();
            Output(480);
        }
        EXPECT_EQ(CountLog("Input Frame Energy is near zero!"), oStep.iInputLines);
        EXPECT_EQ(CountLog("Output Frame Energy is near zero!"), oStep.iOutputLines);
    }
}

TEST_F(FrameTest, TheInlineStreamTellsEachJobThatFails)
{
    StartLog(AUDIO_LEVEL_ERROR);
    CManagerInside::Tuning().m_iAlgoCtrlParam[5] = 1; // temperatures are reported, to no controller
    CManagerInside::EntryPoints().m_fAudioKelvaneGetPara = [](void*, KelvaneStruParam*) { return 0; };
    CManagerInside::EntryPoints().m_fAudioKelvaneTemperature = [](void*, int32_t) { return 21; };
    MakeEngine(2, 48000, true);
    ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
    machine::FailNext("GetSystemPowerStatus", 31, -1);
    for (int i = 0; i < 1000; ++i) // ten seconds
        Input(Ramp(480));
    // Each second, each five, each ten.
    EXPECT_EQ(CountLog("this->AudioKelvaneSetBatteryInfo()"), 10U);
    EXPECT_EQ(CountLog("this->AudioSmartSetECTemperature()"), 2U);
    EXPECT_EQ(CountLog("this->AudioKelvaneSetAlgoTemperature()"), 1U);
}

// The slow clock's two workers, with the algorithm run by hand: each wait that fails is theirs.
TEST_F(FrameTest, AWaitThatFailsEndsNoWorker)
{
    static std::atomic<int> iTemperatures;
    iTemperatures = 0;
    CManagerInside::EntryPoints().m_fAudioKelvaneTemperature = [](void*, int32_t) { return 0 * ++iTemperatures; };
    MakeHandEngine().InitializeWMI();
    m_pEngine->CreateTemperatureThread();
    m_pEngine->CreateParameterThread();
    WaitForWorkers();
    machine::FailNext("WaitForSingleObject", 6, 10);
    machine::SetPowerStatus({1, 0, 100, 0, 0, 0});
    for (int i = 1; i <= 1000; ++i) // ten seconds
    {
        Input(Ramp(480));
        RunAlgorithm();
        WaitForWorkers();
        ASSERT_EQ(iTemperatures, i == 1000 ? 1 : 0) << "a failed wait isn't time";
    }
    EXPECT_EQ(m_oLibrary.iBattery, 100);
}
