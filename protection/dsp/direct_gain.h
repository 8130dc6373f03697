// One channel's way past the stages: a gain that never jumps.
#pragma once

#include "protection/dsp/base/lanes.h"
#include "protection/dsp/base/sane_samples.h"

struct DirectGain
{
    static constexpr double STEP = 0.25; // in a block, at most

    double f64Before = 1.0; // at the block's begin
    double f64Gain = 1.0;   // at its end
    double f64Target = 1.0;

    void Jump() { f64Before = f64Gain = f64Target; }

    // Samples from position iBegin of the block on. At 1 they stay as they are, with bBits even what is no number.
    void Process(const float* pIn, float* pOut, int iBegin, int iCount, bool bBits) const
    {
        const double f64Change = (f64Gain - f64Before) / BLOCK_LEN;
        const bool bOne = f64Before == 1.0 && f64Change == 0.0;
        if (bOne && bBits)
        {
            memcpy(pOut, pIn, static_cast<size_t>(iCount) * sizeof(float));
            return;
        }
        CopySane(pIn, pOut, iCount);
        if (bOne)
            return;
        for (int i = 0; i < iCount; ++i)
            pOut[i] *= static_cast<float>(f64Before + f64Change * (iBegin + i + 1));
    }

    void FinishBlock()
    {
        f64Before = f64Gain;
        f64Gain += std::clamp(f64Target - f64Gain, -STEP, STEP);
    }
};
