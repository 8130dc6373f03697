// Temperatures of coil and magnet.
#pragma once

#include "protection/dsp/base/lanes.h"
#include "protection/dsp/speaker_constants.h"

// Cc Tc' = P - (Tc - Tm)/Rtc and Cm Tm' = (Tc - Tm)/Rtc - (Tm - Ta)/Rtm.
struct CoilModel
{
    double f64CoilC = 25.0;
    double f64MagnetC = 25.0;

    void Reset(double f64AmbientC) { f64CoilC = f64MagnetC = f64AmbientC; }

    // A block with f64HeatW put into the coil: the coil exactly, the slow magnet by Euler's method.
    void Process(const SpeakerConstants& oSpeaker, double f64HeatW, double f64AmbientC)
    {
        const double f64FlowW = (f64CoilC - f64MagnetC) / oSpeaker.f64CoilKPerW;
        const double f64LossW = (f64MagnetC - f64AmbientC) / oSpeaker.f64MagnetKPerW;
        f64CoilC += oSpeaker.f64CoilStep * (f64MagnetC + f64HeatW * oSpeaker.f64CoilKPerW - f64CoilC);
        f64MagnetC += BLOCK_SEC / oSpeaker.f64MagnetJPerK * (f64FlowW - f64LossW);
    }
};

// The back-EMF of two channels' output, and the sum that heat is made of.
struct CoilVoltage
{
    Lanes oU1;
    Lanes oU2;
    Lanes oE1;
    Lanes oE2;
    Lanes oCoilSum; // of (u - e)^2, in the block

    void Reset() { oU1 = oU2 = oE1 = oE2 = oCoilSum = Both(0.0); }
    void FinishBlock() { oCoilSum = Both(0.0); }

    void Process(const BackEmfCoefs& oFirst, const BackEmfCoefs& oSecond, const float* pFirst, const float* pSecond,
                 int iCount)
    {
        const Lanes oB = _mm_set_pd(oSecond.f64B, oFirst.f64B);
        const Lanes oA1 = _mm_set_pd(oSecond.f64A1, oFirst.f64A1);
        const Lanes oA2 = _mm_set_pd(oSecond.f64A2, oFirst.f64A2);
        Lanes u1 = oU1, u2 = oU2, e1 = oE1, e2 = oE2, oCoil = oCoilSum;
        for (int i = 0; i < iCount; ++i)
        {
            const Lanes u = _mm_cvtps_pd(_mm_unpacklo_ps(_mm_load_ss(pFirst + i), _mm_load_ss(pSecond + i)));
            const Lanes oForced = _mm_sub_pd(_mm_mul_pd(oB, _mm_sub_pd(u, u2)), _mm_mul_pd(oA2, e2));
            const Lanes e = _mm_sub_pd(oForced, _mm_mul_pd(oA1, e1));
            const Lanes oCoilVolt = _mm_sub_pd(u, e);
            oCoil = _mm_add_pd(oCoil, _mm_mul_pd(oCoilVolt, oCoilVolt));
            u2 = u1;
            u1 = u;
            e2 = e1;
            e1 = e;
        }
        oU1 = u1, oU2 = u2, oE1 = e1, oE2 = e2, oCoilSum = oCoil;
    }
};
