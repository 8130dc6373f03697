// The last limiter: no sample over the ceiling, and no peak between samples to speak of.
#pragma once

#include "protection/dsp/base/hold_smoother.h"
#include "protection/dsp/base/lanes.h"
#include "protection/dsp/limiter/peak_filter.h"

// One channel. Gain down ahead of each peak, held, and slowly back to exactly 1, where samples pass bit for bit.
struct Ceiling
{
    static constexpr int GROUP = 4;
    static constexpr int WIDTH = 7;
    static constexpr int DELAY = PeakFilter::AHEAD + 2 * WIDTH * GROUP; // samples
    using Smoother = HoldSmoother<WIDTH, 360, 1200>;                    // 30 ms, 0.1 s

    History<OfSamples, DELAY> oIn;
    History<OfSamples, 40> oMiddles;   // of the intervals; position as the samples'
    float f32Peaks[BLOCK_LEN / GROUP]; // of the group that a group of the block completes
    float f32Gain[BLOCK_LEN + GROUP];
    float f32Out[BLOCK_LEN + GROUP];
    Smoother oSmoother;
    double f64Reduction; // at the end of the last group
    float f32MostBefore; // ceiling of the block before

    void Reset();

    // From position iBegin to iEnd of the block, whose input stands in oIn, to f32Out at the same positions.
    void Process(const PeakFilter& oFilter, int iBegin, int iEnd, double f64Ceiling);
    void FinishBlock(double f64Ceiling);

    // Of the last group.
    double Gain() const { return 1.0 - f64Reduction; }

private:
    void FindPeaks(const PeakFilter& oFilter, int iBegin, int iEnd);
    void FinishGroup(int iEnd, double f64Ceiling);
    void Limit(int iBegin, int iEnd, float f32Most);
};
