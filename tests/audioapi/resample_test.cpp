// The conversions between stream rates: their formulas, odd lengths, channels, bad arguments.
#include "audioapi/audio_api_data.h"
#include "tests/support/logged_machine_test.h"

#include <cmath>

namespace
{
using Conversion = std::unique_ptr<FLOAT32[]> (*)(const FLOAT32*, const INT32&, const INT32&);
using Samples = std::vector<FLOAT32>;

const struct ConversionRow
{
    const char* pName;
    Conversion pfnConvert;
    INT32 iFromRate;
    INT32 iToRate;
} CONVERSION[] = {
    {"16K48K", CAudioDATA::ReSampleFrom16KTo48K, 16000, 48000},
    {"22K44K", CAudioDATA::ReSampleFrom22KTo44K, 22050, 44100},
    {"32K48K", CAudioDATA::ReSampleFrom32KTo48K, 32000, 48000},
    {"44K48K", CAudioDATA::ReSampleFrom44KTo48K, 44100, 48000},
    {"96K48K", CAudioDATA::ReSampleFrom96KTo48K, 96000, 48000},
    {"48K16K", CAudioDATA::ReSampleFrom48KTo16K, 48000, 16000},
    {"44K22K", CAudioDATA::ReSampleFrom44KTo22K, 44100, 22050},
    {"48K32K", CAudioDATA::ReSampleFrom48KTo32K, 48000, 32000},
    {"48K44K", CAudioDATA::ReSampleFrom48KTo44K, 48000, 44100},
    {"48K96K", CAudioDATA::ReSampleFrom48KTo96K, 48000, 96000},
};

// The input is a block of its own on the heap, so that a read behind its end is found.
Samples Resample(const ConversionRow& oRow, const Samples& vecIn, INT32 iChannel)
{
    const std::unique_ptr<FLOAT32[]> pIn(new FLOAT32[vecIn.size()]);
    std::copy(vecIn.begin(), vecIn.end(), pIn.get());
    const INT32 iFramelen = static_cast<INT32>(vecIn.size()) / iChannel;
    const std::unique_ptr<FLOAT32[]> pOut = oRow.pfnConvert(pIn.get(), iChannel, iFramelen);
    const INT32 iLen = CAudioDATA::CalcReSampleLen(iFramelen, oRow.iFromRate, oRow.iToRate) * iChannel;
    EXPECT_EQ(pOut != nullptr, iLen > 0) << oRow.pName;
    return pOut != nullptr ? Samples(pOut.get(), pOut.get() + iLen) : Samples();
}

Samples Noise(INT32 iLen, UINT32 iSeed)
{
    Samples vecNoise;
    for (INT32 i = 0; i < iLen; ++i)
    {
        iSeed = iSeed * 1664525U + 1013904223U;
        vecNoise.push_back(static_cast<FLOAT32>(iSeed >> 8) / 8388608.0F - 1.0F);
    }
    return vecNoise;
}

TEST(ResampleTest, ShortBlocksFollowTheFormulas)
{
    const struct
    {
        int iRow;
        Samples vecIn;
        Samples vecOut;
    } CASE[] = {
        {0, {0, 3}, {0, 1, 2, 3, 3, 3}},
        {1, {0, 2}, {0, 1, 2, 2}},
        {2, {0, 2, 4}, {0, 1, 2, 4}},
        {3, {7}, {7}},
        {4, {1, 2, 3, 4, 5}, {1, 3}},
        {5, {3, 6, 9, 12}, {6}},
        {6, {1, 2, 3, 4}, {1, 3}},
        {7, {0, 1, 2}, {0.5F, 1.5F}},
        {7, {0, 1, 2, 3, 5}, {0.5F, 1.5F, 4}},
        {9, {0, 2, 6}, {0, 1, 2, 4, 6, 6}},
    };
    for (const auto& oCase : CASE)
        EXPECT_EQ(Resample(CONVERSION[oCase.iRow], oCase.vecIn, 1), oCase.vecOut) << CONVERSION[oCase.iRow].pName;
}

// Both ways between 441 and 480 samples: a straight line at every place, the end included.
TEST(ResampleTest, FortyFourInterpolatesAlongTheAxis)
{
    for (const int iRow : {3, 8})
    {
        const INT32 iSrcLen = iRow == 3 ? 441 : 480;
        const INT32 iDstLen = 921 - iSrcLen;
        const Samples vecNoise = Noise(iSrcLen, 7);
        const Samples vecNoiseOut = Resample(CONVERSION[iRow], vecNoise, 1);
        ASSERT_EQ(vecNoiseOut.size(), static_cast<size_t>(iDstLen));
        for (INT32 j = 0; j < iDstLen; ++j)
        {
            const double dPlace = static_cast<double>(j) * iSrcLen / iDstLen;
            const size_t iLeft = std::min(static_cast<size_t>(dPlace), static_cast<size_t>(iSrcLen - 2));
            const double dRight = dPlace - static_cast<double>(iLeft);
            EXPECT_NEAR(vecNoiseOut[static_cast<size_t>(j)],
                        vecNoise[iLeft] * (1 - dRight) + vecNoise[iLeft + 1] * dRight, 1e-3)
                << iRow << " " << j;
        }
    }
}

using ResampleLogTest = LoggedMachineTest;

TEST_F(ResampleLogTest, BadArgumentsGiveNullAndOneLine)
{
    StartLog();
    const Samples vecIn(64, 0.0F);
    for (const ConversionRow& oRow : CONVERSION)
    {
        EXPECT_EQ(oRow.pfnConvert(nullptr, 2, 4), nullptr);
        EXPECT_EQ(oRow.pfnConvert(vecIn.data(), 0, 4), nullptr);
        EXPECT_EQ(oRow.pfnConvert(vecIn.data(), 2, -1), nullptr);
        EXPECT_EQ(oRow.pfnConvert(vecIn.data(), 9, 4), nullptr);
    }
    EXPECT_EQ(CAudioDATA::ReSampleFrom48KTo16K(vecIn.data(), 2, 2), nullptr);
    EXPECT_EQ(CountLog("pfInputData == nullptr || iChannel <= 0 || iFramelen <= 0"), 30U);
    EXPECT_EQ(CountLog("iReSampleDataLen <= 0"), 1U);
    EXPECT_EQ(CountLog("iChannel > 8"), 10U);
}
} // namespace
