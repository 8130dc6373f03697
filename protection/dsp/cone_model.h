// The cone as a filter, and the exact inverse that turns removed displacement back into voltage.
#pragma once

#include "protection/dsp/lanes.h"

struct ConeLanes
{
    Lanes oA1 = Both(0.0);
    Lanes oA2 = Both(0.0);
    Lanes oB = Both(1.0);
    Lanes oPerB = Both(1.0);
    Lanes oLimit = Both(1.0);
};

// Coefficients of a block: the same all through, or on a straight way to those at its end.
struct ConeBlock
{
    ConeLanes oBegin;
    ConeLanes oEnd;
    bool bMoves = false;

    // Calls fnSample(i, coefficients) for each position. Where nothing moves, the coefficients stay in registers.
    template <class Sample> void ForEach(int iBegin, int iEnd, Sample fnSample) const
    {
        ConeLanes oNow = oEnd;
        if (!bMoves)
        {
            for (int i = iBegin; i < iEnd; ++i)
                fnSample(i, oNow);
            return;
        }
        for (int i = iBegin; i < iEnd; ++i)
        {
            const Lanes oPart = Both((i + 1) * (1.0 / BLOCK_LEN));
            const auto Between = [oPart](Lanes oFrom, Lanes oTo)
            { return _mm_add_pd(oFrom, _mm_mul_pd(oPart, _mm_sub_pd(oTo, oFrom))); };
            oNow.oA1 = Between(oBegin.oA1, oEnd.oA1);
            oNow.oA2 = Between(oBegin.oA2, oEnd.oA2);
            oNow.oB = Between(oBegin.oB, oEnd.oB);
            oNow.oPerB = _mm_div_pd(Both(1.0), oNow.oB);
            fnSample(i, oNow);
        }
    }
};

// x[n] = b u[n] - a1 x[n-1] - a2 x[n-2]
struct ConeModel
{
    Lanes oX1;
    Lanes oX2;

    void Reset() { oX1 = oX2 = Both(0.0); }

    // Arrays are indexed by position.
    void Process(const ConeBlock& oCone, const float* pFirst, const float* pSecond, Lanes* pDisplacement, int iBegin,
                 int iEnd)
    {
        Lanes o1 = oX1;
        Lanes o2 = oX2;
        oCone.ForEach(iBegin, iEnd,
                      [&](int i, const ConeLanes& oNow)
                      {
                          const Lanes oVoltage =
                              _mm_cvtps_pd(_mm_unpacklo_ps(_mm_load_ss(pFirst + i), _mm_load_ss(pSecond + i)));
                          const Lanes oForced = _mm_sub_pd(_mm_mul_pd(oNow.oB, oVoltage), _mm_mul_pd(oNow.oA2, o2));
                          o2 = o1;
                          pDisplacement[i] = o1 = _mm_sub_pd(oForced, _mm_mul_pd(oNow.oA1, o1));
                      });
        oX1 = o1;
        oX2 = o2;
    }
};

// u[n] = (x[n] + a1 x[n-1] + a2 x[n-2]) / b, for the displacement that the model made at positions iBegin to iEnd of
// oCone's block. pDisplacement and pVoltage are indexed by those positions; two values stand before the first.
inline void InvertCone(const ConeBlock& oCone, const Lanes* pDisplacement, Lanes* pVoltage, int iBegin, int iEnd)
{
    oCone.ForEach(iBegin, iEnd,
                  [&](int i, const ConeLanes& oNow)
                  {
                      const Lanes oNear = _mm_add_pd(pDisplacement[i], _mm_mul_pd(oNow.oA1, pDisplacement[i - 1]));
                      pVoltage[i] =
                          _mm_mul_pd(oNow.oPerB, _mm_add_pd(oNear, _mm_mul_pd(oNow.oA2, pDisplacement[i - 2])));
                  });
}
