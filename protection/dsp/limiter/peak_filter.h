// Peaks between samples: the curve through one channel's samples at every quarter of an interval.
#pragma once

#include <emmintrin.h>

// First the middles of the intervals, from 48 samples around each; then, on samples and middles together, the quarters
// from 16 points, which reach over as many samples and a few more. Windowed sinc, symmetrical, so that pairs share a
// coefficient.
struct PeakFilter
{
    static constexpr int MIDDLE_PAIRS = 24;
    static constexpr int QUARTER_PAIRS = 8;
    static constexpr int AHEAD =
        MIDDLE_PAIRS + QUARTER_PAIRS / 2; // samples behind an interval that its curve depends on

    __m128 oMiddle[MIDDLE_PAIRS];
    __m128 oQuarter[QUARTER_PAIRS];

    void Init();

    // Middles behind the 4 GROUPS samples from pSamples on; reads MIDDLE_PAIRS samples to either side.
    template <int GROUPS> void Middles(const float* pSamples, float* pMiddles) const
    {
        __m128 oEven[GROUPS];
        __m128 oOdd[GROUPS];
        for (int j = 0; j < GROUPS; ++j)
            oEven[j] = oOdd[j] = _mm_setzero_ps();
        for (int i = 0; i < MIDDLE_PAIRS; i += 2)
            for (int j = 0; j < GROUPS; ++j)
            {
                const float* const pMiddle = pSamples + 4 * j;
                const __m128 oNear = _mm_add_ps(_mm_loadu_ps(pMiddle - i), _mm_loadu_ps(pMiddle + 1 + i));
                const __m128 oFar = _mm_add_ps(_mm_loadu_ps(pMiddle - 1 - i), _mm_loadu_ps(pMiddle + 2 + i));
                oEven[j] = _mm_add_ps(oEven[j], _mm_mul_ps(oMiddle[i], oNear));
                oOdd[j] = _mm_add_ps(oOdd[j], _mm_mul_ps(oMiddle[i + 1], oFar));
            }
        for (int j = 0; j < GROUPS; ++j)
            _mm_storeu_ps(pMiddles + 4 * j, _mm_add_ps(oEven[j], oOdd[j]));
    }

    // The largest magnitude in the intervals behind the four samples from pSamples on. pMiddles is indexed alike.
    float Peak(const float* pSamples, const float* pMiddles) const
    {
        __m128 oFirst = _mm_setzero_ps();
        __m128 oLast = _mm_setzero_ps();
        for (int i = 0; i < QUARTER_PAIRS / 2; ++i)
        {
            const __m128 oLeftSample = _mm_loadu_ps(pSamples - i);
            const __m128 oRightSample = _mm_loadu_ps(pSamples + 1 + i);
            const __m128 oRightMiddle = _mm_loadu_ps(pMiddles + i);
            const __m128 oNextMiddle = _mm_loadu_ps(pMiddles + 1 + i);
            const __m128 oLeftMiddle = _mm_loadu_ps(pMiddles - i);
            const __m128 oFarMiddle = _mm_loadu_ps(pMiddles - 1 - i);
            const __m128 oNear = oQuarter[2 * i];
            const __m128 oFar = oQuarter[2 * i + 1];
            oFirst = _mm_add_ps(oFirst, _mm_mul_ps(oNear, _mm_add_ps(oLeftSample, oRightMiddle)));
            oFirst = _mm_add_ps(oFirst, _mm_mul_ps(oFar, _mm_add_ps(oFarMiddle, oRightSample)));
            oLast = _mm_add_ps(oLast, _mm_mul_ps(oNear, _mm_add_ps(oLeftMiddle, oRightSample)));
            oLast = _mm_add_ps(oLast, _mm_mul_ps(oFar, _mm_add_ps(oLeftSample, oNextMiddle)));
        }
        const __m128 oSign = _mm_set1_ps(-0.0f);
        const __m128 oSamples =
            _mm_max_ps(_mm_andnot_ps(oSign, _mm_loadu_ps(pSamples)), _mm_andnot_ps(oSign, _mm_loadu_ps(pMiddles)));
        __m128 oPeak = _mm_max_ps(oSamples, _mm_max_ps(_mm_andnot_ps(oSign, oFirst), _mm_andnot_ps(oSign, oLast)));
        oPeak = _mm_max_ps(oPeak, _mm_movehl_ps(oPeak, oPeak));
        return _mm_cvtss_f32(_mm_max_ss(oPeak, _mm_shuffle_ps(oPeak, oPeak, 1)));
    }
};
