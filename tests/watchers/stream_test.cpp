// A running stream follows what another program sets, from its next period on.
#include "tests/engine/engine_test.h"
#include "tests/watchers/watcher_test.h"

#include <chrono>
#include <iterator>

namespace
{
using StreamTest = EngineTest;

TEST_F(StreamTest, FollowsBypassHeadsetModeAndVolume)
{
    StartLog();
    for (const char* pPath : {AUDIO_BYPASS_PATH, AUDIO_HEADSET_PATH, AUDIO_ZVSOUND_PATH, AUDIO_SPEAKER_VOLUME_PATH})
        CAudioREG::CreateRegKey(pPath);
    CManagerInside::Tuning().m_mapAlgoParam["50000"] = std::make_unique<KelvaneStruParam>();
    m_oLibrary.fnApply = [](KelvaneDataStruct& oData)
    {
        for (int ch = 0; ch < 2; ++ch)
            for (int s = 0; s < oData.iFrameLen; ++s)
                oData.psDataOut[ch][s] *= 0.5F;
    };
    CAudioStatus& oStatus = CAudioMonitor::Instance()->StatusRecord();
    CAudioMonitor::Instance()->Initialize({std::begin(AUDIO_MONITOR_LIST), std::end(AUDIO_MONITOR_LIST)});
    WaitForWorkers();
    auto pObject = OpenStream();
    const auto fPlay = [&]
    {
        CPeriod oPeriod(2, 480);
        oPeriod.Run(*pObject);
        WaitForWorkers();
        return oPeriod.m_vecOutput[0];
    };
    for (int i = 0; i < 4; ++i)
        fPlay();

    const struct
    {
        const char* pPath;
        const char* pName;
        DWORD dwSetting;
        CAudioInt CAudioStatus::*piField;
        int iValue;
        FLOAT32 f32Output; // of ones: 1 is bypassed, 0.5 processed
        const char* pLine;
    } aCases[] = {
        {AUDIO_BYPASS_PATH, "KelvaneStatus", 1, &CAudioStatus::m_iKelvaneBypass, 1, 1.0F,
         "Kelvane Bypass Status 0 change to 1"},
        {AUDIO_BYPASS_PATH, "KelvaneStatus", 2, &CAudioStatus::m_iKelvaneBypass, 2, 0.5F,
         "Kelvane Bypass Status 1 change to 2"},
        {AUDIO_HEADSET_PATH, "HeadsetStatus", 7, &CAudioStatus::m_iHeadSetStatus, 1, 1.0F, ",Headset Status:1"},
        {AUDIO_HEADSET_PATH, "HeadsetStatus", 0, &CAudioStatus::m_iHeadSetStatus, 0, 0.5F, ",Headset Status:0"},
        {AUDIO_SPEAKER_VOLUME_PATH, "VolumeNum", 30, &CAudioStatus::m_iSpeakerVolume, 30, 0.5F, "from 30080 to 30020"},
        {AUDIO_ZVSOUND_PATH, "ZvSoundStatus", 1, &CAudioStatus::m_iZvSoundStatus, 1, 0.5F,
         "Support ZvSound Status 0 change to 1"},
        {AUDIO_ZVSOUND_PATH, "SpeakerMode", 4, &CAudioStatus::m_iSpeakerMode, 4, 0.5F, "from 30020 to 50000"},
    };
    for (const auto& oCase : aCases)
    {
        SCOPED_TRACE(std::string(oCase.pName) + "=" + std::to_string(oCase.dwSetting));
        SetElsewhere(oCase.pPath, oCase.pName, oCase.dwSetting);
        EXPECT_TRUE(WaitFor([&] { return oStatus.*oCase.piField == oCase.iValue; }));
        EXPECT_EQ(fPlay(), oCase.f32Output);
        EXPECT_GE(CountLog(oCase.pLine), 1U) << oCase.pLine;
    }
    pObject.reset();
}

// The lock that comes right behind the load; it waits for 250 ms at most.
TEST_F(StreamTest, BeginsByTheRegistrysValues)
{
    SetRegistry(AUDIO_SPEAKER_VOLUME_PATH, "VolumeNum", 30);
    SetRecordChannels(2, "30020");
    const KelvaneStruParam* const pParam = CManagerInside::Tuning().m_mapAlgoParam["30020"].get();
    int iWaits = 0;
    for (int iRound = 0; iRound < 30; ++iRound)
    {
        CAudioMonitor::Instance()->Initialize({std::begin(AUDIO_MONITOR_LIST), std::end(AUDIO_MONITOR_LIST)});
        const auto oBegin = std::chrono::steady_clock::now();
        OpenStream();
        const bool bWaited = std::chrono::steady_clock::now() - oBegin >= std::chrono::milliseconds(240);
        iWaits += bWaited;
        EXPECT_TRUE(bWaited || m_oLibrary.pLastParam == pParam) << iRound;
        CAudioMonitor::DeleteInstance();
    }
    EXPECT_LT(iWaits, 30);
}
} // namespace
