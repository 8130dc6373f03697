// The low-pass that parts a band: fourth-order Bessel, so that its delay is the same for all that it lets through.
#pragma once

#include "protection/dsp/base/lanes.h"

// s^4 + 10 s^3 + 45 s^2 + 105 s + 105 in two sections, for a delay of iDelay samples; the bilinear transform keeps the
// delay at DC. -3 dB at 0.336 of the sample rate by the delay.
struct SplitFilter
{
    struct Section
    {
        Lanes oGain; // numerator gain (1, 2, 1)
        Lanes oA1;
        Lanes oA2;
        Lanes oState1;
        Lanes oState2;

        Lanes Process(Lanes oIn)
        {
            const Lanes oFeed = _mm_mul_pd(oGain, oIn);
            const Lanes oOut = _mm_add_pd(oFeed, oState1);
            oState1 = _mm_sub_pd(_mm_add_pd(_mm_add_pd(oFeed, oFeed), oState2), _mm_mul_pd(oA1, oOut));
            oState2 = _mm_sub_pd(oFeed, _mm_mul_pd(oA2, oOut));
            return oOut;
        }
    };

    Section oFirst;
    Section oSecond;

    void Init(int iDelay)
    {
        oFirst = Design(5.792421205640743, 9.140130890277927, iDelay);
        oSecond = Design(4.207578794359255, 11.4878004768712, iDelay);
    }

    void Process(const Lanes* pIn, Lanes* pOut, int iCount)
    {
        Section oA = oFirst;
        Section oB = oSecond;
        for (int i = 0; i < iCount; ++i)
            pOut[i] = oB.Process(oA.Process(pIn[i]));
        oFirst = oA;
        oSecond = oB;
    }

    // c / (s^2 + b s + c) with s = 2 iDelay (z - 1)/(z + 1).
    static Section Design(double f64B, double f64C, int iDelay)
    {
        const double f64K = 2.0 * iDelay;
        const double f64Scale = 1.0 / (f64K * f64K + f64B * f64K + f64C);
        return {Both(f64C * f64Scale), Both(2.0 * (f64C - f64K * f64K) * f64Scale),
                Both((f64K * f64K - f64B * f64K + f64C) * f64Scale), Both(0.0), Both(0.0)};
    }
};
