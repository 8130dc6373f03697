// The level of an interleaved stream: all of it, and what lies above 500 Hz.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Root of the mean square over all channels and all time since Init; 0 dB is a mean square of 1. One thread.
class CLevelMeter
{
public:
    static constexpr double SPLIT_HZ = 500.0;

    void Init(double f64SampleRateHz, int iChannels);
    // A sample that isn't finite counts as 0.
    void Process(const float* pf32Frames, size_t uFrameCount);

    // At least -200 dB, so that silence has a level too.
    double LevelDb() const;
    double LevelAboveSplitDb() const;

private:
    // One second-order part of a fourth-order Butterworth high-pass, in the transposed direct form.
    struct Section
    {
        double f64Gain = 0.0; // of the numerator (1 - z^-1)^2
        double f64A1 = 0.0;
        double f64A2 = 0.0;
        double f64S1 = 0.0;
        double f64S2 = 0.0;

        void Init(double f64SampleRateHz, double f64Q);
        double Process(double f64Sample);
    };
    struct Channel
    {
        Section oFirst;
        Section oSecond;
    };

    std::vector<Channel> m_vecChannel;
    double m_f64SquareSum = 0.0;
    double m_f64SquareSumAbove = 0.0;
    uint64_t m_u64Count = 0; // samples of all channels
};
