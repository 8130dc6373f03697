// Our protection library as its caller meets it: through the loader, the ten names and the records.
#include "protection/kelvane_protection.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <memory>
#include <thread>
#include <vector>

namespace
{
constexpr int FRAME_LEN = 240;

class ProtectionLibraryTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_hDll = LoadLibraryA(KELVANE_LIBRARY_FILE);
        ASSERT_NE(m_hDll, nullptr);
        m_fApply = Find<KelvaneApply>("AudioKelvaneApply");
        m_fSetPara = Find<KelvaneSetPara>("AudioKelvaneSetParams");
        m_fGetPara = Find<KelvaneGetPara>("AudioKelvaneGetParams");
        m_fTemperature = Find<KelvaneTemperature>("AudioKelvaneSetTemperatureInformation");
        KelvaneMemSize stSize{};
        ASSERT_EQ(Find<KelvaneGetSize>("AudioKelvaneGetSize")(&stSize), 0);
        m_pRunBuf.reset(malloc(static_cast<size_t>(stSize.iRunBufSize)));
        m_pScratchBuf.reset(malloc(static_cast<size_t>(stSize.iScratchSize)));
        memset(m_pRunBuf.get(), 0xA5, static_cast<size_t>(stSize.iRunBufSize));
        ASSERT_EQ(Find<KelvaneInit>("AudioKelvaneInit")(m_pRunBuf.get(), m_pScratchBuf.get()), 0);

        m_stData.iFrameLen = FRAME_LEN;
        for (size_t i = 0; i < KELVANE_MAX_CHANNELS; ++i)
        {
            for (int j = 0; j < FRAME_LEN; ++j)
                m_oIn[i].push_back(0.8f * std::sin(0.05f * static_cast<float>(j) * static_cast<float>(i + 1)));
            m_oOut[i].assign(FRAME_LEN, 9.0f);
            m_stData.psDataIn[i] = m_oIn[i].data();
            m_stData.psDataOut[i] = m_oOut[i].data();
        }
    }

    void TearDown() override { FreeLibrary(m_hDll); }

    template <class Function> Function Find(const char* pName)
    {
        const auto fFunction = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(m_hDll, pName)));
        EXPECT_NE(fFunction, nullptr) << pName;
        return fFunction;
    }

    int32_t SetPara(const KelvaneStruParam& stParam)
    {
        return m_fSetPara(m_pRunBuf.get(), m_pScratchBuf.get(), &stParam);
    }
    int32_t Apply() { return m_fApply(m_pRunBuf.get(), m_pScratchBuf.get(), &m_stData); }
    KelvaneStruParam GetPara()
    {
        KelvaneStruParam stParam{};
        EXPECT_EQ(m_fGetPara(m_pRunBuf.get(), &stParam), 0);
        return stParam;
    }
    // A set that multiplies channel i by (iGain + i) / 100.
    static KelvaneStruParam GainSet(int iGain)
    {
        KelvaneStruParam stParam{};
        stParam.sFFModule[0] = 1;
        stParam.sChannelNum = 8;
        for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
            stParam.sPOWTargetGain[i] = static_cast<int16_t>(iGain + i);
        return stParam;
    }

    struct CFree
    {
        void operator()(void* pMemory) const { free(pMemory); }
    };
    HMODULE m_hDll = nullptr;
    KelvaneApply m_fApply = nullptr;
    KelvaneSetPara m_fSetPara = nullptr;
    KelvaneGetPara m_fGetPara = nullptr;
    KelvaneTemperature m_fTemperature = nullptr;
    std::unique_ptr<void, CFree> m_pRunBuf;
    std::unique_ptr<void, CFree> m_pScratchBuf;
    std::array<std::vector<float>, KELVANE_MAX_CHANNELS> m_oIn;
    std::array<std::vector<float>, KELVANE_MAX_CHANNELS> m_oOut;
    KelvaneDataStruct m_stData{};
};

TEST_F(ProtectionLibraryTest, PassesBitForBitUntilASetProcesses)
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
        ASSERT_EQ(Apply(), 0);
        for (const size_t i : {0, 1, 2, 3, 4, 7})
            EXPECT_EQ(memcmp(m_oOut[i].data(), m_oIn[i].data(), FRAME_LEN * sizeof(float)), 0) << i;
        EXPECT_EQ(m_oOut[5][0], 9.0f);
        ASSERT_EQ(SetPara(stPass), 0);
    }
}

TEST_F(ProtectionLibraryTest, AppliesEachChannelsGainAndReportsItsState)
{
    ASSERT_EQ(SetPara(GainSet(50)), 0);
    ASSERT_EQ(m_fTemperature(m_pRunBuf.get(), 6150), 0);
    m_stData.psDataOut[1] = m_stData.psDataIn[1];
    m_stData.psDataOut[3] = nullptr;
    const std::vector<float> oSecond = m_oIn[1];
    ASSERT_EQ(Apply(), 0);
    for (size_t j = 0; j < FRAME_LEN; ++j)
    {
        ASSERT_FLOAT_EQ(m_oOut[0][j], m_oIn[0][j] * 0.5f);
        ASSERT_FLOAT_EQ(m_oIn[1][j], oSecond[j] * 0.51f); // in place
        ASSERT_FLOAT_EQ(m_oOut[7][j], m_oIn[7][j] * 0.57f);
    }

    const KelvaneStruParam stState = GetPara();
    EXPECT_EQ(stState.sANDCurrentGain[7], 57);
    EXPECT_EQ(stState.sIPWCurrentGain[0], 5000);
    EXPECT_EQ(stState.sLSMCoilTemp[4], 6150);
    EXPECT_EQ(stState.sLSMMonitorTemp, 62);
    EXPECT_NEAR(stState.sPOWPrms[7], 100 * 0.8 * 0.57 / std::sqrt(2.0), 2.0);
    EXPECT_EQ(stState.sPOWPrms[3], 0);

    EXPECT_NE(m_fTemperature(m_pRunBuf.get(), 1000000), 0);
    EXPECT_EQ(GetPara().sLSMCoilTemp[0], 6150);
    EXPECT_EQ(Find<KelvaneClearStatus>("AudioKelvaneClearStatus")(m_pRunBuf.get()), 0);
    EXPECT_EQ(GetPara().sLSMCoilTemp[0], 2500);
    EXPECT_EQ(GetPara().sPOWPrms[7], 0);
}

TEST_F(ProtectionLibraryTest, RefusesWrongArguments)
{
    KelvaneStruParam stParam{};
    std::vector<uint64_t> oForeign(4096, 0x5A5A5A5A5A5A5A5Au);
    void* pScratch = m_pScratchBuf.get();
    EXPECT_TRUE(m_fSetPara(m_pRunBuf.get(), pScratch, nullptr) && m_fApply(m_pRunBuf.get(), pScratch, nullptr));
    for (void* pRunBuf : {static_cast<void*>(nullptr), static_cast<void*>(oForeign.data())})
    {
        EXPECT_TRUE(m_fSetPara(pRunBuf, pScratch, &stParam) && m_fGetPara(pRunBuf, &stParam));
        EXPECT_TRUE(m_fApply(pRunBuf, pScratch, &m_stData) && m_fTemperature(pRunBuf, 2500));
    }
    for (const int iFrameLen : {-1, 0, 241, 0x7FFFFFFF})
    {
        m_stData.iFrameLen = iFrameLen;
        EXPECT_NE(Apply(), 0) << iFrameLen;
    }
}

// Sets of one gain for all channels are swapped while frames run: channels stay alike on the way from one gain to the
// other, and every reading is one whole set.
TEST_F(ProtectionLibraryTest, StandsThreeThreadsOnOneRunBuffer)
{
    std::array<KelvaneStruParam, 2> oSets{};
    for (size_t iSet = 0; iSet < oSets.size(); ++iSet)
    {
        oSets[iSet].sFFModule[0] = 1;
        for (int16_t& sGain : oSets[iSet].sPOWTargetGain)
            sGain = static_cast<int16_t>(25 * (iSet + 1));
        for (double& dCoef : oSets[iSet].sLSMTvcCoef0)
            dCoef = static_cast<double>(iSet);
    }
    ASSERT_EQ(SetPara(oSets[0]), 0);
    for (std::vector<float>& oChannel : m_oIn)
        oChannel.assign(FRAME_LEN, 1.0f);

    std::atomic<bool> bRun{true};
    std::atomic<int> iTorn{0};
    std::thread oSetter(
        [&]
        {
            for (size_t i = 0; bRun; ++i)
            {
                SetPara(oSets[i % 2]);
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
    std::thread oReader(
        [&]
        {
            for (int i = 0; bRun; ++i)
            {
                m_fTemperature(m_pRunBuf.get(), i);
                const KelvaneStruParam stParam = GetPara();
                iTorn += stParam.sPOWTargetGain[0] != 25 * (static_cast<int>(stParam.sLSMTvcCoef0[200]) + 1);
            }
        });
    int iSeen[2] = {};
    for (int iFrame = 0; iFrame < 4000 || (iFrame < 2000000 && (iSeen[0] == 0 || iSeen[1] == 0)); ++iFrame)
    {
        iTorn += Apply() != 0;
        const float f32Gain = m_oOut[0][0];
        iSeen[0] += f32Gain == 0.25f;
        iSeen[1] += f32Gain == 0.5f;
        for (const std::vector<float>& oChannel : m_oOut)
            iTorn += oChannel[0] != f32Gain || f32Gain < 0.25f || f32Gain > 0.5f;
    }
    bRun = false;
    oSetter.join();
    oReader.join();
    EXPECT_EQ(iTorn, 0);
    EXPECT_TRUE(iSeen[0] > 0 && iSeen[1] > 0);
}
} // namespace
