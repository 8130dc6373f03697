// Peak search and gain of the last limiter.
#include "protection/dsp/limiter/ceiling.h"

void Ceiling::Reset()
{
    oIn.Reset();
    oMiddles.Reset();
    for (int i = 0; i < BLOCK_LEN + GROUP; ++i)
    {
        f32Gain[i] = 1.0f;
        f32Out[i] = 0.0f;
    }
    oSmoother = Smoother{};
    f64Reduction = 0.0;
    f32MostBefore = 0.0f;
}

void Ceiling::Process(const PeakFilter& oFilter, int iBegin, int iEnd, double f64Ceiling)
{
    const int iFirstGroup = iBegin / GROUP;
    const int iLastGroup = iEnd / GROUP; // complete up to this one
    FindPeaks(oFilter, iFirstGroup, iLastGroup);
    for (int iGroup = iFirstGroup; iGroup < iLastGroup; ++iGroup)
        FinishGroup(iGroup, f64Ceiling);
    // A ceiling that falls doesn't cut what was limited to the one before.
    Limit(iBegin, iEnd, std::max(f32MostBefore, static_cast<float>(f64Ceiling)));
}

// The newest samples of a group complete the middles of a group 24 samples ago and the peaks of the one before it. All
// middles first, so that none is read while it is still being written.
void Ceiling::FindPeaks(const PeakFilter& oFilter, int iFirstGroup, int iLastGroup)
{
    const float* const pSamples = oIn.Block() - PeakFilter::AHEAD;
    float* const pMiddles = oMiddles.Block() - PeakFilter::AHEAD;
    int iGroup = iFirstGroup;
    for (; iGroup + 2 <= iLastGroup; iGroup += 2)
        oFilter.Middles<2>(pSamples + (iGroup + 1) * GROUP, pMiddles + (iGroup + 1) * GROUP);
    if (iGroup < iLastGroup)
        oFilter.Middles<1>(pSamples + (iGroup + 1) * GROUP, pMiddles + (iGroup + 1) * GROUP);
    for (iGroup = iFirstGroup; iGroup < iLastGroup; ++iGroup)
        f32Peaks[iGroup] = oFilter.Peak(pSamples + iGroup * GROUP, pMiddles + iGroup * GROUP);
}

// The gain of the next group runs in a line to what the peak needs.
void Ceiling::FinishGroup(int iGroup, double f64Ceiling)
{
    const double f64Peak = static_cast<double>(f32Peaks[iGroup]);
    const double f64Wanted = f64Peak > f64Ceiling ? (f64Peak - f64Ceiling) / f64Peak : 0.0;
    const double f64Next = f64Wanted > 0.0 || !oSmoother.IsIdle() ? oSmoother.UpdateGroup(f64Wanted) : 0.0;
    const double f64Step = (f64Next - f64Reduction) / GROUP;
    float* const pGain = f32Gain + (iGroup + 1) * GROUP;
    for (int i = 0; i < GROUP; ++i)
        pGain[i] = static_cast<float>(1.0 - (f64Reduction + f64Step * (i + 1)));
    f64Reduction = f64Next;
}

// Four at a time, up to three of them beyond iEnd: those are written again when their time comes. A gain of 1 leaves
// the bits alone, denormals too.
void Ceiling::Limit(int iBegin, int iEnd, float f32Most)
{
    const float* const pIn = oIn.Block() - DELAY;
    const __m128 oOne = _mm_set1_ps(1.0f);
    const __m128 oMost = _mm_set1_ps(f32Most);
    const __m128 oLeast = _mm_set1_ps(-f32Most);
    for (int i = iBegin; i < iEnd; i += GROUP)
    {
        const __m128 oGain = _mm_loadu_ps(f32Gain + i);
        const __m128 oSample = _mm_loadu_ps(pIn + i);
        const __m128 oLimited = _mm_min_ps(_mm_max_ps(_mm_mul_ps(oSample, oGain), oLeast), oMost);
        const __m128 oUntouched = _mm_cmpeq_ps(oGain, oOne);
        _mm_storeu_ps(f32Out + i, _mm_or_ps(_mm_and_ps(oUntouched, oSample), _mm_andnot_ps(oUntouched, oLimited)));
    }
}

void Ceiling::FinishBlock(double f64Ceiling)
{
    oIn.Roll();
    oMiddles.Roll();
    for (int i = 0; i < GROUP; ++i)
        f32Gain[i] = f32Gain[BLOCK_LEN + i];
    f32MostBefore = static_cast<float>(f64Ceiling);
}
