// The conversions between stream rates: their formulas, odd lengths, channels, bad arguments.
#include "audioapi/audio_api_data.h"
#include "tests/support/logged_machine_test.h"

namespace
{
using Conversion = std::unique_ptr<FLOAT32[]> (*)(const FLOAT32*, const INT32&, const INT32&);
using Samples = std::vector<FLOAT32>;

// The formulas again, from the output's side: sample j of iLen from one channel's whole input.
FLOAT32 Formula(INT32 iFromRate, INT32 iToRate, const Samples& vecIn, size_t iLen, size_t j)
{
    const bool bUp = iToRate > iFromRate;
    const INT32 iRatio = bUp ? iToRate * 2 / iFromRate : iFromRate * 2 / iToRate; // in halves, cut
    const auto fIn = [&](size_t i) { return vecIn[std::min(i, vecIn.size() - 1)]; };
    if (iRatio == 6 && bUp)
    {
        const FLOAT32 f32Near = fIn((j + 1) / 3), f32Far = fIn(j % 3 == 1 ? j / 3 + 1 : j / 3);
        return j % 3 == 0 || j / 3 + 1 == vecIn.size() ? fIn(j / 3) : (f32Near + f32Near) / 3.0F + f32Far / 3.0F;
    }
    if (iRatio == 6)
        return (fIn(3 * j) + fIn(3 * j + 1) + fIn(3 * j + 2)) / 3.0F;
    if (iRatio == 4)
        return bUp ? fIn(j / 2) * 0.5F + fIn((j + 1) / 2) * 0.5F : fIn(2 * j);
    if (iRatio == 3 && bUp)
        return fIn(j / 3 * 2 + j % 3 / 2) * 0.5F + fIn(j / 3 * 2 + (j % 3 + 1) / 2) * 0.5F;
    if (iRatio == 3)
        return (fIn(j / 2 * 3 + j % 2) + fIn(j / 2 * 3 + j % 2 + 1)) * 0.5F;
    const auto fPlace = [](size_t i, size_t iOf) { return static_cast<FLOAT32>(i) / static_cast<FLOAT32>(iOf); };
    const FLOAT32 f32Place = fPlace(j, iLen);
    size_t i = 0;
    while (i + 2 < vecIn.size() && fPlace(i + 1, vecIn.size()) <= f32Place)
        ++i;
    const FLOAT32 f32Right = fPlace(i + 1, vecIn.size()) - f32Place;
    const FLOAT32 f32Weight = f32Right / (f32Place - fPlace(i, vecIn.size()) + f32Right);
    return (1.0F - f32Weight) * vecIn[i + 1] + f32Weight * vecIn[i];
}

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
        {2, {0, 2, 4}, {0, 1, 2, 4}},          {3, {7}, {7}}, {4, {1, 2, 3, 4, 5}, {1, 3}}, {5, {3, 6, 9, 12}, {6}},
        {7, {0, 1, 2, 3, 5}, {0.5F, 1.5F, 4}},
    };
    for (const auto& oCase : CASE)
        EXPECT_EQ(Resample(CONVERSION[oCase.iRow], oCase.vecIn, 1), oCase.vecOut) << CONVERSION[oCase.iRow].pName;
}

// Whole blocks, to the last bit, each channel by itself.
TEST(ResampleTest, EverySampleIsTheFormulasOwn)
{
    for (const ConversionRow& oRow : CONVERSION)
        for (const INT32 iBlocks : {1, 3})
        {
            const INT32 iFramelen = iBlocks * (oRow.iFromRate == 22050 ? 441 : oRow.iFromRate / 100);
            const Samples vecIn = Noise(iFramelen * 2, static_cast<UINT32>(iBlocks));
            const Samples vecOut = Resample(oRow, vecIn, 2);
            const size_t iLen = vecOut.size() / 2;
            for (size_t ch = 0; ch < 2; ++ch)
            {
                Samples vecChannel;
                for (size_t i = ch; i < vecIn.size(); i += 2)
                    vecChannel.push_back(vecIn[i]);
                size_t iWrong = 0;
                for (size_t j = 0; j < iLen; ++j)
                    iWrong += vecOut[2 * j + ch] != Formula(oRow.iFromRate, oRow.iToRate, vecChannel, iLen, j);
                EXPECT_EQ(iWrong, 0U) << oRow.pName << " " << iBlocks << " channel " << ch;
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
