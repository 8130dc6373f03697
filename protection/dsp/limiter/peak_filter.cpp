// The coefficients of the peak filter.
#include "protection/dsp/limiter/peak_filter.h"

#include "protection/dsp/base/own_math.h"

namespace
{
// Modified Bessel function of order 0, by its series.
double BesselI0(double f64X)
{
    double f64Term = 1.0;
    double f64Sum = 1.0;
    for (int i = 1; i < 40; ++i)
    {
        f64Term *= 0.25 * f64X * f64X / (i * i);
        f64Sum += f64Term;
    }
    return f64Sum;
}

// The sinc at half steps, +-1/(pi t), in a Kaiser window; a constant stays a constant.
void Design(__m128* pCoefs, int iPairs, double f64Beta)
{
    double f64Values[PeakFilter::MIDDLE_PAIRS];
    double f64Sum = 0.0;
    for (int i = 0; i < iPairs; ++i)
    {
        const double f64Place = (i + 0.5) / iPairs;
        const double f64Window = BesselI0(f64Beta * std::sqrt(1.0 - f64Place * f64Place));
        f64Values[i] = (i % 2 == 0 ? 1.0 : -1.0) / (i + 0.5) * f64Window;
        f64Sum += 2.0 * f64Values[i];
    }
    for (int i = 0; i < iPairs; ++i)
        pCoefs[i] = _mm_set1_ps(static_cast<float>(f64Values[i] / f64Sum));
}
} // namespace

void PeakFilter::Init()
{
    Design(oMiddle, MIDDLE_PAIRS, 4.0);
    Design(oQuarter, QUARTER_PAIRS, 7.0);
}
