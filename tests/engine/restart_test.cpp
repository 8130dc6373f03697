// A second start of the same engine: what the first left behind is gone.
#include "tests/engine/engine_test.h"

#include <limits>

using RestartTest = EngineTest;

TEST_F(RestartTest, AudioBeginsAfreshInTheNewFormat)
{
    for (const bool bInline : {false, true})
    {
        SCOPED_TRACE(bInline);
        Mend();
        CManagerInside::DebugMode() = bInline ? 0 : 1;
        m_oLibrary.iInitCode = 7;
        MakeEngine(2, 44100, bInline);
        EXPECT_EQ(m_pEngine->InitAlgorithmParameter(), 7);
        CManagerInside::DebugMode() = 0;
        Mend();
        for (const int iFrameCount : {500, 441}) // leaves a rest in each cache
        {
            ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
            EXPECT_EQ(m_pEngine->GetSilentStatus() + m_pEngine->GetBypassStatus(), 0);
            SetFormat(2, iFrameCount == 500 ? 44100 : 48000);
            std::vector<float> vecIn(static_cast<size_t>(2 * ((bInline ? 0 : 3) * iFrameCount + 1440)), 0.0F);
            std::vector<float> vecOut;
            for (int iPeriod = 0; iPeriod < 41; ++iPeriod)
            {
                const std::vector<float> vecFrames = Ramp(iFrameCount);
                vecIn.insert(vecIn.end(), vecFrames.begin(), vecFrames.end());
                Input(vecFrames);
                WaitForWorkers();
                const std::vector<float> vecPeriod = Output(static_cast<UINT32>(iFrameCount));
                vecOut.insert(vecOut.end(), vecPeriod.begin(), vecPeriod.end());
            }
            EXPECT_TRUE(iFrameCount == 500 || std::equal(vecOut.begin(), vecOut.end(), vecIn.begin()));
        }
    }
}

TEST_F(RestartTest, CountersAndReportsBeginAfresh)
{
    StartLog(AUDIO_LEVEL_WARN);
    SetRecordChannels(1);
    MakeEngine(2, 48000, true);
    m_oLibrary.fnApply = [](const KelvaneDataStruct& oData)
    { oData.psDataOut[0][0] = std::numeric_limits<float>::infinity(); };
    for (size_t i = 1; i <= 2; ++i)
    {
        SetFormat(1, 48000);
        ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
        EXPECT_EQ(CEngineInside::FrameCounts(*m_pEngine) + CEngineInside::LastECTemperature(*m_pEngine), 0);
        for (const INT64* pTime : CEngineInside::Times(*m_pEngine))
            EXPECT_EQ(*pTime, 0);
        SetFormat(2, 48000);
        Input(Ramp(240 * 3));
        EXPECT_EQ(CountLog("has no array"), i);
        EXPECT_EQ(CountLog("not finite"), i);
        CEngineInside::LastECTemperature(*m_pEngine) = 315;
        for (INT64* pTime : CEngineInside::Times(*m_pEngine))
            *pTime = 1;
    }
    SetRecordChannels(2); // the record is made anew, with all its channels
    ASSERT_EQ(m_pEngine->InitAlgorithmParameter(), 0);
    SetFormat(2, 48000);
    Input(Ramp(240));
    EXPECT_EQ(CountLog("has no array"), 2U);
}
