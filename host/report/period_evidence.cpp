// Judges one processing call by the buffers it left behind.
#include "host/report/period_evidence.h"

#include <algorithm>
#include <cstring>

namespace
{

constexpr uint32_t SENTINEL_BITS = 0x7FC5A5A5;

uint32_t Bits(float f32Value)
{
    uint32_t u32Bits = 0;
    std::memcpy(&u32Bits, &f32Value, sizeof(u32Bits));
    return u32Bits;
}

} // namespace

void FillSentinel(float* pf32Data, size_t iDataLen)
{
    float f32Sentinel = 0;
    std::memcpy(&f32Sentinel, &SENTINEL_BITS, sizeof(f32Sentinel));
    std::fill_n(pf32Data, iDataLen, f32Sentinel);
}

bool IsSentinel(const float* pf32Data, size_t iDataLen)
{
    return std::all_of(pf32Data, pf32Data + iDataLen, [](float f32Value) { return Bits(f32Value) == SENTINEL_BITS; });
}

bool IsAllZero(const float* pf32Data, size_t iDataLen)
{
    return std::all_of(pf32Data, pf32Data + iDataLen, [](float f32Value) { return f32Value == 0.0f; });
}

PeriodPath JudgePeriod(const PeriodEvidence& oEvidence)
{
    const size_t iDataLen = oEvidence.iDataLen;
    const bool bInPlace = oEvidence.pf32Input == oEvidence.pf32Output;
    const bool bQuietSource = IsAllZero(oEvidence.pf32Source, iDataLen);
    if (!oEvidence.bWritten)
        return PeriodPath::Refused;
    if (!bInPlace && !bQuietSource && IsAllZero(oEvidence.pf32Input, iDataLen))
        return PeriodPath::Silent;
    if (!bInPlace && IsSentinel(oEvidence.pf32Output, iDataLen))
        return PeriodPath::Underflow;
    if (std::memcmp(oEvidence.pf32Source, oEvidence.pf32Output, iDataLen * sizeof(float)) == 0)
        return bQuietSource ? PeriodPath::Quiet : PeriodPath::Same;
    return PeriodPath::Processed;
}
