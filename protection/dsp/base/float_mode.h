// The processor's floating-point mode while stages run.
#pragma once

#include <emmintrin.h>

// Denormals count as 0, rounding is to nearest, nothing traps; the caller's mode and flags come back at the end.
class CFloatMode
{
public:
    CFloatMode() { _mm_setcsr(0x1F80 | 0x8040); }
    ~CFloatMode() { _mm_setcsr(m_uBefore); }
    CFloatMode(const CFloatMode&) = delete;
    CFloatMode& operator=(const CFloatMode&) = delete;

private:
    const unsigned m_uBefore = _mm_getcsr();
};
