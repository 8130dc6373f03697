// Splitting, peak search and removal of an excursion band.
#include "protection/dsp/excursion/excursion_band.h"

namespace
{
template <class Curve> void WriteCurve(const Curve (&oCurves)[2], Lanes* pValues, int iCount)
{
    Lanes oValue = _mm_set_pd(oCurves[1].f64Start, oCurves[0].f64Start);
    Lanes oStep = _mm_set_pd(oCurves[1].f64Step, oCurves[0].f64Step);
    const Lanes oChange = _mm_set_pd(oCurves[1].f64Change, oCurves[0].f64Change);
    for (int i = 0; i < iCount; ++i)
    {
        pValues[i] = oValue = _mm_add_pd(oValue, oStep);
        oStep = _mm_add_pd(oStep, oChange);
    }
}
} // namespace

template <int MAX_AHEAD, int WIDTH, bool LAST> void ExcursionBand<MAX_AHEAD, WIDTH, LAST>::Init(int iLookAhead)
{
    oIn.Reset();
    oLow.Reset();
    for (int i = 0; i < BLOCK_LEN + GROUP; ++i)
        oReduction[i] = oWhole[i] = Both(0.0);
    for (bool& bActive : bWhole)
        bActive = false;
    iAhead = iLookAhead;
    oSplit.Init(iAhead);
    for (int i = 0; i < 2; ++i)
    {
        oSmoothers[i] = Smoother{};
        oWholeSmoothers[i] = Smoother{};
    }
    oWanted = oHighest = Both(0.0);
}

// The split looks at the input later by what its own delay is short of the longest.
template <int MAX_AHEAD, int WIDTH, bool LAST>
void ExcursionBand<MAX_AHEAD, WIDTH, LAST>::Process(int iBegin, int iEnd, Lanes oLimit, Lanes* pLeft, Lanes* pRemoved)
{
    oSplit.Process(oIn.Block() + iBegin - (MAX_AHEAD - iAhead), oLow.Block() + iBegin, iEnd - iBegin);
    for (int iPosition = iBegin; iPosition < iEnd;)
    {
        const int iStop = std::min(iEnd, (iPosition / GROUP + 1) * GROUP);
        Watch(iPosition, iStop, oLimit);
        if (iStop % GROUP == 0)
            FinishGroup(iStop, oLimit);
        iPosition = iStop;
    }
    Remove(iBegin, iEnd, pLeft, pRemoved);
}

// r = (|x| - limit) / (low x/|x|), clamped to 0 .. 1, where |x| is over the limit and the low band is part of the
// reason.
template <int MAX_AHEAD, int WIDTH, bool LAST>
void ExcursionBand<MAX_AHEAD, WIDTH, LAST>::Watch(int iBegin, int iEnd, Lanes oLimit)
{
    const Lanes oSign = Both(-0.0);
    const Lanes oZero = Both(0.0);
    const Lanes* const pAll = oIn.Block() - MAX_AHEAD;
    const Lanes* const pLow = oLow.Block();
    Lanes oMost = oWanted;
    Lanes oHigh = oHighest;
    for (int i = iBegin; i < iEnd; ++i)
    {
        const Lanes oExcess = _mm_sub_pd(_mm_andnot_pd(oSign, pAll[i]), oLimit);
        const Lanes oShare = _mm_xor_pd(pLow[i], _mm_and_pd(oSign, pAll[i]));
        const Lanes oCounts = _mm_and_pd(_mm_cmpgt_pd(oExcess, oZero), _mm_cmpgt_pd(oShare, oZero));
        oMost = _mm_max_pd(oMost, _mm_and_pd(oCounts, _mm_div_pd(oExcess, _mm_max_pd(oShare, oExcess))));
        if (LAST)
            oHigh = _mm_max_pd(oHigh, _mm_andnot_pd(oSign, _mm_sub_pd(pAll[i], pLow[i])));
    }
    oWanted = oMost;
    oHighest = oHigh;
}

template <int MAX_AHEAD, int WIDTH, bool LAST>
void ExcursionBand<MAX_AHEAD, WIDTH, LAST>::FinishGroup(int iEnd, Lanes oLimit)
{
    typename Smoother::Curve oCurves[2];
    for (int i = 0; i < 2; ++i)
        oCurves[i] = oSmoothers[i].template UpdateSamples<GROUP>(Lane(oWanted, i));
    WriteCurve(oCurves, oReduction + iEnd, GROUP);
    if (LAST)
    {
        const bool bActive = _mm_movemask_pd(_mm_cmpgt_pd(oHighest, oLimit)) != 0 || !oWholeSmoothers[0].IsIdle() ||
                             !oWholeSmoothers[1].IsIdle();
        bWhole[iEnd / GROUP] = bActive;
        for (int i = 0; i < 2 && bActive; ++i)
        {
            const double f64High = Lane(oHighest, i);
            const double f64Limit = Lane(oLimit, i);
            const double f64Wanted = f64High > f64Limit ? (f64High - f64Limit) / f64High : 0.0;
            oCurves[i] = oWholeSmoothers[i].template UpdateSamples<GROUP>(f64Wanted);
        }
        if (bActive)
            WriteCurve(oCurves, oWhole + iEnd, GROUP);
    }
    oWanted = oHighest = Both(0.0);
}

template <int MAX_AHEAD, int WIDTH, bool LAST>
void ExcursionBand<MAX_AHEAD, WIDTH, LAST>::Remove(int iBegin, int iEnd, Lanes* pLeft, Lanes* pRemoved)
{
    const Lanes* const pAll = oIn.Block() - DELAY;
    const Lanes* const pLow = oLow.Block() - HOLD_DELAY;
    for (int i = iBegin; i < iEnd; ++i)
    {
        Lanes oRemoved = _mm_mul_pd(oReduction[i], pLow[i]);
        if (LAST && bWhole[i / GROUP])
            oRemoved = _mm_add_pd(oRemoved, _mm_mul_pd(oWhole[i], _mm_sub_pd(pAll[i], oRemoved)));
        pRemoved[i] = oRemoved;
        pLeft[i] = _mm_sub_pd(pAll[i], oRemoved);
    }
}

template <int MAX_AHEAD, int WIDTH, bool LAST> void ExcursionBand<MAX_AHEAD, WIDTH, LAST>::FinishBlock()
{
    oIn.Roll();
    oLow.Roll();
    for (int i = 0; i < GROUP; ++i)
    {
        oReduction[i] = oReduction[BLOCK_LEN + i];
        oWhole[i] = oWhole[BLOCK_LEN + i];
    }
    bWhole[0] = bWhole[GROUPS];
}

template struct ExcursionBand<32, 5, false>;
template struct ExcursionBand<16, 5, true>;
