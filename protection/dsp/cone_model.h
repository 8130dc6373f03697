// The cone as a filter, and the exact inverse that turns removed displacement back into voltage.
#pragma once

#include "protection/dsp/lanes.h"

struct ConeLanes
{
    Lanes oA1 = Both(0.0);
    Lanes oA2 = Both(0.0);
    Lanes oB = Both(1.0);
    Lanes oLimit = Both(1.0);
};

// x[n] = b u[n] - a1 x[n-1] - a2 x[n-2]
struct ConeModel
{
    Lanes oX1;
    Lanes oX2;

    void Reset() { oX1 = oX2 = Both(0.0); }

    void Process(const ConeLanes& oCone, const float* pFirst, const float* pSecond, Lanes* pDisplacement, int iCount)
    {
        Lanes o1 = oX1;
        Lanes o2 = oX2;
        for (int i = 0; i < iCount; ++i)
        {
            const Lanes oVoltage = _mm_cvtps_pd(_mm_unpacklo_ps(_mm_load_ss(pFirst + i), _mm_load_ss(pSecond + i)));
            const Lanes oForced = _mm_sub_pd(_mm_mul_pd(oCone.oB, oVoltage), _mm_mul_pd(oCone.oA2, o2));
            const Lanes oX = _mm_sub_pd(oForced, _mm_mul_pd(oCone.oA1, o1));
            o2 = o1;
            pDisplacement[i] = o1 = oX;
        }
        oX1 = o1;
        oX2 = o2;
    }
};

// u[n] = (x[n] + a1 x[n-1] + a2 x[n-2]) / b. pDisplacement[-1] and [-2] are the two before.
inline void InvertCone(const ConeLanes& oCone, const Lanes* pDisplacement, Lanes* pVoltage, int iCount)
{
    const Lanes oPerB = _mm_div_pd(Both(1.0), oCone.oB);
    for (int i = 0; i < iCount; ++i)
        pVoltage[i] =
            _mm_mul_pd(oPerB, _mm_add_pd(_mm_add_pd(pDisplacement[i], _mm_mul_pd(oCone.oA1, pDisplacement[i - 1])),
                                         _mm_mul_pd(oCone.oA2, pDisplacement[i - 2])));
}
