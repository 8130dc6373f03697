// The simulated loudspeaker against closed forms.
#include "speaker/loudspeaker.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace
{
constexpr double PI = 3.14159265358979323846;
constexpr double RATE = 48000.0;

using Samples = std::vector<float>;

// f64Hz 0: a constant.
Samples Sine(double f64Hz, double f64Amplitude, double f64Seconds)
{
    Samples vecSine(static_cast<size_t>(f64Seconds * RATE));
    for (size_t i = 0; i < vecSine.size(); ++i)
        vecSine[i] = static_cast<float>(
            f64Amplitude * (f64Hz > 0.0 ? std::sin(2.0 * PI * f64Hz * static_cast<double>(i) / RATE) : 1.0));
    return vecSine;
}

TEST(LoudspeakerTest, ConeFollowsTheTransferFunction)
{
    SpeakerParams oParams;
    oParams.f64ResistanceRisePerK = 0.0;
    for (const double f64Hz : {0.0, 100.0, 800.0, 1000.0, 3000.0})
    {
        CLoudspeaker oSpeaker;
        ASSERT_TRUE(oSpeaker.Init(oParams, RATE));
        const Samples vecIn = Sine(f64Hz, 0.5, 0.5);
        std::vector<double> vecMm(vecIn.size());
        SpeakerTrace oTrace;
        oTrace.pf64DisplacementMm = vecMm.data();
        oSpeaker.Process(vecIn.data(), vecIn.size(), oTrace);
        double f64SquareSum = 0.0; // over the second half: whole periods
        for (size_t i = vecMm.size() / 2; i < vecMm.size(); ++i)
            f64SquareSum += vecMm[i] * vecMm[i];
        const double f64Rms = std::sqrt(2.0 * f64SquareSum / static_cast<double>(vecMm.size()));
        const double f64W = f64Hz / oParams.f64ResonanceHz;
        const double f64PerQ = 1.0 / oParams.f64MechanicalQ + 1.0 / oParams.f64ElectricalQ;
        const double f64Peak =
            0.5 * oParams.f64FullScaleV * oParams.f64DisplacementMmPerV / std::hypot(1.0 - f64W * f64W, f64W * f64PerQ);
        EXPECT_NEAR(f64Rms / f64Peak, f64Hz > 0.0 ? std::sqrt(0.5) : 1.0, 1e-4) << f64Hz;
    }
}
} // namespace
