// The amplifier's reconstruction: the band-limited curve through the samples, read between them.
#pragma once

#include <cstddef>
#include <vector>

// A Kaiser-windowed sinc over 64 samples: flat to 0.45 of the sample rate, images 80 dB down from 0.55 of it. Curve and
// samples meet at every sample, and a constant stays a constant. One thread.
class CReconstruction
{
public:
    static constexpr size_t DELAY = 32; // samples from Push to the interval that is read

    // Every sample interval is read at iPhases + 1 evenly spaced points, both ends included. iPhases is even.
    void Init(int iPhases);
    void Reset();

    // Takes a sample and gives the curve over the interval between the samples DELAY and DELAY - 1 before it, in the
    // unit of the samples: iPhases + 1 values, valid until the next Push.
    const double* Push(double f64Sample);

private:
    static constexpr size_t PAIRS = DELAY; // of samples, one from each side of the interval
    static constexpr size_t LANES = 2;     // points that are computed side by side: what a register holds

    struct PairWeights
    {
        double f64Sum[LANES];        // times the sum of a pair's samples
        double f64Difference[LANES]; // times their difference, left less right
    };

    int m_iPhases = 0;
    std::vector<PairWeights> m_vecWeights; // PAIRS of them for each LANES points of the first half
    std::vector<double> m_vecCurve;        // iPhases + 1
    size_t m_uNewest = 0;
    double m_f64History[4 * PAIRS] = {}; // the last 64 samples, twice, so that they always lie in one piece
};
