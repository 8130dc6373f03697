// The choice of parameter sets by heat, and the means' way from the temperature worker to the processing thread.
#include "tests/thermal/thermal_test.h"

#include <thread>

TEST_F(ThermalTest, HeatChoosesTheSetWithAllSensorsAgreeing)
{
    struct Row
    {
        const char* pWhat;
        int iRounds, iFirst, iSecond; // degrees of the two sensors
        int iVolume, iSpeakerMode;
        const char* pKey;
    };
    const Row aRows[] = {
        {"no means yet", 9, 20, 20, 90, 0, "30040"},          {"ten zeros are cool", 1, 20, 20, 90, 0, "30080"},
        {"the means are gone", 0, 20, 20, 10, 0, "30080"},    {"hot", 22, 41, 41, 10, 0, "40000"},
        {"sound mode overrules", 10, 41, 41, 10, 4, "50000"}, {"hot again", 10, 41, 50, 50, 0, "40040"},
        {"at the hot limit", 22, 40, 41, 10, 0, "40040"},     {"one hot, one cool", 22, 41, 20, 10, 0, "40040"},
        {"above the cool limit", 22, 30, 31, 10, 0, "40040"}, {"cool", 22, 30, 20, 10, 0, "30000"}};
    StartLog(AUDIO_LEVEL_DEBUG);
    CManagerInside::DebugMode() = 1;
    CManagerInside::Tuning().m_iAlgoCtrlParam[3] = 1;
    for (const char* pKey : {"30040", "40000", "40040", "50000"})
        CManagerInside::Tuning().m_mapAlgoParam[pKey] = std::make_unique<KelvaneStruParam>();
    CAudioStatus& oStatus = CAudioMonitor::Instance()->StatusRecord();
    oStatus.m_iSpeakerVolume = 50;
    MakeThermalEngine();
    const auto fnSample = [this](int iRounds, int iFirst, int iSecond)
    {
        m_mapTenths = {{1, iFirst * 10}, {2, iSecond * 10}};
        for (int i = 0; i < iRounds; ++i)
            m_pEngine->AudioKelvanePrintTemperature();
        EXPECT_EQ(m_pEngine->RefreshAlgorithmParams(), 0);
    };
    for (const Row& oRow : aRows)
    {
        oStatus.m_iSpeakerVolume = oRow.iVolume;
        oStatus.m_iSpeakerMode = oRow.iSpeakerMode;
        fnSample(oRow.iRounds, oRow.iFirst, oRow.iSecond);
        EXPECT_STREQ(m_pEngine->ParamID(), oRow.pKey) << oRow.pWhat;
        EXPECT_EQ(m_oLibrary.pLastParam, CManagerInside::Tuning().m_mapAlgoParam[oRow.pKey].get());
    }
    EXPECT_EQ(CountLog("Refresh Algorithm Params from "), 5U);
    EXPECT_EQ(m_oLibrary.iSetParaCount, 6);
    EXPECT_EQ(CountLog("iSenSorID:1,Average Temperature:31> Low Limit:30"), 1U);
    CManagerInside::Tuning().m_vecSensorRangeNormal.pop_back(); // a sensor without a limit is never hot
    fnSample(22, 50, 50);
    EXPECT_STREQ(m_pEngine->ParamID(), "30000");
    // The smallest and the largest sample don't count.
    for (const int iDegrees : {10, 90, 40, 40, 40, 40, 40, 40, 40, 40, 40, 40})
        fnSample(1, iDegrees, 0);
    EXPECT_EQ(CEngineInside::Means(*m_pEngine).Read()[0].end()[-1], 40);
}

TEST(AverageQueueTest, ReaderSeesWholeRoundsAndNoneFromBeforeAClear)
{
    CKelvaneAverageQueue oQueues;
    oQueues.Resize(2);
    std::atomic<bool> bRun{true};
    std::thread oWriter(
        [&]
        {
            for (INT32 i = 1; bRun; ++i)
            {
                oQueues.BeginRound();
                oQueues.Push(0, i);
                oQueues.Push(1, -i);
                oQueues.Publish();
                std::this_thread::yield();
            }
        });
    INT32 iSeen = 0; // the last mean before the last Clear
    int iBad = 0;
    for (int iClearCount = 0; iClearCount < 300;)
    {
        const std::vector<CKelvaneMeanQueue>& vecMeans = oQueues.Read();
        INT32 iExpected = vecMeans[0].begin() == vecMeans[0].end() ? iSeen + 1 : *vecMeans[0].begin();
        iBad += iExpected > iSeen ? 0 : 1;
        const auto fSame = [&](INT32 iA, INT32 iB) { return iA == iExpected++ && iB == -iA; };
        if (!std::equal(vecMeans[0].begin(), vecMeans[0].end(), vecMeans[1].begin(), vecMeans[1].end(), fSame))
            ++iBad;
        if (vecMeans[0].IsFull())
        {
            iSeen = vecMeans[0].end()[-1];
            oQueues.Clear();
            ++iClearCount;
        }
        else
            std::this_thread::yield();
    }
    bRun = false;
    oWriter.join();
    EXPECT_EQ(iBad, 0);
}
