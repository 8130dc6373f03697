// The weights of the windowed sinc, and the curve of one interval. Points t and 1 - t have mirrored weights: from sums
// and differences of the mirrored samples both come at once, for half the multiplications.
#include "speaker/reconstruction.h"

#include <algorithm>
#include <cmath>

namespace
{
constexpr double PI = 3.14159265358979323846;
constexpr double KAISER_BETA = 7.86; // 80 dB

// Modified Bessel function of the first kind, order 0, by its power series.
double BesselI0(double f64X)
{
    double f64Term = 1.0;
    double f64Sum = 1.0;
    for (int k = 1; f64Term > 1e-17 * f64Sum; ++k)
    {
        f64Term *= (f64X / (2.0 * k)) * (f64X / (2.0 * k));
        f64Sum += f64Term;
    }
    return f64Sum;
}

// The weight of a sample at a distance of f64Samples, of a window that ends at f64Reach.
double WindowedSinc(double f64Samples, double f64Reach)
{
    const double f64Place = f64Samples / f64Reach;
    const double f64Window = BesselI0(KAISER_BETA * std::sqrt(1.0 - f64Place * f64Place)) / BesselI0(KAISER_BETA);
    return f64Window * std::sin(PI * f64Samples) / (PI * f64Samples);
}
} // namespace

void CReconstruction::Init(int iPhases)
{
    m_iPhases = iPhases;
    m_vecCurve.assign(static_cast<size_t>(iPhases) + 1, 0.0);
    const size_t uPoints = static_cast<size_t>(iPhases / 2);
    m_vecWeights.assign((uPoints + LANES - 1) / LANES * PAIRS, PairWeights{});
    for (size_t p = 0; p < uPoints; ++p)
    {
        const double f64Point = static_cast<double>(p + 1) / iPhases; // 0 to 0.5 of the interval
        double f64Left[PAIRS];
        double f64Right[PAIRS];
        double f64Sum = 0.0;
        for (size_t j = 0; j < PAIRS; ++j)
        {
            f64Left[j] = WindowedSinc(static_cast<double>(j) + f64Point, PAIRS);
            f64Right[j] = WindowedSinc(static_cast<double>(j + 1) - f64Point, PAIRS);
            f64Sum += f64Left[j] + f64Right[j];
        }
        for (size_t j = 0; j < PAIRS; ++j)
        {
            PairWeights& oWeights = m_vecWeights[p / LANES * PAIRS + j];
            oWeights.f64Sum[p % LANES] = 0.5 * (f64Left[j] + f64Right[j]) / f64Sum;
            oWeights.f64Difference[p % LANES] = 0.5 * (f64Left[j] - f64Right[j]) / f64Sum;
        }
    }
    Reset();
}

void CReconstruction::Reset()
{
    m_uNewest = 0;
    std::fill(std::begin(m_f64History), std::end(m_f64History), 0.0);
    std::fill(m_vecCurve.begin(), m_vecCurve.end(), 0.0);
}

const double* CReconstruction::Push(double f64Sample)
{
    constexpr size_t LEN = 2 * PAIRS;
    m_uNewest = (m_uNewest + 1) % LEN;
    m_f64History[m_uNewest] = m_f64History[m_uNewest + LEN] = f64Sample;
    const double* const pLeft = &m_f64History[m_uNewest + LEN - PAIRS]; // going back from here
    const double* const pRight = pLeft + 1;                             // going on from here

    double f64PairSum[PAIRS];
    double f64PairDifference[PAIRS];
    for (size_t j = 0; j < PAIRS; ++j)
    {
        const double f64Left = *(pLeft - j);
        f64PairSum[j] = f64Left + pRight[j];
        f64PairDifference[j] = f64Left - pRight[j];
    }

    const size_t uPhases = static_cast<size_t>(m_iPhases);
    m_vecCurve[0] = pLeft[0];
    m_vecCurve[uPhases] = pRight[0];
    const PairWeights* pWeights = m_vecWeights.data();
    for (size_t p = 0; p < uPhases / 2; p += LANES)
    {
        double f64Even[LANES] = {};
        double f64Odd[LANES] = {};
        for (size_t j = 0; j < PAIRS; ++j, ++pWeights)
            for (size_t l = 0; l < LANES; ++l)
            {
                f64Even[l] += pWeights->f64Sum[l] * f64PairSum[j];
                f64Odd[l] += pWeights->f64Difference[l] * f64PairDifference[j];
            }
        for (size_t l = 0; l < LANES && p + l < uPhases / 2; ++l)
        {
            m_vecCurve[p + l + 1] = f64Even[l] + f64Odd[l];
            m_vecCurve[uPhases - p - l - 1] = f64Even[l] - f64Odd[l];
        }
    }
    return m_vecCurve.data();
}
