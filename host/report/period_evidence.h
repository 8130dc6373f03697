// What one processing call did, told from outside: by the buffers and connection records it left behind.
#pragma once

#include <cstddef>
#include <cstdint>

enum class PeriodPath
{
    Processed, // the output differs from this period's input
    Same,      // the output is this period's input, bit for bit: a bypass, or processing that changes nothing
    Silent,    // the input was zeroed: the silent path
    Quiet,     // the input was digital silence, and the output too: any path looks like this
    Underflow, // the output buffer was left as it was: nothing was ready
    Refused,   // the output connection was left as it was
};
constexpr size_t PERIOD_PATH_COUNT = 6;
constexpr const char* PERIOD_PATH_NAMES[PERIOD_PATH_COUNT] = {"processed",   "same as input", "silent",
                                                              "quiet input", "underflow",     "refused"};

// Fills the buffer with a NaN of a bit pattern that no processing yields. iDataLen counts floats.
void FillSentinel(float* pf32Data, size_t iDataLen);
bool IsSentinel(const float* pf32Data, size_t iDataLen);
bool IsAllZero(const float* pf32Data, size_t iDataLen);

// One period's buffers after the call. In place pf32Input and pf32Output are one buffer.
struct PeriodEvidence
{
    const float* pf32Source; // what was handed in, kept aside
    const float* pf32Input;  // the input buffer after the call
    const float* pf32Output; // the output buffer after the call, filled with the sentinel before it
    size_t iDataLen;         // floats
    bool bWritten;           // the output connection's record was written
};

PeriodPath JudgePeriod(const PeriodEvidence& oEvidence);
