// Peak search and gain of the last limiter.
#include "protection/dsp/ceiling.h"

namespace
{
constexpr int32_t HOLD_GROUPS = 360;   // 30 ms
constexpr int32_t DECAY_GROUPS = 1200; // 0.1 s
} // namespace

void Ceiling::Reset()
{
    oIn.Reset();
    oMiddles.Reset();
    for (int i = 0; i < BLOCK_LEN + GROUP; ++i)
    {
        f32Gain[i] = 1.0f;
        f32Out[i] = 0.0f;
    }
    oSmoother.Init(HOLD_GROUPS, DECAY_GROUPS);
    f64Reduction = 0.0;
    f32MostBefore = 0.0f;
}

void Ceiling::Process(const PeakFilter& oFilter, int iBegin, int iEnd, double f64Ceiling)
{
    for (int iStop = (iBegin / GROUP + 1) * GROUP; iStop <= iEnd; iStop += GROUP)
        FinishGroup(oFilter, iStop, f64Ceiling);
    // A ceiling that falls doesn't cut what was limited to the one before.
    Limit(iBegin, iEnd, std::max(f32MostBefore, static_cast<float>(f64Ceiling)));
}

// The newest samples complete the middles of a group 28 samples ago and the peaks of the one before it. The gain of the
// next group runs to what that needs.
void Ceiling::FinishGroup(const PeakFilter& oFilter, int iEnd, double f64Ceiling)
{
    const float* const pSamples = oIn.Block() + iEnd - GROUP - PeakFilter::AHEAD;
    float* const pMiddles = oMiddles.Block() + iEnd - GROUP - PeakFilter::AHEAD;
    _mm_storeu_ps(pMiddles + GROUP, oFilter.Middles(pSamples + GROUP));
    const double f64Peak = oFilter.Peak(pSamples, pMiddles);
    const double f64Wanted = f64Peak > f64Ceiling ? (f64Peak - f64Ceiling) / f64Peak : 0.0;
    const double f64Next = f64Wanted > 0.0 || !oSmoother.IsIdle() ? oSmoother.UpdateGroup(f64Wanted) : 0.0;
    for (int i = 0; i < GROUP; ++i)
        f32Gain[iEnd + i] = static_cast<float>(1.0 - (f64Reduction + (f64Next - f64Reduction) * (i + 1) / GROUP));
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
