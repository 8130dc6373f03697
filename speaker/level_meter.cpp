// Sums of squares, before and behind a high-pass.
#include "speaker/level_meter.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double PI = 3.14159265358979323846;

double ToDb(double f64SquareSum, uint64_t u64Count)
{
    constexpr double SILENCE = 1e-20;
    const double f64Mean = u64Count > 0 ? f64SquareSum / static_cast<double>(u64Count) : 0.0;
    return 10.0 * std::log10(std::max(f64Mean, SILENCE));
}
} // namespace

// s^2/(s^2 + s/Q + 1) by the bilinear transform, -3 dB of the pair of sections at SPLIT_HZ.
void CLevelMeter::Section::Init(double f64SampleRateHz, double f64Q)
{
    const double f64K = std::tan(PI * SPLIT_HZ / f64SampleRateHz);
    f64Gain = 1.0 / (1.0 + f64K / f64Q + f64K * f64K);
    f64A1 = 2.0 * (f64K * f64K - 1.0) * f64Gain;
    f64A2 = (1.0 - f64K / f64Q + f64K * f64K) * f64Gain;
    f64S1 = 0.0;
    f64S2 = 0.0;
}

double CLevelMeter::Section::Process(double f64Sample)
{
    const double f64In = f64Gain * f64Sample;
    const double f64Out = f64In + f64S1;
    f64S1 = f64S2 - 2.0 * f64In - f64A1 * f64Out;
    f64S2 = f64In - f64A2 * f64Out;
    return f64Out;
}

void CLevelMeter::Init(double f64SampleRateHz, int iChannels)
{
    m_vecChannel.assign(static_cast<size_t>(iChannels), {});
    for (Channel& oChannel : m_vecChannel)
    {
        oChannel.oFirst.Init(f64SampleRateHz, 0.5 / std::cos(PI / 8.0));
        oChannel.oSecond.Init(f64SampleRateHz, 0.5 / std::cos(3.0 * PI / 8.0));
    }
    m_f64SquareSum = 0.0;
    m_f64SquareSumAbove = 0.0;
    m_u64Count = 0;
}

void CLevelMeter::Process(const float* pf32Frames, size_t uFrameCount)
{
    constexpr double UNHEARD = 1e-40; // keeps a decay in silence from getting too small for the processor to be quick
    for (size_t i = 0; i < uFrameCount; ++i)
        for (Channel& oChannel : m_vecChannel)
        {
            const float f32Sample = *pf32Frames++;
            const double f64Sample = std::isfinite(f32Sample) ? static_cast<double>(f32Sample) : 0.0;
            const double f64Above = oChannel.oSecond.Process(oChannel.oFirst.Process(f64Sample + UNHEARD) + UNHEARD);
            m_f64SquareSum += f64Sample * f64Sample;
            m_f64SquareSumAbove += f64Above * f64Above;
        }
    m_u64Count += uFrameCount * m_vecChannel.size();
}

double CLevelMeter::LevelDb() const
{
    return ToDb(m_f64SquareSum, m_u64Count);
}

double CLevelMeter::LevelAboveSplitDb() const
{
    return ToDb(m_f64SquareSumAbove, m_u64Count);
}
