// The simulated loudspeaker against closed forms.
#include "speaker/loudspeaker.h"
#include "tests/speaker/speaker_test.h"

#include <limits>

namespace
{
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

// So much heat capacity that nothing warms up while a test looks at it.
SpeakerParams Massive()
{
    SpeakerParams oParams;
    oParams.f64CoilHeatJPerK = 1000.0;
    oParams.f64MagnetHeatJPerK = 1e5;
    return oParams;
}

CLoudspeaker Play(const SpeakerParams& oParams, const Samples& vecIn, int iOversampling = 4)
{
    CLoudspeaker oSpeaker;
    EXPECT_TRUE(oSpeaker.Init(oParams, RATE, iOversampling));
    oSpeaker.Process(vecIn.data(), vecIn.size());
    return oSpeaker;
}

TEST(LoudspeakerTest, CurveBetweenTheSamplesIsTheTone)
{
    for (const double f64Hz : {0.0, 1000.0, 12000.0, 20000.0})
    {
        CReconstruction oReconstruction;
        oReconstruction.Init(6);
        double f64Worst = 0.0;
        for (int i = 0; i < 400; ++i)
        {
            const double* const pCurve = oReconstruction.Push(std::sin(2.0 * PI * f64Hz / RATE * i + 0.5));
            for (int p = 0; i >= 64 && p <= 6; ++p)
                f64Worst = std::max(
                    f64Worst, std::fabs(pCurve[p] - std::sin(2.0 * PI * f64Hz / RATE * (i - 32 + p / 6.0) + 0.5)));
        }
        EXPECT_LT(f64Worst, 2e-4) << f64Hz;
    }
}

// Steady displacement and current, at 25 C and with a hot coil: less force, less damping.
TEST(LoudspeakerTest, ConeAndCurrentFollowTheTransferFunctions)
{
    for (const double f64CoilC : {25.0, 125.0})
        for (const double f64Hz : {0.0, 100.0, 800.0, 1000.0, 3000.0})
        {
            const SpeakerParams oParams = Massive();
            CLoudspeaker oSpeaker;
            ASSERT_TRUE(oSpeaker.Init(oParams, RATE));
            ASSERT_TRUE(oSpeaker.Reset(f64CoilC, f64CoilC));
            const Samples vecIn = Tone(f64Hz, 0.5, 0.5);
            std::vector<double> vecMm(vecIn.size()), vecA(vecIn.size());
            oSpeaker.Process(vecIn.data(), vecIn.size(), {vecMm.data(), nullptr, vecA.data()});
            double f64Mm2 = 0.0, f64A2 = 0.0; // sums of squares over the second half: whole periods
            for (size_t i = vecMm.size() / 2; i < vecMm.size(); ++i)
            {
                f64Mm2 += vecMm[i] * vecMm[i];
                f64A2 += vecA[i] * vecA[i];
            }
            const double f64Hotter = 1.0 + 0.00393 * (f64CoilC - 25.0);
            const double f64W = f64Hz / 800.0;
            const double f64Denominator = std::hypot(1.0 - f64W * f64W, f64W * (1.0 / 4.0 + 1.0 / (2.0 * f64Hotter)));
            const double f64Scale = static_cast<double>(vecMm.size()) / (f64Hz > 0.0 ? 4.0 : 2.0) * 9.0; // 3 V peak
            EXPECT_NEAR(std::sqrt(f64Mm2 / f64Scale), 0.148 / f64Hotter / f64Denominator, 2e-5) << f64Hz;
            EXPECT_NEAR(std::sqrt(f64A2 / f64Scale),
                        std::hypot(1.0 - f64W * f64W, f64W / 4.0) / f64Denominator / (6.0 * f64Hotter), 2e-5)
                << f64Hz;
        }
}

// The curve's step lies half a sample before the first sample.
TEST(LoudspeakerTest, StepSwingsAndSettles)
{
    const Samples vecIn = Tone(0.0, 1.0, 0.01);
    std::vector<double> vecMm(vecIn.size());
    CLoudspeaker oSpeaker;
    ASSERT_TRUE(oSpeaker.Init(Massive(), RATE));
    oSpeaker.Process(vecIn.data(), vecIn.size(), {vecMm.data(), nullptr, nullptr});
    const double f64Sigma = 2.0 * PI * 800.0 * 0.75 / 2.0;
    const double f64Ring = std::sqrt(std::pow(2.0 * PI * 800.0, 2) - f64Sigma * f64Sigma);
    for (size_t i = 2; i + CLoudspeaker::DELAY < vecMm.size(); ++i)
    {
        const double f64T = (static_cast<double>(i) + 0.5) / RATE;
        const double f64Mm =
            0.888 * (1.0 - std::exp(-f64Sigma * f64T) *
                               (std::cos(f64Ring * f64T) + f64Sigma / f64Ring * std::sin(f64Ring * f64T)));
        ASSERT_NEAR(vecMm[i + CLoudspeaker::DELAY], f64Mm, 2e-3) << i;
    }
}

// A constant voltage into a constant resistance: the matrix exponential of the two stages.
TEST(LoudspeakerTest, StagesWarmUpAsTheirEquationsSay)
{
    SpeakerParams oParams;
    oParams.f64ResistanceRisePerK = 0.0;
    oParams.f64MagnetHeatJPerK = 0.1;
    oParams.f64AmbientC = 10.0;
    const double f64PowerW = 1.5; // 3 V, 6 ohm
    const double f64A = 1.0 / (40.0 * 0.025), f64B = 1.0 / (40.0 * 0.1), f64C = 1.0 / (45.0 * 0.1);
    const double f64Mean = -0.5 * (f64A + f64B + f64C);
    const double f64Root = std::sqrt(f64Mean * f64Mean - f64A * f64C);
    const double f64MagnetEndC = 10.0 + f64PowerW * 45.0, f64CoilEndC = f64MagnetEndC + f64PowerW * 40.0;
    CLoudspeaker oSpeaker;
    ASSERT_TRUE(oSpeaker.Init(oParams, RATE));
    ASSERT_TRUE(oSpeaker.Reset(90.0, 40.0));
    const Samples vecIn = Tone(0.0, 0.5, 1.0);
    for (int iSecond = 1; iSecond <= 10; ++iSecond)
    {
        oSpeaker.Process(vecIn.data(), vecIn.size());
        const double f64CoilC = 90.0 - f64CoilEndC, f64MagnetC = 40.0 - f64MagnetEndC; // from the end
        const double f64Cosh = std::exp(f64Mean * iSecond) * std::cosh(f64Root * iSecond);
        const double f64Sinh = std::exp(f64Mean * iSecond) * std::sinh(f64Root * iSecond) / f64Root;
        const double f64OffCoil = (-f64A - f64Mean) * f64CoilC + f64A * f64MagnetC;
        const double f64OffMagnet = f64B * f64CoilC - (f64B + f64C + f64Mean) * f64MagnetC;
        // The first samples of sound come DELAY late, and the cone's start takes a little: some hundredths of a kelvin.
        EXPECT_NEAR(oSpeaker.CoilC(), f64CoilEndC + f64Cosh * f64CoilC + f64Sinh * f64OffCoil, 0.06) << iSecond;
        EXPECT_NEAR(oSpeaker.MagnetC(), f64MagnetEndC + f64Cosh * f64MagnetC + f64Sinh * f64OffMagnet, 0.02) << iSecond;
    }
}

// Where heat in and heat out are equal, the hotter coil takes less: (Tc - Ta)/(Rtc + Rtm) = u^2/R(Tc), a quadratic
// equation.
TEST(LoudspeakerTest, HeatLowersWhatTheCoilTakes)
{
    SpeakerParams oParams;
    oParams.f64CoilHeatJPerK = oParams.f64MagnetHeatJPerK = 0.002;
    const double f64HalfK = 0.5 / 0.00393;
    const double f64RiseK = std::sqrt(f64HalfK * f64HalfK + 2.0 * f64HalfK * 85.0 * 9.0 / 6.0) - f64HalfK;
    EXPECT_NEAR(Play(oParams, Tone(0.0, 0.5, 3.0)).CoilC(), 25.0 + f64RiseK, 1e-3);
}

// What the amplifier gave is heat, friction or still in the cone; the error shrinks with the fourth power of the step.
TEST(LoudspeakerTest, EnergyBalancesAndStepsConverge)
{
    Samples vecIn = Tone(3000.0, 0.4, 0.5);
    const Samples vecBass = Tone(700.0, 0.6, 0.5);
    for (size_t i = 0; i < vecIn.size(); ++i)
        vecIn[i] += vecBass[i];
    double f64Error[3];
    for (const int i : {0, 1, 2})
    {
        const CLoudspeaker oSpeaker = Play({}, vecIn, 1 << i);
        const SpeakerEnergy& oEnergy = oSpeaker.Energy();
        f64Error[i] = std::fabs(
            (oEnergy.f64CoilHeatJ + oEnergy.f64FrictionJ + oSpeaker.StoredJ()) / oEnergy.f64ElectricalJ - 1.0);
        EXPECT_NEAR(oSpeaker.PeakDisplacementMm(), Play({}, vecIn, 16).PeakDisplacementMm(), 1.5e-3 / (1 << 2 * i));
    }
    EXPECT_LT(f64Error[0], 1e-4);
    EXPECT_LT(f64Error[1], f64Error[0] / 12.0);
    EXPECT_LT(f64Error[2], f64Error[1] / 12.0);
}
} // namespace
