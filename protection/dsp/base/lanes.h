// Two channels side by side in one register, and the time grid that all stages share.
#pragma once

#include <emmintrin.h>

using Lanes = __m128d;

// A block of the stream: coefficients hold for it, gains move linearly through it. Frames are cut to blocks by the
// count of samples since the start, so what comes out doesn't depend on how long frames are.
inline constexpr int BLOCK_LEN = 240; // 5 ms
inline constexpr double SAMPLE_RATE_HZ = 48000.0;
inline constexpr double BLOCK_SEC = BLOCK_LEN / SAMPLE_RATE_HZ;

// What a history is of.
struct OfSamples
{
    using Value = float;
};
struct OfLanes
{
    using Value = Lanes;
};

// A block behind the HISTORY_LEN values before it.
template <class Kind, int HISTORY_LEN> struct History
{
    using Value = typename Kind::Value;

    Value oValues[HISTORY_LEN + BLOCK_LEN];

    void Reset()
    {
        for (Value& oValue : oValues)
            oValue = Value{};
    }
    // Of position 0 of the block; HISTORY_LEN values stand before it.
    Value* Block() { return oValues + HISTORY_LEN; }
    // Block done: its last values become history.
    void Roll()
    {
        for (int i = 0; i < HISTORY_LEN; ++i)
            oValues[i] = oValues[BLOCK_LEN + i];
    }
};

inline Lanes Both(double f64Value)
{
    return _mm_set1_pd(f64Value);
}
inline Lanes Magnitude(Lanes oValue)
{
    return _mm_andnot_pd(_mm_set1_pd(-0.0), oValue);
}
inline double Lane(Lanes oValue, int iLane)
{
    return _mm_cvtsd_f64(iLane == 0 ? oValue : _mm_unpackhi_pd(oValue, oValue));
}
