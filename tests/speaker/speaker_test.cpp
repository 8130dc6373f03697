// The simulated loudspeaker against closed forms, and what is told of a protection by it.
#include "speaker/constant_gain.h"
#include "speaker/speaker_monitor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>

namespace
{
using Samples = std::vector<float>;

constexpr double PI = 3.14159265358979323846;
constexpr double RATE = 48000.0;

// Adds a cosine; a constant at 0 Hz.
Samples Tone(double f64Hz, double f64Amplitude, double f64Seconds, Samples vecOnto = {})
{
    vecOnto.resize(static_cast<size_t>(f64Seconds * RATE));
    for (size_t i = 0; i < vecOnto.size(); ++i)
        vecOnto[i] += static_cast<float>(f64Amplitude * std::cos(2.0 * PI * f64Hz * static_cast<double>(i) / RATE));
    return vecOnto;
}

CLoudspeaker Play(const SpeakerParams& oParams, const Samples& vecIn, const SpeakerTemperatures& oStart = {},
                  int iOversampling = 4, const SpeakerTrace& oTrace = {})
{
    CLoudspeaker oSpeaker;
    EXPECT_TRUE(oSpeaker.Init(oParams, RATE, iOversampling));
    EXPECT_TRUE(oSpeaker.Reset(oStart.f64CoilC, oStart.f64MagnetC));
    oSpeaker.Process(vecIn.data(), vecIn.size(), oTrace);
    return oSpeaker;
}

TEST(SpeakerTest, CurveBetweenTheSamplesIsTheTone)
{
    for (const double f64Omega : {0.0, 0.1, PI / 2.0, 0.83 * PI})
    {
        CReconstruction oReconstruction;
        oReconstruction.Init(6);
        const double* pCurve = nullptr;
        for (int i = 0; i <= 100; ++i)
            pCurve = oReconstruction.Push(std::sin(f64Omega * i));
        EXPECT_NEAR(pCurve[1], std::sin(f64Omega * (68.0 + 1.0 / 6.0)), 2e-4) << f64Omega;
    }
}

// Displacement and current of steady tones: with a hot coil, and of units that differ in one constant each.
TEST(SpeakerTest, ConeFollowsTheTransferFunctions)
{
    const struct
    {
        SpeakerParams oParams;
        double f64CoilC, f64Mass, f64Stiffness, f64Force, f64Ohm; // the last four in parts of the type's
    } CASE[] = {{{}, 25.0, 1.0, 1.0, 1.0, 1.0},
                {{}, 125.0, 1.0, 1.0, 1.0, 1.393},
                {ScaleMass({}, 0.81), 25.0, 0.81, 1.0, 1.0, 1.0},
                {ScaleStiffness({}, 0.81), 25.0, 1.0, 0.81, 1.0, 1.0},
                {ScaleForceFactor({}, 0.9), 25.0, 1.0, 1.0, 0.9, 1.0},
                {ScaleResistance({}, 0.9), 25.0, 1.0, 1.0, 1.0, 0.9}};
    for (auto oCase : CASE)
        for (const double f64Hz : {0.0, 100.0, 800.0, 1000.0, 3000.0})
        {
            oCase.oParams.f64CoilHeatJPerK = oCase.oParams.f64MagnetHeatJPerK = 1000.0; // nothing warms up
            std::vector<double> vecMm(4800), vecA(4800);
            Play(oCase.oParams, Tone(f64Hz, 0.5, 0.1), {oCase.f64CoilC, oCase.f64CoilC}, 4,
                 {vecMm.data(), nullptr, vecA.data()});
            const std::complex<double> oS(0.0, f64Hz / 800.0); // in units of the type's resonance
            const std::complex<double> oFree = oS * oS * oCase.f64Mass + oS / 4.0 + oCase.f64Stiffness;
            const std::complex<double> oDamped = oFree + oS / 2.0 * oCase.f64Force * oCase.f64Force / oCase.f64Ohm;
            for (size_t i = vecMm.size() / 2; i < vecMm.size(); ++i)
            {
                const auto oVolt =
                    std::polar(3.0, 2.0 * PI * f64Hz / RATE * static_cast<double>(i - CLoudspeaker::DELAY));
                ASSERT_NEAR(vecMm[i], (0.148 * oVolt * oCase.f64Force / oCase.f64Ohm / oDamped).real(), 1e-4) << f64Hz;
                ASSERT_NEAR(vecA[i], (oVolt / 6.0 / oCase.f64Ohm * oFree / oDamped).real(), 1e-4) << f64Hz;
            }
        }
    const double f64Overshoot = std::exp(-PI / std::sqrt(1.0 / (0.375 * 0.375) - 1.0)); // 0.375 of critical damping
    EXPECT_NEAR(Play({}, Tone(0.0, 1.0, 0.01)).PeakDisplacementMm(), 0.888 * (1.0 + f64Overshoot), 1e-3);
}

// A constant heat: each of the two ways in which coil and magnet come to rest is one exponential. And a coil that
// changes its resistance rests where (Tc - Ta)/(Rtc + Rtm) = u^2/R(Tc), a quadratic equation.
TEST(SpeakerTest, CoilAndMagnetWarmUpAsTheirEquationsSay)
{
    SpeakerParams oParams;
    oParams.f64ResistanceRisePerK = 0.0;
    oParams.f64MagnetHeatJPerK = 0.1;
    oParams.f64AmbientC = 10.0;
    const Samples vecIn = Tone(0.0, 0.5, 2.0); // 1.5 W: 3 V, 6 ohm
    const double f64MagnetEndC = 10.0 + 1.5 * 45.0, f64CoilEndC = f64MagnetEndC + 1.5 * 40.0;
    const double f64Coil = 1.0 / (40.0 * 0.025), f64Out = 1.0 / (45.0 * 0.1); // 1/s
    const double f64Mean = -0.5 * (f64Coil + 1.0 / (40.0 * 0.1) + f64Out);
    for (const double f64Sign : {1.0, -1.0})
    {
        const double f64Rate = f64Mean + f64Sign * std::sqrt(f64Mean * f64Mean - f64Coil * f64Out);
        const double f64Part = (f64Rate + f64Coil) / f64Coil; // the magnet's, of a kelvin of the coil
        const CLoudspeaker oSpeaker = Play(oParams, vecIn, {f64CoilEndC - 60.0, f64MagnetEndC - 60.0 * f64Part});
        const double f64LeftK = 60.0 * std::exp(2.0 * f64Rate);
        // Sound begins DELAY late and against the back-EMF: about 1 ms at 60 K/s.
        EXPECT_NEAR(oSpeaker.CoilC(), f64CoilEndC - f64LeftK, 0.03);
        EXPECT_NEAR(oSpeaker.MagnetC(), f64MagnetEndC - f64LeftK * f64Part, 0.03);
    }
    SpeakerParams oQuick;
    oQuick.f64CoilHeatJPerK = oQuick.f64MagnetHeatJPerK = 0.001;
    const double f64HalfK = 0.5 / 0.00393;
    const double f64RiseK = std::sqrt(f64HalfK * f64HalfK + 2.0 * f64HalfK * 85.0 * 1.5) - f64HalfK;
    EXPECT_NEAR(Play(oQuick, vecIn).CoilC(), 25.0 + f64RiseK, 1e-3);
}

// What the amplifier gave is heat, friction, or still in the cone; the error goes with the fourth power of the step.
TEST(SpeakerTest, EnergyBalancesAndStepsConverge)
{
    const Samples vecIn = Tone(3000.0, 0.4, 0.2, Tone(700.0, 0.6, 0.2));
    double f64Before = 1e-3;
    for (const int iOversampling : {1, 2, 4})
    {
        const CLoudspeaker oSpeaker = Play({}, vecIn, {}, iOversampling);
        const SpeakerEnergy& oEnergy = oSpeaker.Energy();
        const double f64KeptJ = oEnergy.f64ElectricalJ - oEnergy.f64FrictionJ - oSpeaker.StoredJ();
        const double f64Error = std::fabs(f64KeptJ / oEnergy.f64CoilHeatJ - 1.0);
        EXPECT_LT(f64Error, f64Before / 12.0) << iOversampling;
        f64Before = f64Error;
    }
}

TEST(SpeakerTest, RefusesWhatIsOutOfRange)
{
    SpeakerParams oNoNumber;
    oNoNumber.f64CoilHeatJPerK = std::nan("");
    CLoudspeaker oSpeaker = Play({}, Tone(100.0, 1.0, 0.1));
    EXPECT_EQ(oSpeaker.Init(oNoNumber, RATE).strText, "f64CoilHeatJPerK is nan, allowed is 0.001 to 1000");
    EXPECT_EQ(oSpeaker.Init({}, 7999.0).eError, SpeakerError::SAMPLE_RATE);
    EXPECT_EQ(oSpeaker.Init({}, RATE, 17).eError, SpeakerError::OVERSAMPLING);
    EXPECT_EQ(oSpeaker.Init({}, 8000.0, 1).eError, SpeakerError::STEP);
    EXPECT_EQ(oSpeaker.Reset(401.0, 25.0).eError, SpeakerError::TEMPERATURE);
    EXPECT_GT(oSpeaker.PeakDisplacementMm(), 0.8); // as it was
}

// A protection that takes half the bass and leaves the rest. Of two channels the first is silent, and
// the other's tones have twice the frequency.
TEST(SpeakerTest, MonitorComparesBothSides)
{
    CSpeakerMonitor oMonitor;
    SpeakerSetup oSetup;
    oSetup.vecTypes.resize(2);
    oSetup.vecTypes[1].oParams.f64DisplacementMmPerV /= 2.0;
    oSetup.vecTypes[1].oLimits.f64DisplacementMm = 0.2;
    ASSERT_TRUE(oMonitor.Init(oSetup));
    Samples vecIn = Tone(2000.0, 0.2, 1.0, Tone(50.0, 0.6, 1.0));
    Samples vecOut = Tone(2000.0, 0.2, 1.0, Tone(50.0, 0.3, 1.0));
    for (size_t i = 0; i < vecIn.size(); i += 2)
        vecIn[i] = vecOut[i] = i == 90 ? std::nanf("") : 0.0f;
    oMonitor.TakeIn(vecIn.data(), vecIn.size() / 2);
    oMonitor.TakeOut(vecOut.data(), vecOut.size() / 2);
    oMonitor.Finish();
    const SpeakerFigures oFigures = oMonitor.Figures();
    const SpeakerChannel& oSounding = oFigures.vecChannels.at(1);
    EXPECT_EQ(oFigures.vecChannels[0].oUnprotected.f64PeakDisplacementMm, 0.0);
    EXPECT_FALSE(oSounding.oUnprotected.Holds(oSounding.oLimits));
    EXPECT_TRUE(oSounding.oProtected.Holds(oSounding.oLimits));
    EXPECT_LT(oSounding.oUnprotected.f64PeakDisplacementMm, 0.4); // the first type goes 0.67 mm
    EXPECT_NEAR(oSounding.oUnprotected.f64PeakDisplacementMm, 2.0 * oSounding.oProtected.f64PeakDisplacementMm, 0.01);
    EXPECT_NEAR(oFigures.oUnprotected.f64LevelDb, 10.0 * std::log10(0.1), 0.01); // 0.36/2 and 0.04/2, on one of two
    EXPECT_NEAR(oFigures.LostDb(), 10.0 * std::log10(0.40 / 0.13), 0.01);
    EXPECT_NEAR(oFigures.LostAboveDb(), 0.0, 0.02);
    EXPECT_EQ(oFigures.oProtected.u64NonFinite, 1U);
}

// Whichever limit comes first: a programme at the gain found holds, 0.01 dB more doesn't.
TEST(SpeakerTest, ConstantGainIsTheLargestThatHolds)
{
    const auto Find = [](double f64Hz, double f64Amplitude, double f64StartC)
    {
        const Samples vecIn = Tone(f64Hz, f64Amplitude, 1.0);
        SpeakerSetup oSetup;
        oSetup.iChannels = 1;
        oSetup.oStart = {f64StartC, f64StartC};
        ConstantGain oFound;
        const auto Programme = [&](const SpeakerSink& oSink) { oSink(vecIn.data(), vecIn.size()); };
        EXPECT_TRUE(FindConstantGain(oSetup, Programme, oFound));
        return oFound;
    };
    EXPECT_EQ(Find(100.0, 0.2, 25.0).f64Gain, 1.0);
    EXPECT_EQ(Find(100.0, 1.0, 110.0).f64Gain, 0.0);
    for (const auto& [f64Hz, f64StartC] : {std::pair(100.0, 25.0), std::pair(6000.0, 60.0)})
    {
        const ConstantGain oFound = Find(f64Hz, 1.0, f64StartC);
        EXPECT_LE(oFound.iRuns, 5) << f64Hz;
        EXPECT_GT(oFound.f64Gain, 0.3) << f64Hz;
        EXPECT_EQ(Find(f64Hz, oFound.f64Gain, f64StartC).f64Gain, 1.0) << f64Hz;
        EXPECT_LT(Find(f64Hz, oFound.f64Gain * 1.0012, f64StartC).f64Gain, 1.0) << f64Hz;
    }
}
} // namespace
