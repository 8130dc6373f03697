// Takes from one low band what makes the cone go too far.
#pragma once

#include "protection/dsp/base/hold_smoother.h"
#include "protection/dsp/base/lanes.h"
#include "protection/dsp/excursion/split_filter.h"
#include "protection/dsp/speaker_constants.h"

// Works on displacement, not on voltage: what it wants removed is removed exactly, during attack and release alike,
// when the caller turns the removed displacement into voltage by the inverse of the model that made it.
//
// With LAST the part above the band must hold the limit by itself, or all of it is reduced: no signal gets past.
template <int MAX_AHEAD, int WIDTH, bool LAST> struct ExcursionBand
{
    static constexpr int GROUP = 8;
    static constexpr int HOLD_DELAY = (2 * WIDTH + 1) * GROUP;
    static constexpr int DELAY = MAX_AHEAD + HOLD_DELAY; // samples, whatever the look-ahead
    static constexpr int GROUPS = BLOCK_LEN / GROUP;
    using Smoother = HoldSmoother<WIDTH, 180, 1500>; // 30 ms, between the peaks of a tone of 17 Hz; 0.25 s

    History<OfLanes, DELAY> oIn;       // displacement that comes in
    History<OfLanes, HOLD_DELAY> oLow; // of the low band, MAX_AHEAD samples later
    Lanes oReduction[BLOCK_LEN + GROUP];
    Lanes oWhole[BLOCK_LEN + GROUP];
    bool bWhole[GROUPS + 1];
    SplitFilter oSplit;
    int iAhead;
    Smoother oSmoothers[2];
    Smoother oWholeSmoothers[2];
    Lanes oWanted; // of the group so far
    Lanes oHighest;

    // iLookAhead is the split's delay, at most MAX_AHEAD.
    void Init(int iLookAhead);

    // From position iBegin to iEnd of the block, whose input stands in oIn: what is left goes to pLeft, what was
    // removed to pRemoved, both DELAY samples late and indexed by position.
    void Process(int iBegin, int iEnd, Lanes oLimit, Lanes* pLeft, Lanes* pRemoved);
    void FinishBlock();

private:
    void Watch(int iBegin, int iEnd, Lanes oLimit);
    void FinishGroup(int iEnd, Lanes oLimit);
    void Remove(int iBegin, int iEnd, Lanes* pLeft, Lanes* pRemoved);
};

using DeepBand = ExcursionBand<32, 5, false>;
using UpperBand = ExcursionBand<16, 5, true>;
