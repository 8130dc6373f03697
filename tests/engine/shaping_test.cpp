// Shaping: every rate and frame length keeps the stream whole, whatever the blocks.
#include "tests/engine/engine_test.h"

class ShapingTest : public EngineTest
{
protected:
    // One period of the ramp in, and all that came of it behind vecOut. The input.
    std::vector<float> Play(int iFrameCount, std::vector<float>& vecOut)
    {
        const std::vector<float> vecIn = Ramp(iFrameCount);
        Input(vecIn);
        RunAlgorithm();
        for (CAudioFrame oFrame = CEngineInside::OutputQueue(*m_pEngine).Pop(); oFrame.pData != nullptr;
             oFrame = CEngineInside::OutputQueue(*m_pEngine).Pop())
            vecOut.insert(vecOut.end(), oFrame.pData.get(), oFrame.pData.get() + oFrame.iDataLen);
        return vecIn;
    }
};

TEST_F(ShapingTest, EveryGeometryKeepsTheStreamWhole)
{
    for (const int iSampleRate : {16000, 22050, 32000, 44100, 48000, 96000})
        for (const int iFrameCount : {1, 37, 64, 240, 441, 480, 960, 1024})
            for (const int iChannel : {1, 2, 6})
            {
                SCOPED_TRACE(std::to_string(iSampleRate) + "/" + std::to_string(iFrameCount) + "/" +
                             std::to_string(iChannel));
                MakeHandEngine(iChannel, iSampleRate);
                m_iRampFrame = 0;
                std::vector<float> vecOut;
                m_pEngine->InitAudioCacheBuffer(iChannel, static_cast<UINT32>(iFrameCount));
                // Room for a period, a block, and the lead-in of a stream whose periods aren't whole blocks.
                const int iBlockLen = iSampleRate == 22050 ? 221 : iSampleRate / 100;
                const bool bWhole = iFrameCount % (iSampleRate == 22050 ? 441 : iBlockLen) == 0;
                EXPECT_EQ(CEngineInside::InputCacheDataLen(*m_pEngine), bWhole ? 0 : 3 * iBlockLen * iChannel);
                EXPECT_EQ(CEngineInside::InputCapacity(*m_pEngine),
                          iBlockLen + CEngineInside::InputCacheDataLen(*m_pEngine) + iFrameCount * iChannel);
                EXPECT_EQ(CEngineInside::OutputCapacity(*m_pEngine), CEngineInside::InputCapacity(*m_pEngine));
                const bool bStandard = iSampleRate == 48000 && iFrameCount % 240 == 0; // passes the input cache by
                const int iLeadIn = bStandard ? 0 : CEngineInside::InputCacheDataLen(*m_pEngine) / iChannel;
                while (m_iRampFrame < 5000)
                    Play(iFrameCount, vecOut);
                // Nothing lost, nothing doubled.
                const int iOutFrames = static_cast<int>(vecOut.size()) / iChannel;
                const int iHeld = (bStandard ? 0 : CEngineInside::InputCacheDataLen(*m_pEngine)) +
                                  CEngineInside::OutputCacheDataLen(*m_pEngine) +
                                  CEngineInside::AlgoOutputDataLen(*m_pEngine) * (iSampleRate / 50) / 960;
                EXPECT_EQ(iOutFrames + iHeld / iChannel, iLeadIn + m_iRampFrame);
                // In order, each channel its own, within what the plain conversions may bend.
                const float fBend = iSampleRate == 48000 ? 0.0F : 2.0F;
                for (int s = 0; s < iOutFrames; ++s)
                    for (int ch = 0; ch < iChannel; ++ch)
                    {
                        const float fIn =
                            s < iLeadIn ? 0.0F : static_cast<float>(s - iLeadIn + 1) + static_cast<float>(ch) * 0.25F;
                        ASSERT_NEAR(vecOut[static_cast<size_t>(s * iChannel + ch)], fIn, fBend) << s << " " << ch;
                    }
            }
}

TEST_F(ShapingTest, LongerCallbacksGrowTheCachesOnce)
{
    StartLog(AUDIO_LEVEL_INFO);
    MakeHandEngine();
    std::vector<float> vecIn(2880, 0.0F), vecOut;
    for (const int iFrameCount : {441, 441, 4096, 4096, 4096, 100, 441, 4096, 3000})
    {
        const std::vector<float> vecFrames = Play(iFrameCount, vecOut);
        vecIn.insert(vecIn.end(), vecFrames.begin(), vecFrames.end());
    }
    ASSERT_GT(vecOut.size(), 30000U);
    ASSERT_LE(vecOut.size(), vecIn.size());
    EXPECT_TRUE(std::equal(vecOut.begin(), vecOut.end(), vecIn.begin()));
    EXPECT_EQ(CountLog("m_pInputCacheBuffer grown, SystemPerFrame Length:4096"), 1U);
    EXPECT_EQ(CountLog("m_pOutputCacheBuffer grown, SystemPerFrame Length:4096"), 1U);
    EXPECT_EQ(CountLog(" grown,"), 2U);
}

TEST_F(ShapingTest, FrameCountsBeyondAnyBufferAreRefused)
{
    StartLog(AUDIO_LEVEL_INFO);
    const UINT32 aFrameCounts[] = {0x3FFFFFFF, 0x7FFFFFFF, 0xFFFFFFFF};
    for (const UINT32 ulFrameCount : aFrameCounts)
    {
        MakeHandEngine(2, 44100);
        EXPECT_EQ(m_pEngine->InputDataToQueue(nullptr, 2, ulFrameCount), 13);
        // A period of such a count behind a good one: the worker has nothing to cut its output into.
        MakeHandEngine();
        Input(Ramp(480 * 4));
        CEngineInside::Stream(*m_pEngine).m_iSystemFrameLen = static_cast<int>(ulFrameCount);
        RunAlgorithm();
        EXPECT_TRUE(CEngineInside::OutputQueue(*m_pEngine).Empty());
        EXPECT_EQ(CEngineInside::OutputCacheDataLen(*m_pEngine), 960 * 4);
    }
    EXPECT_EQ(CountLog("iSysDataLen <= 0"), std::size(aFrameCounts));
}
