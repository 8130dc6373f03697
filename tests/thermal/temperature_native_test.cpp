// Temperature told to the embedded controller and to the library, when each job runs, and what is recorded.
#include "tests/thermal/thermal_test.h"

TEST_F(ThermalTest, HottestCoilIsReportedAndTakenBack)
{
    struct Row
    {
        int16_t iLastCoil, iOtherCoils;
        UINT64 ulWord;
        int iLast;
    };
    const Row aRows[] = {{4530, 4410, 0x01C50F02, 453}, {4530, 4410, 0x01C60F02, 454}, {4530, 4410, 0x01C50F02, 453},
                         {-300, -1, 0x0F02, 0},         {8009, -9, 0x03200F02, 800},   {0, 8010, 0x03210F02, 801}};
    StartLog(AUDIO_LEVEL_INFO);
    MakeThermalEngine();
    for (const Row& oRow : aRows)
    {
        std::fill_n(g_oState.sLSMCoilTemp, 7, oRow.iOtherCoils);
        g_oState.sLSMCoilTemp[7] = oRow.iLastCoil;
        EXPECT_EQ(m_pEngine->AudioSmartSetECTemperature(), 0);
        EXPECT_EQ(TakeWords(), std::vector<UINT64>{oRow.ulWord});
        EXPECT_EQ(CEngineInside::LastECTemperature(*m_pEngine), oRow.iLast);
    }
    EXPECT_EQ(CountLog("3841119 Set EC Temperature to "), 1U);
    m_bRefusing = true;
    EXPECT_EQ(m_pEngine->AudioSmartSetECTemperature(), 13);
    EXPECT_EQ(CEngineInside::LastECTemperature(*m_pEngine), 801);
    g_iStateCode = 4; // the library's state can't be read
    m_pEngine->AudioSmartSetECTemperature();
    EXPECT_EQ(TakeWords().back(), 0x0F02U);
    EXPECT_EQ(FindLog("m_pWMIHandle->SetECTemperature(iSetTemperature)").at(0).strFunction,
              "AudioSmartSetECTemperature");
    m_pEngine.reset();
    EXPECT_EQ(TakeWords().back(), 0x0F02U);
    CManagerInside::Tuning().m_iAlgoCtrlParam[5] = 0;
    EXPECT_EQ(MakeThermalEngine().AudioSmartSetECTemperature(), 0);
    m_pEngine.reset();
    EXPECT_TRUE(TakeWords().empty());
}

TEST_F(ThermalTest, LibraryIsToldTheSensorsTemperature)
{
    struct Row
    {
        INT64 iSensor, iOffset;
        int iTenths, iTold;
    };
    const Row aRows[] = {{0x1A, 5, 300, 2500}, {0x1A, -5, 300, 3500}, {0x1A, 5, -52, -1020},
                         {0, 5, 300, 2500},    {-3, 5, 300, 2500},    {0x1B, 5, 300, 2500}};
    MakeThermalEngine();
    for (const Row& oRow : aRows)
    {
        CManagerInside::Tuning().m_iAlgoCtrlParam[7] = oRow.iSensor;
        CManagerInside::Tuning().m_iAlgoCtrlParam[2] = oRow.iOffset;
        m_mapTenths[0x1A] = oRow.iTenths;
        EXPECT_EQ(m_pEngine->AudioKelvaneSetAlgoTemperature(), 0);
        EXPECT_EQ(g_iTold, oRow.iTold) << oRow.iSensor << " " << oRow.iOffset;
    }
    m_mapTenths[0x1B] = 1040; // which this library refuses
    EXPECT_EQ(m_pEngine->AudioKelvaneSetAlgoTemperature(), 21);
    machine::RemoveController();
    EXPECT_EQ(MakeThermalEngine().AudioKelvaneSetAlgoTemperature(), 0);
    EXPECT_EQ(g_iTold, 2500);
}

static size_t Count(const std::string& strText, const std::string& strPart)
{
    size_t iCount = 0;
    for (size_t i = strText.find(strPart); i != std::string::npos; i = strText.find(strPart, i + 1))
        ++iCount;
    return iCount;
}

TEST_F(ThermalTest, JobsRunByTheAudiosTimeInBothModes)
{
    MakeFolder(AUDIO_VOICE_LOG_DIR);
    CManagerInside::DebugMode() = 1;
    std::fill_n(g_oState.sLSMCoilTemp, 8, static_cast<int16_t>(3000));
    m_mapTenths = {{1, 350}, {0x1A, 350}}; // sensor 2 can't be had
    const struct
    {
        int iSampleRate, iFrameCount;
        bool bInline;
    } aRows[] = {{48000, 480, false},  {48000, 960, false}, {48000, 4800, false}, {22050, 220, false},
                 {44100, 1024, false}, {48000, 480, true},  {44100, 4410, true}};
    size_t aSums[2][3] = {}; // what the record files hold
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(std::to_string(oRow.iSampleRate) + " Hz, " + std::to_string(oRow.iFrameCount));
        const std::string strOffload = oRow.bInline ? AUDIO_OFFLOAD_PREFIX : "";
        MakeEngine(2, oRow.iSampleRate, oRow.bInline);
        ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
        m_oLibrary.iApplyCount = 0;
        const std::vector<float> vecFrame = Ramp(oRow.iFrameCount);
        for (int iTick = 0; iTick < 2000;) // of 10 ms
        {
            Input(vecFrame);
            WaitForWorkers();
            Output(static_cast<UINT32>(oRow.iFrameCount));
            std::vector<UINT64> vecExpected;
            while (iTick < m_oLibrary.iApplyCount / 2)
            {
                if (++iTick % 500 == 0)
                    vecExpected.push_back(iTick / 500 % 2 == 1 ? 0x012C0F02U : 0x012D0F02U);
                if (iTick % 1000 == 0)
                    vecExpected.insert(vecExpected.end(), {0x1A0202, 0x010202, 0x020202});
            }
            ASSERT_EQ(TakeWords(), vecExpected) << iTick;
        }
        EXPECT_EQ(g_iTold.exchange(0), 3500);
        size_t* const pSums = aSums[oRow.bInline];
        EXPECT_EQ(Count(Record("Parameters_" + strOffload), "KelvParamID:30080;"),
                  pSums[0] += oRow.bInline ? 20 : 2000);
        EXPECT_EQ(Count(Record("Performance_" + strOffload), "of Per 1001 frames.\n"),
                  pSums[1] += m_oLibrary.iApplyCount / 1001U);
        EXPECT_EQ(Count(Record("Temperature_" + strOffload), "3500,2499\n"), pSums[2] += 2);
        m_pEngine.reset();
        EXPECT_EQ(TakeWords(), std::vector<UINT64>{0x0F02});
    }
}

TEST_F(ThermalTest, RecordsGoToTheDaysFileInDebugModeOnly)
{
    StartLog(AUDIO_LEVEL_WARN);
    const auto fnPrint = [this](const char* pText)
    { m_pManager->PrintSmartDebugLog(AUDIO_TEMPERATURE_FILE, pText, 0); };
    CManagerInside::DebugMode() = 1;
    fnPrint("no folder");
    MakeFolder(AUDIO_VOICE_LOG_DIR);
    CManagerInside::DebugMode() = 0;
    fnPrint("not in debug mode");
    CManagerInside::DebugMode() = 1;
    machine::SetClock({2026, 3, 2, 17, 23, 59, 59, 0});
    machine::FreezeClock();
    fnPrint("1,2");
    fnPrint("3,4");
    machine::AdvanceClock(1000);
    fnPrint("5,6");
    machine::FailNext("fopen_s", 13);
    fnPrint("lost");
    const std::string strNext = AUDIO_TEMPERATURE_FILE + std::string("20260318.txt");
    EXPECT_EQ(Record("Temperature_"), "1,2\n3,4\n");
    EXPECT_EQ(GetFile(strNext), "5,6\n");
    ASSERT_EQ(ReadLog().size(), 1U);
    EXPECT_EQ(ReadLog()[0].strMessage, "open file failed! FileName:" + strNext);
    EXPECT_EQ(ReadLog()[0].iErrorCode, 13);
}

TEST_F(ThermalTest, StateTextShowsEachFieldInItsUnit)
{
    struct Row
    {
        const char* pField;
        int iWord;
        float fDivisor;
    };
    const Row aRows[] = {{"sFFModule", 1, 1},           {"sIPWCurrentGain", 5053, 10000},
                         {"sIPWPCurrent", 5061, 1000},  {"sIPWPctmax", 5069, 1000},
                         {"sLSMRe", 2814, 100},         {"sLSMReWire", 2838, 100},
                         {"sLSMCoilTemp", 2854, 100},   {"sPOWPrms", 3405, 100},
                         {"sPOWTargetGain", 3517, 100}, {"sTEPCurrentGain", 3639, 100},
                         {"sANDCurrentGain", 4160, 100}};
    MakeThermalEngine();
    EXPECT_EQ(m_pEngine->AudioSmartPrintPara(), "");
    EXPECT_EQ(m_pEngine->AudioKelvanePrintTemperature(), 0);
    EXPECT_TRUE(TakeWords().empty()) << "sampled outside debug mode";
    CManagerInside::DebugMode() = 1;
    CEngineInside::ParamID(*m_pEngine) = "";
    machine::SetPowerStatus({1, 0, 77, 0, 0, 0});
    m_pEngine->AudioKelvaneSetBatteryInfo();
    CAudioMonitor::Instance()->StatusRecord().m_fSpeakerVolumeDB = -10.5F;
    int16_t* const pWords = reinterpret_cast<int16_t*>(&g_oState);
    pWords[2894] = 3100;
    pWords[4892] = -50;
    std::string strExpected = "KelvParamID:;";
    for (const Row& oRow : aRows)
    {
        pWords[oRow.iWord] = -12345;
        pWords[oRow.iWord + 7] = 100;
        char szText[128];
        snprintf(szText, sizeof(szText), "%s[8]=%.2f,0.00,0.00,0.00,0.00,0.00,0.00,%.2f;", oRow.pField,
                 -12345 / oRow.fDivisor, 100 / oRow.fDivisor);
        strExpected += szText;
    }
    const std::string strGap(30, ' ');
    strExpected += "sLSMMonitorTemp = 3100.00;" + strGap + "sBCNCurrentGain = -0.50;" + strGap +
                   "SpeakerDBVolume = -10.50," + strGap + "SpeakerPersentVolume = 0," + strGap +
                   "BatteryLifePercent = 77," + strGap + "ACLineStatus = 1\n";
    EXPECT_EQ(m_pEngine->AudioSmartPrintPara(), strExpected);
}
