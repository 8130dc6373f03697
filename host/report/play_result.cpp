// Levels, lead-in and times of one run.
#include "host/report/play_result.h"

#include <algorithm>
#include <cmath>

void CSampleLevel::Add(const float* pf32Data, size_t iDataLen)
{
    for (size_t i = 0; i < iDataLen; ++i)
    {
        const double f64Value = std::fabs(static_cast<double>(pf32Data[i]));
        if (!std::isfinite(f64Value))
        {
            ++m_i64NotFinite;
            continue;
        }
        m_f64Peak = std::max(m_f64Peak, f64Value);
        m_f64SquareSum += f64Value * f64Value;
        ++m_i64Count;
    }
}

double CSampleLevel::Rms() const
{
    return m_i64Count > 0 ? std::sqrt(m_f64SquareSum / static_cast<double>(m_i64Count)) : 0;
}

void CLeadIn::Add(bool bSoundIn, bool bSoundOut)
{
    if (bSoundIn && m_i64FirstIn < 0)
        m_i64FirstIn = m_i64Period;
    if (bSoundOut && m_i64FirstIn >= 0 && m_i64FirstOut < 0)
        m_i64FirstOut = m_i64Period;
    ++m_i64Period;
}

int64_t CLeadIn::Periods() const
{
    return IsOver() ? m_i64FirstOut - m_i64FirstIn : -1;
}

PeriodTimes SummarizeTimes(std::vector<uint32_t>& vecNanoseconds)
{
    if (vecNanoseconds.empty())
        return {};
    const auto At = [&](double f64Share)
    {
        const size_t iIndex = static_cast<size_t>(f64Share * static_cast<double>(vecNanoseconds.size() - 1) + 0.5);
        const auto itAt = vecNanoseconds.begin() + static_cast<std::ptrdiff_t>(iIndex);
        std::nth_element(vecNanoseconds.begin(), itAt, vecNanoseconds.end());
        return static_cast<double>(*itAt) / 1000;
    };
    return {At(0.5), At(0.99), At(1.0)};
}
