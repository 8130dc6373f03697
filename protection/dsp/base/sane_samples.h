// Samples as they come from outside, made fit for filters.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <emmintrin.h>

inline constexpr float LARGEST_SAMPLE = 8.0f; // 18 dB over full scale; what is beyond is cut

// NaN becomes 0, infinity the largest.
inline float Sane(float f32Sample)
{
    if (std::isnan(f32Sample))
        return 0.0f;
    return std::min(std::max(f32Sample, -LARGEST_SAMPLE), LARGEST_SAMPLE);
}

inline bool IsSane(const float* pSamples, int iCount)
{
    const __m128 oSign = _mm_set1_ps(-0.0f);
    const __m128 oLargest = _mm_set1_ps(LARGEST_SAMPLE);
    __m128 oBad = _mm_setzero_ps();
    int i = 0;
    for (; i + 4 <= iCount; i += 4)
        oBad = _mm_or_ps(oBad, _mm_cmpnle_ps(_mm_andnot_ps(oSign, _mm_loadu_ps(pSamples + i)), oLargest));
    bool bSane = _mm_movemask_ps(oBad) == 0;
    for (; i < iCount; ++i)
        bSane &= std::fabs(pSamples[i]) <= LARGEST_SAMPLE;
    return bSane;
}

// Samples that are sane keep their bits; a null array is silent.
inline void CopySane(const float* pIn, float* pOut, int iCount)
{
    if (pIn == nullptr)
    {
        memset(pOut, 0, static_cast<size_t>(iCount) * sizeof(float));
        return;
    }
    memcpy(pOut, pIn, static_cast<size_t>(iCount) * sizeof(float));
    if (!IsSane(pOut, iCount))
        for (int i = 0; i < iCount; ++i)
            pOut[i] = Sane(pOut[i]);
}
