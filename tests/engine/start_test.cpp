// Start-up, its failures, the second start, and the choice of parameter sets.
#include "tests/engine/engine_test.h"

using StartTest = EngineTest;

TEST_F(StartTest, EachFailedStepIsNamedAndTakesTheStreamOffTheAlgorithm)
{
    struct Row
    {
        const char* pText;
        int iCode;
        std::function<void()> fnBreak;
    };
    const int iBadSize = static_cast<int>(0x80E7000E);
    const std::vector<Row> vecRows = {
        {"FALSE == CKelvaneManager::Instance()->GetLoadDLLStatus()", 6, [&] { CManagerInside::LoadDLL() = FALSE; }},
        {"m_fAudioKelvaneGetSize(m_pMemSize)", 5, [&] { m_oLibrary.iSizeCode = 5; }},
        {"(m_pMemSize->iRunBufSize <= 0)", iBadSize, [&] { m_oLibrary.oSize.iRunBufSize = 0; }},
        {"(m_pMemSize->iScratchSize <= 0)", iBadSize, [&] { m_oLibrary.oSize.iScratchSize = -1; }},
        {"m_pRunBuf", 1001, [&] { m_oLibrary.oSize.iRunBufSize = 0x7FFFFFFF; }},
        {"m_fAudioKelvaneInit(m_pRunBuf, m_pScratchBuf)", 7, [&] { m_oLibrary.iInitCode = 7; }},
        {"iRealChannlCount > KELVANE_MAX_CHANNELS", 13, [] { SetRecordChannels(9); }},
        {"pStruParam", 1171, [&] { CManagerInside::Tuning().m_mapAlgoParam.clear(); }},
        {"m_fAudioKelvaneSetPara(m_pRunBuf, m_pScratchBuf, pStruParam)", 8, [&] { m_oLibrary.iSetParaCode = 8; }},
        {"GetSystemPowerStatus(&oSysPower)", 12, [] { machine::FailNext("GetSystemPowerStatus", 31, 2); }},
    };
    StartLog(AUDIO_LEVEL_WARN);
    for (const Row& oRow : vecRows)
        for (const int iDebugMode : {0, 1})
        {
            SCOPED_TRACE(oRow.pText);
            Mend();
            CManagerInside::DebugMode() = iDebugMode;
            oRow.fnBreak();
            MakeEngine();
            EXPECT_EQ(m_pEngine->InitAlgorithmParameter(), oRow.iCode == 13 ? 1001 : oRow.iCode);
            const std::vector<LogLine> vecLines = FindLog(oRow.pText);
            ASSERT_FALSE(vecLines.empty());
            EXPECT_EQ(vecLines.back().strMessage, oRow.pText);
            EXPECT_EQ(vecLines.back().iErrorCode, oRow.iCode);
            EXPECT_EQ(m_pEngine->GetSilentStatus(), iDebugMode);
            EXPECT_EQ(m_pEngine->GetBypassStatus(), 1 - iDebugMode);
            EXPECT_FALSE(CEngineInside::HasMemory(*m_pEngine));
            EXPECT_EQ(CEngineInside::ThreadRun(*m_pEngine), 0);
            // Frames that come all the same cost a line, nothing else.
            EXPECT_EQ(Input(Ramp(480)), 0);
            RunAlgorithm();
        }
    for (const auto& [pStep, iLines] : {std::pair("AudioKelvaneGetSize()", 8U), std::pair("AudioKelvaneInit()", 2U),
                                        std::pair("AudioKelvaneSetPara()", 6U), std::pair("m_pDataStruct", 2U),
                                        std::pair("AudioKelvaneSetBatteryInfo()", 2U)})
        EXPECT_EQ(CountLog(pStep), iLines) << pStep;
}

TEST_F(StartTest, StreamWithoutItsWorkerIsSilent)
{
    StartLog(AUDIO_LEVEL_WARN);
    for (const auto& [pCall, pText] :
         {std::pair("CreateThreadpoolWork", "m_pThreadWorker"), std::pair("CreateEventW", "m_hApplyEvent")})
    {
        machine::FailNext(pCall, 8, 1);
        MakeEngine();
        EXPECT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
        EXPECT_EQ(CountLog(pText), 1U);
        EXPECT_EQ(m_pEngine->GetSilentStatus(), 1);
        EXPECT_EQ(CEngineInside::ThreadRun(*m_pEngine), 0);
    }
}

TEST_F(StartTest, VolumeAndSoundModesChooseTheKey)
{
    struct Row
    {
        int iVolume, iSpeakerMode, iMicrophoneMode, iHeatState;
        const char* pKey;
    };
    const Row aRows[] = {
        {0, 0, 0, 0, "30080"},   {1, 0, 0, 0, "30000"},  {20, 0, 0, 0, "30000"}, {21, 0, 0, 0, "30020"},
        {40, 0, 0, 0, "30020"},  {41, 0, 0, 0, "30040"}, {80, 0, 0, 0, "30060"}, {81, 0, 0, 0, "30080"},
        {100, 8, 3, 0, "30080"}, {50, 0, 0, 1, "40040"}, {0, 0, 0, 1, "40080"},  {50, 4, 0, 0, "50000"},
        {50, 0, 4, 1, "50000"},  {50, 4, 5, 0, "50000"}, {50, 5, 0, 0, "50001"}, {50, 0, 6, 0, "50001"},
        {50, 7, 0, 1, "50001"},
    };
    CAudioStatus& oStatus = CAudioMonitor::Instance()->StatusRecord();
    MakeEngine();
    for (const Row& oRow : aRows)
    {
        oStatus.m_iSpeakerVolume = oRow.iVolume;
        oStatus.m_iSpeakerMode = oRow.iSpeakerMode;
        oStatus.m_iMicrophoneMode = oRow.iMicrophoneMode;
        EXPECT_STREQ(m_pEngine->GetEffectParamsID(oRow.iHeatState), oRow.pKey) << oRow.iVolume;
    }
    CManagerInside::Tuning().m_vecVolumeRange.pop_back();
    EXPECT_STREQ(m_pEngine->GetEffectParamsID(0), "");
}

TEST_F(StartTest, LibraryIsAskedOnlyForANewKey)
{
    StartLog(AUDIO_LEVEL_DEBUG);
    CAudioStatus& oStatus = CAudioMonitor::Instance()->StatusRecord();
    oStatus.m_iSpeakerVolume = 5;
    MakeHandEngine();
    for (const int iVolume : {20, 21, 39, 40})
    {
        oStatus.m_iSpeakerVolume = iVolume;
        EXPECT_EQ(m_pEngine->RefreshAlgorithmParams(), 0);
    }
    EXPECT_EQ(m_oLibrary.iSetParaCount, 2); // the first load and one change
    EXPECT_EQ(m_oLibrary.pLastParam, CManagerInside::Tuning().m_mapAlgoParam["30020"].get());
    EXPECT_EQ(CountLog("Refresh Algorithm Params from 30000 to 30020"), 1U);
    // Refused: the key is the new one all the same, and is not tried again.
    m_oLibrary.iSetParaCode = 9;
    oStatus.m_iSpeakerVolume = 90;
    EXPECT_EQ(m_pEngine->RefreshAlgorithmParams(), 0);
    EXPECT_EQ(m_pEngine->RefreshAlgorithmParams(), 0);
    EXPECT_EQ(m_oLibrary.iSetParaCount, 3);
    EXPECT_EQ(CountLog("m_fAudioKelvaneSetPara(m_pRunBuf, m_pScratchBuf, pStruParam)"), 1U);
}
