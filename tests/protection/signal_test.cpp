// What the library does to samples, whatever the speaker.
#include "speaker/reconstruction.h"
#include "tests/protection/library.h"

#include <emmintrin.h>

namespace
{
using P = KelvaneParameter;

// Largest step from sample to sample.
double LargestStep(const Samples& vecSamples)
{
    double f64Step = 0.0;
    for (size_t i = 1; i < vecSamples.size(); ++i)
        f64Step =
            std::max(f64Step, std::fabs(static_cast<double>(vecSamples[i]) - static_cast<double>(vecSamples[i - 1])));
    return f64Step;
}

bool SameBits(const Samples& vecOut, const Samples& vecIn, size_t uBegin)
{
    return memcmp(vecOut.data() + uBegin, vecIn.data() + uBegin - LIBRARY_DELAY,
                  (vecOut.size() - uBegin) * sizeof(float)) == 0;
}

// Bit for bit the delayed input below all limits: from the start, and again some time behind hard limiting; in one
// channel, while the other one is limited; for minus zero and denormals too.
TEST(SignalTest, NothingChangesBelowTheLimits)
{
    std::vector<Samples> vecQuiet(3, Make(Sine(300, 0.2), 9));
    for (size_t i = 0; i < SECOND; i += 7)
        vecQuiet[0][i] = i % 2 == 0 ? -0.0f : 1e-40f;
    std::mt19937 oRandom(5);
    for (size_t i = 0; i < SECOND; ++i)
        vecQuiet[2][i + SECOND] = (oRandom() & 1) != 0 ? 1.0f : -1.0f;
    std::vector<Samples> vecOut = vecQuiet;
    CLibrary oLibrary(Matched());
    oLibrary.Play(vecOut);
    EXPECT_TRUE(SameBits(vecOut[0], vecQuiet[0], LIBRARY_DELAY));
    EXPECT_TRUE(SameBits(vecOut[1], vecQuiet[1], LIBRARY_DELAY));
    EXPECT_FALSE(SameBits(vecOut[2], vecQuiet[2], SECOND));
    EXPECT_TRUE(SameBits(vecOut[2], vecQuiet[2], 8 * SECOND));
    EXPECT_TRUE(
        std::all_of(vecOut[0].begin(), vecOut[0].begin() + LIBRARY_DELAY, [](float f32) { return f32 == 0.0f; }));
    EXPECT_LE(LIBRARY_DELAY, 0.0065 * SECOND);
}

// However frames are cut, and however many channels play, the samples are the same.
TEST(SignalTest, CutsOfFramesDontMatter)
{
    for (const size_t uChannels : {1, 2, 5, 8})
    {
        std::vector<Samples> vecWhole;
        for (size_t i = 0; i < uChannels; ++i)
            vecWhole.push_back(Make(Sine(70 + 400 * static_cast<double>(i), 1.5), 0.5));
        std::vector<Samples> vecCut = vecWhole;
        CLibrary oWhole(Matched()), oCut(Matched());
        oWhole.Play(vecWhole);
        std::mt19937 oRandom(3);
        for (size_t i = 0, uCount; i < vecCut[0].size(); i += uCount)
        {
            uCount = std::min<size_t>(1 + oRandom() % (i < 2000 ? 7 : FRAME_LEN), vecCut[0].size() - i);
            oCut.Apply(vecCut, i, uCount);
        }
        EXPECT_EQ(vecCut, vecWhole) << uChannels;
    }
}

// No sample over, and no peak between samples by more than half a decibel: by a meter of 64 samples.
TEST(SignalTest, CeilingHoldsBetweenSamplesToo)
{
    const KelvaneStruParam stOnly = With(Matched(), {{P::EXCURSION_STAGE, 0}, {P::HEAT_STAGE, 0}});
    for (const int iBattery : {100, 15, 1})
        for (const Signal& fnSignal : {Noise(1), Noise(5), Sine(11900, 1.4), Gated(Sine(997, 4), 0.02, 0.03)})
        {
            const double f64Ceiling = std::min(1.0, 0.5 + 0.5 * iBattery / 30);
            CLibrary oLibrary(stOnly);
            oLibrary.m_stData.ACLineStatus = 0;
            oLibrary.m_stData.BatteryLifePercent = static_cast<uint16_t>(iBattery);
            std::vector<Samples> vecSound(1, Make(fnSignal, 2));
            oLibrary.Play(vecSound);
            CReconstruction oMeter;
            oMeter.Init(4);
            double f64Sample = 0.0, f64Peak = 0.0;
            for (const float f32Sample : vecSound[0])
            {
                f64Sample = std::max(f64Sample, std::fabs(static_cast<double>(f32Sample)));
                const double* const pCurve = oMeter.Push(static_cast<double>(f32Sample));
                for (int i = 0; i < 4; ++i)
                    f64Peak = std::max(f64Peak, std::fabs(pCurve[i]));
            }
            EXPECT_LE(f64Sample, f64Ceiling * (1 + 1e-7));
            EXPECT_LE(f64Peak, f64Ceiling * 1.0593);
            EXPECT_GE(f64Peak, f64Ceiling * 0.95);
        }
}

// What is left of a sine that moves the cone too far is a sine.
TEST(SignalTest, SteadySinesStayPure)
{
    for (const double f64Hz : {40.0, 100.0, 300.0, 800.0})
    {
        CLibrary oLibrary(Matched());
        std::vector<Samples> vecSound(1, Make(Sine(f64Hz), 4));
        oLibrary.Play(vecSound);
        double f64Sin = 0.0, f64Cos = 0.0, f64All = 0.0; // of the last second, whole periods
        for (size_t i = 3 * SECOND; i < 4 * SECOND; ++i)
        {
            const double f64Angle = 2 * PI * f64Hz * static_cast<double>(i) / SECOND;
            const double f64Sample = static_cast<double>(vecSound[0][i]);
            f64Sin += f64Sample * std::sin(f64Angle);
            f64Cos += f64Sample * std::cos(f64Angle);
            f64All += f64Sample * f64Sample;
        }
        const double f64Pure = 2 * (f64Sin * f64Sin + f64Cos * f64Cos) / SECOND;
        EXPECT_LT(f64All, 0.25 * SECOND); // 3 dB less than what came in
        EXPECT_LT(std::sqrt((f64All - f64Pure) / f64Pure), 0.001) << f64Hz;
    }
}

// Sets change at any moment, also before the last change is through and to those of another speaker: no step beyond the
// programme's own and 0.3 % of full scale.
TEST(SignalTest, ChangesWhilePlayingMakeNoStep)
{
    const KelvaneStruParam stBase = DefaultParameters();
    const KelvaneStruParam SETS[] = {stBase,
                                     With(stBase, {{P::DISPLACEMENT_LIMIT, 0.2}}),
                                     With(stBase, {{P::DEEP_LOOK_AHEAD, 16}, {P::UPPER_LOOK_AHEAD, 6}}),
                                     With(stBase, {{P::DRIVE, 40}}),
                                     With(stBase, {{P::EXCURSION_STAGE, 0}}),
                                     With(stBase, {{P::CEILING_FULL, 50}}),
                                     With(stBase, {{P::MODE, 1}, {P::DRIVE, 60}}),
                                     With(stBase, {{P::MODE, 0}}),
                                     With(stBase, {{P::RESONANCE, 500}, {P::ELECTRICAL_Q, 1}})};
    const Signal fnSignal = [](size_t i) { return Sine(55, 0.8)(i) + Sine(170, 0.15)(i); };
    double f64Own = 0.0;
    for (const KelvaneStruParam& stSet : SETS)
    {
        std::vector<Samples> vecSteady(1, Make(fnSignal, 1.5));
        CLibrary(stSet).Play(vecSteady);
        f64Own = std::max(f64Own, LargestStep({vecSteady[0].begin() + SECOND, vecSteady[0].end()}));
    }
    std::mt19937 oRandom(11);
    std::vector<Samples> vecSound(1, Make(fnSignal, 60));
    size_t uNext = SECOND, uSet = 0;
    CLibrary oLibrary(stBase);
    oLibrary.Play(vecSound,
                  [&](size_t i)
                  {
                      if (i < uNext)
                          return;
                      const size_t uLongest = oRandom() % 4 == 0 ? 2000 : 24000;
                      uNext = i + 1 + oRandom() % uLongest;
                      uSet = (uSet + 1 + oRandom() % (std::size(SETS) - 1)) % std::size(SETS);
                      EXPECT_EQ(oLibrary.Set(SETS[uSet]), 0);
                  });
    EXPECT_LE(LargestStep({vecSound[0].begin() + SECOND, vecSound[0].end()}), f64Own + 0.003);
}

// What isn't a number never comes out and doesn't stay; the caller's floating-point mode is as it was.
TEST(SignalTest, WhatIsNoNumberLeavesNoTrace)
{
    std::vector<Samples> vecQuiet(2, Make(Sine(300, 0.2), 8));
    std::vector<Samples> vecOut = vecQuiet;
    const float BAD[] = {std::nanf(""), INFINITY, -INFINITY, 3e38f, -std::nanf("")};
    for (size_t i = 1000; i < 2000; i += 9)
        vecOut[i % 2][i] = BAD[i % 5];
    const std::vector<Samples> vecBad = vecOut;
    CLibrary oLibrary(Matched());
    const unsigned uMode = _mm_getcsr();
    _mm_setcsr((uMode & ~0x3Fu) | 0x2000); // rounds down
    oLibrary.Play(vecOut);
    EXPECT_EQ(_mm_getcsr() & ~0x3Fu, (uMode & ~0x3Fu) | 0x2000);
    _mm_setcsr(uMode);
    for (size_t i = 0; i < 2; ++i)
    {
        EXPECT_TRUE(std::all_of(vecOut[i].begin(), vecOut[i].end(), [](float f32) { return std::fabs(f32) <= 1.0f; }));
        EXPECT_TRUE(SameBits(vecOut[i], vecQuiet[i], 7 * SECOND));
    }
    EXPECT_EQ(oLibrary.Set(With(Matched(), {{P::MODE, 0}})), 0); // past the stages they don't heat either
    vecOut = vecBad;
    oLibrary.Play(vecOut); // while it fades
    EXPECT_TRUE(std::all_of(vecOut[0].begin(), vecOut[0].end(), [](float f32) { return std::fabs(f32) <= 8.0f; }));
    vecOut = vecBad;
    oLibrary.Play(vecOut);
    EXPECT_EQ(memcmp(vecOut[0].data(), vecBad[0].data(), vecBad[0].size() * sizeof(float)), 0);
    EXPECT_EQ(oLibrary.Set(With(Matched(), {{P::MODE, 1}})), 0);
    oLibrary.Play(vecOut);
    EXPECT_TRUE(std::all_of(vecOut[0].begin(), vecOut[0].end(), [](float f32) { return std::fabs(f32) <= 8.0f; }));
    EXPECT_NEAR(oLibrary.State(KelvaneState::COIL_TEMPERATURE), 30, 4);
}

TEST(SignalTest, APairThatComesBackBeginsAnew)
{
    CLibrary oLibrary(Matched());
    std::vector<Samples> vecLoud(2, Make(Sine(300), 0.5));
    std::vector<Samples> vecSilent(2, Samples(SECOND / 10));
    oLibrary.Play(vecLoud);
    oLibrary.m_stData.psDataIn[0] = oLibrary.m_stData.psDataIn[1] = nullptr;
    ASSERT_EQ(oLibrary.Apply(), 0);
    oLibrary.Play(vecSilent);
    EXPECT_EQ(vecSilent, std::vector<Samples>(2, Samples(SECOND / 10)));

    // The second pair alone begins as a stream does, at once.
    CLibrary oOther(Matched());
    const Samples vecIn = Make(Sine(2000, 0.2), 0.1);
    Samples vecOut = vecIn;
    oOther.m_stData.iFrameLen = FRAME_LEN;
    for (size_t i = 0; i < vecOut.size(); i += FRAME_LEN)
    {
        oOther.m_stData.psDataIn[2] = oOther.m_stData.psDataOut[2] = vecOut.data() + i;
        ASSERT_EQ(oOther.Apply(), 0);
    }
    EXPECT_TRUE(SameBits(vecOut, vecIn, LIBRARY_DELAY));
}

// Random sets in range are taken unless a rule forbids them, and what they let out is finite and under the ceiling.
// Each value beyond either end is refused, and the set before stays.
TEST(SignalTest, SetsAreTakenInRangeAndRefusedOutside)
{
    std::mt19937 oRandom(2);
    std::uniform_real_distribution<double> oPart(0.0, 1.0);
    std::vector<Samples> vecLoud(2, Make(Noise(9), 0.12));
    CLibrary oLibrary(Matched());
    int iTaken = 0;
    for (int i = 0; i < 200000 && iTaken < 1000; ++i)
    {
        KelvaneStruParam stParam = DefaultParameters();
        for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
        {
            const double f64Part = std::clamp(1.4 * oPart(oRandom) - 0.2, 0.0, 1.0);
            if (oInfo.eParameter != P::MODE)
                stParam = With(stParam,
                               {{oInfo.eParameter, oInfo.f64Lowest + f64Part * (oInfo.f64Highest - oInfo.f64Lowest)}});
        }
        const bool bGood = CheckParameters(stParam).pInfo == nullptr;
        ASSERT_EQ(oLibrary.Set(stParam) == 0, bGood);
        if (!bGood)
        {
            EXPECT_NE(CheckParameters(stParam).pRule, nullptr);
            continue;
        }
        ++iTaken;
        std::vector<Samples> vecOut = vecLoud;
        oLibrary.Play(vecOut);
        const double f64Most = GetParameter(stParam, P::CEILING_STAGE) != 0 ? 1.0 : 64.0;
        for (const Samples& vecChannel : vecOut)
            ASSERT_TRUE(std::all_of(vecChannel.begin() + SECOND / 10, vecChannel.end(),
                                    [=](float f32) { return std::fabs(f32) <= f64Most; }));
    }
    EXPECT_EQ(iTaken, 1000);

    EXPECT_EQ(oLibrary.Set(Matched()), 0);
    for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
        for (const double f64Wrong :
             {oInfo.f64Lowest - 1, oInfo.f64Highest + 1, oInfo.bDouble ? std::nan("") : -32768.0})
            EXPECT_EQ(oLibrary.Set(With(Matched(), {{oInfo.eParameter, f64Wrong}})), 4) << oInfo.pName << f64Wrong;
    EXPECT_EQ(memcmp(oLibrary.Get().sLSMTvcCoef0, Matched().sLSMTvcCoef0, sizeof(Matched().sLSMTvcCoef0)), 0);
}
} // namespace
