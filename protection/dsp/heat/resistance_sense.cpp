// Correlation of the sense signals.
#include "protection/dsp/heat/resistance_sense.h"

#include <cmath>

namespace
{
constexpr double FORGET_PER_SAMPLE = 1.0 / 48000.0; // a second
constexpr double LEAST_AMPERE = 0.005;              // RMS
} // namespace

void ResistanceSense::Process(const BackEmfCoefs& oCoefs, const float* pVoltage, const float* pCurrent, int iCount,
                              double f64Volt, double f64Ampere)
{
    if (pVoltage == nullptr || pCurrent == nullptr)
    {
        *this = ResistanceSense{};
        return;
    }
    float f32Sum = 0.0f;
    for (int i = 0; i < iCount; ++i)
        f32Sum += std::fabs(pCurrent[i]) + 0.0f * pVoltage[i];
    if (!(f32Sum > 0.0f) || !std::isfinite(f32Sum))
    {
        f64U1 = f64U2 = f64E1 = f64E2 = 0.0;
        f64VoltAmpere -= FORGET_PER_SAMPLE * iCount * f64VoltAmpere;
        f64SquareAmpere -= FORGET_PER_SAMPLE * iCount * f64SquareAmpere;
        return;
    }
    for (int i = 0; i < iCount; ++i)
    {
        const double u = static_cast<double>(pVoltage[i]) * f64Volt;
        const double a = static_cast<double>(pCurrent[i]) * f64Ampere;
        const double e = oCoefs.f64B * (u - f64U2) - oCoefs.f64A1 * f64E1 - oCoefs.f64A2 * f64E2;
        f64VoltAmpere += (u - e) * a - FORGET_PER_SAMPLE * f64VoltAmpere;
        f64SquareAmpere += a * a - FORGET_PER_SAMPLE * f64SquareAmpere;
        f64U2 = f64U1;
        f64U1 = u;
        f64E2 = f64E1;
        f64E1 = e;
    }
}

double ResistanceSense::ResistanceOhm() const
{
    return f64SquareAmpere * FORGET_PER_SAMPLE > LEAST_AMPERE * LEAST_AMPERE ? f64VoltAmpere / f64SquareAmpere : 0.0;
}
