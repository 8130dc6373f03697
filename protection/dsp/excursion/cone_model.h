// The cone as a filter, and the exact inverse that turns removed displacement back into voltage.
#pragma once

#include "protection/dsp/base/lanes.h"

// The coefficients of a block.
struct ConeLanes
{
    Lanes oA1 = Both(0.0);
    Lanes oA2 = Both(0.0);
    Lanes oB = Both(1.0);
    Lanes oPerB = Both(1.0);
};

// x[n] = b u[n] - a1 x[n-1] - a2 x[n-2]
struct ConeModel
{
    Lanes oX1;
    Lanes oX2;

    void Reset() { oX1 = oX2 = Both(0.0); }

    // Arrays are indexed by position.
    void Process(const ConeLanes& oCone, const float* pFirst, const float* pSecond, Lanes* pDisplacement, int iBegin,
                 int iEnd)
    {
        const ConeLanes oNow = oCone;
        Lanes o1 = oX1;
        Lanes o2 = oX2;
        for (int i = iBegin; i < iEnd; ++i)
        {
            const Lanes oVoltage = _mm_cvtps_pd(_mm_unpacklo_ps(_mm_load_ss(pFirst + i), _mm_load_ss(pSecond + i)));
            const Lanes oForced = _mm_sub_pd(_mm_mul_pd(oNow.oB, oVoltage), _mm_mul_pd(oNow.oA2, o2));
            o2 = o1;
            pDisplacement[i] = o1 = _mm_sub_pd(oForced, _mm_mul_pd(oNow.oA1, o1));
        }
        oX1 = o1;
        oX2 = o2;
    }
};

// u[n] = (x[n] + a1 x[n-1] + a2 x[n-2]) / b. Two displacements stand before the first.
inline void InvertCone(const ConeLanes& oCone, const Lanes* pDisplacement, Lanes* pVoltage, int iCount)
{
    const ConeLanes oNow = oCone;
    for (int i = 0; i < iCount; ++i)
    {
        const Lanes oNear = _mm_add_pd(pDisplacement[i], _mm_mul_pd(oNow.oA1, pDisplacement[i - 1]));
        pVoltage[i] = _mm_mul_pd(oNow.oPerB, _mm_add_pd(oNear, _mm_mul_pd(oNow.oA2, pDisplacement[i - 2])));
    }
}
