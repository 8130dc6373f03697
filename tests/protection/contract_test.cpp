// Our protection library as its caller meets it: through the loader, the ten names and the records.
#include "tests/protection/library.h"

#include <atomic>
#include <thread>

namespace
{
// A set that multiplies channel i by (iGain + i) / 100.
KelvaneStruParam GainSet(int iGain)
{
    KelvaneStruParam stParam{};
    stParam.sFFModule[0] = 1;
    stParam.sChannelNum = 8;
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
        stParam.sPOWTargetGain[i] = static_cast<int16_t>(iGain + i);
    return stParam;
}

class ContractTest : public testing::Test
{
protected:
    ContractTest()
    {
        m_oLibrary.m_stData.iFrameLen = FRAME_LEN;
        for (size_t i = 0; i < KELVANE_MAX_CHANNELS; ++i)
        {
            m_oIn[i] = Make(Sine(400.0 * static_cast<double>(i + 1), 0.8), 0.005);
            m_oOut[i].assign(FRAME_LEN, 9.0f);
            m_oLibrary.m_stData.psDataIn[i] = m_oIn[i].data();
            m_oLibrary.m_stData.psDataOut[i] = m_oOut[i].data();
        }
    }

    CLibrary m_oLibrary;
    KelvaneDataStruct& m_stData = m_oLibrary.m_stData;
    std::array<Samples, KELVANE_MAX_CHANNELS> m_oIn;
    std::array<Samples, KELVANE_MAX_CHANNELS> m_oOut;
};

TEST_F(ContractTest, PassesBitForBitUntilASetProcesses)
{
    // Odd values stay what they are: a payload NaN, a denormal, minus zero.
    const std::array<uint32_t, 3> uOdd = {0x7FC12345u, 0x00000001u, 0x80000000u};
    memcpy(m_oIn[2].data(), uOdd.data(), sizeof(uOdd));
    m_stData.psDataIn[5] = nullptr;
    m_stData.psDataOut[6] = nullptr;
    KelvaneStruParam stPass = GainSet(50);
    stPass.sFFModule[0] = 0;
    for (int iRound = 0; iRound < 2; ++iRound)
    {
        ASSERT_EQ(m_oLibrary.Apply(), 0);
        for (const size_t i : {0, 1, 2, 3, 4, 7})
            EXPECT_EQ(memcmp(m_oOut[i].data(), m_oIn[i].data(), FRAME_LEN * sizeof(float)), 0) << i;
        EXPECT_EQ(m_oOut[5][0], 9.0f);
        ASSERT_EQ(m_oLibrary.Set(stPass), 0);
    }
}

TEST_F(ContractTest, AppliesEachChannelsGainAndReportsItsState)
{
    ASSERT_EQ(m_oLibrary.Set(GainSet(50)), 0);
    ASSERT_EQ(m_oLibrary.Temperature(6150), 0);
    m_stData.psDataOut[1] = m_stData.psDataIn[1];
    m_stData.psDataOut[3] = nullptr;
    const Samples oSecond = m_oIn[1];
    ASSERT_EQ(m_oLibrary.Apply(), 0);
    for (size_t j = 0; j < FRAME_LEN; ++j)
    {
        ASSERT_FLOAT_EQ(m_oOut[0][j], m_oIn[0][j] * 0.5f);
        ASSERT_FLOAT_EQ(m_oIn[1][j], oSecond[j] * 0.51f); // in place
        ASSERT_FLOAT_EQ(m_oOut[7][j], m_oIn[7][j] * 0.57f);
    }

    const KelvaneStruParam stState = m_oLibrary.Get();
    EXPECT_EQ(stState.sANDCurrentGain[7], 57);
    EXPECT_EQ(stState.sIPWCurrentGain[0], 5000);
    EXPECT_EQ(stState.sLSMCoilTemp[4], 6150);
    EXPECT_EQ(stState.sLSMMonitorTemp, 62);
    EXPECT_NEAR(stState.sPOWPrms[7], 100 * 0.8 * 0.57 / std::sqrt(2.0), 2.0);
    EXPECT_EQ(stState.sPOWPrms[3], 0);

    EXPECT_EQ(m_oLibrary.Temperature(1000000), 4);
    EXPECT_EQ(m_oLibrary.Get().sLSMCoilTemp[0], 6150);
    EXPECT_EQ(m_oLibrary.Find<KelvaneClearStatus>("AudioKelvaneClearStatus")(m_oLibrary.RunBuf()), 0);
    EXPECT_EQ(m_oLibrary.Get().sLSMCoilTemp[0], 2500);
    EXPECT_EQ(m_oLibrary.Get().sPOWPrms[7], 0);
}

TEST_F(ContractTest, RefusesWrongArguments)
{
    const auto fSetPara = m_oLibrary.Find<KelvaneSetPara>("AudioKelvaneSetParams");
    const auto fGetPara = m_oLibrary.Find<KelvaneGetPara>("AudioKelvaneGetParams");
    const auto fApply = m_oLibrary.Find<KelvaneApply>("AudioKelvaneApply");
    KelvaneStruParam stParam{};
    std::vector<uint64_t> oForeign(4096, 0x5A5A5A5A5A5A5A5Au);
    void* const pScratch = m_oLibrary.ScratchBuf();
    EXPECT_TRUE(fSetPara(m_oLibrary.RunBuf(), pScratch, nullptr) && fApply(m_oLibrary.RunBuf(), pScratch, nullptr));
    for (void* pRunBuf : {static_cast<void*>(nullptr), static_cast<void*>(oForeign.data())})
    {
        EXPECT_TRUE(fSetPara(pRunBuf, pScratch, &stParam) && fGetPara(pRunBuf, &stParam));
        EXPECT_TRUE(fApply(pRunBuf, pScratch, &m_stData));
    }
    for (const int iFrameLen : {-1, 0, 241, 0x7FFFFFFF})
    {
        m_stData.iFrameLen = iFrameLen;
        EXPECT_EQ(m_oLibrary.Apply(), 3) << iFrameLen;
    }
}

// Sets of one gain for all channels are swapped while frames run, some of them protecting: channels stay alike, every
// reading is one whole set, and the other entry points are called all the while.
TEST_F(ContractTest, StandsThreeThreadsOnOneRunBuffer)
{
    std::array<KelvaneStruParam, 3> oSets{};
    for (size_t iSet = 0; iSet < oSets.size(); ++iSet)
    {
        oSets[iSet] = With(DefaultParameters(), {{KelvaneParameter::MODE, iSet == 2 ? 2 : 1},
                                                 {KelvaneParameter::DRIVE, 25.0 * static_cast<double>(iSet + 1)}});
        oSets[iSet].sLSMTvcCoef0[200] = static_cast<double>(iSet);
    }
    ASSERT_EQ(m_oLibrary.Set(oSets[0]), 0);
    for (Samples& oChannel : m_oIn)
        oChannel.assign(FRAME_LEN, 0.1f);

    std::atomic<bool> bRun{true};
    std::atomic<int> iTorn{0};
    std::thread oSetter(
        [&]
        {
            for (size_t i = 0; bRun; ++i)
            {
                m_oLibrary.Set(oSets[i % oSets.size()]);
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
    std::thread oReader(
        [&]
        {
            const auto fClear = m_oLibrary.Find<KelvaneClearStatus>("AudioKelvaneClearStatus");
            const auto fOptimize = m_oLibrary.Find<KelvaneIvOptimize>("AudioKelvaneIvOptimize");
            const auto fBattery = m_oLibrary.Find<KelvaneSetBatteryInfo>("AudioKelvaneSetBatteryInformation");
            for (int i = 0; bRun; ++i)
            {
                iTorn += m_oLibrary.Temperature(i % 8000) + fBattery(m_oLibrary.RunBuf(), i % 101);
                iTorn += fOptimize(m_oLibrary.RunBuf()) + (i % 64 == 0 ? fClear(m_oLibrary.RunBuf()) : 0);
                const KelvaneStruParam stParam = m_oLibrary.Get();
                iTorn += stParam.sPOWTargetGain[0] != 25 * (static_cast<int>(stParam.sLSMTvcCoef0[200]) + 1);
            }
        });
    float f32Lowest = 1.0f, f32Highest = 0.0f;
    for (int iFrame = 0; iFrame < 4000 || (iFrame < 2000000 && f32Lowest == f32Highest); ++iFrame)
    {
        iTorn += m_oLibrary.Apply() != 0;
        f32Lowest = std::min(f32Lowest, m_oOut[0][0]);
        f32Highest = std::max(f32Highest, m_oOut[0][0]);
        for (const Samples& oChannel : m_oOut)
            iTorn += oChannel != m_oOut[0] || !(oChannel[0] >= 0.0f && oChannel[0] <= 0.1f);
    }
    bRun = false;
    oSetter.join();
    oReader.join();
    EXPECT_EQ(iTorn, 0);
    EXPECT_LT(f32Lowest, f32Highest);
}
} // namespace
