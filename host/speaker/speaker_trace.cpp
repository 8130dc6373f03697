// Sums of half a millisecond, and rows of them.
#include "host/speaker/speaker_trace.h"

#include <algorithm>

namespace
{

constexpr int64_t BINS_PER_SECOND = 2000;
constexpr int64_t BINS_PER_ROW = BINS_PER_SECOND / CSpeakerTrace::ROWS_PER_SECOND;
constexpr int64_t DELAY_PERIODS = 4; // a lead-in of three, and the library's delay
constexpr int64_t SPARE = 2;         // begun ones at both ends

void Join(TraceBin& oBin, const TraceBin& oNext)
{
    oBin.f32SquareSum += oNext.f32SquareSum;
    for (size_t i = 0; i < oBin.oLooks.size(); ++i)
    {
        const float f32FurthestMm = std::max(oBin.oLooks[i].f32DisplacementMm, oNext.oLooks[i].f32DisplacementMm);
        oBin.oLooks[i] = oNext.oLooks[i];
        oBin.oLooks[i].f32DisplacementMm = f32FurthestMm;
    }
}

} // namespace

CSpeakerTrace::CSpeakerTrace(int iRate, int iPeriodFrames, int64_t i64BlockFrames)
    : m_iRate(iRate), m_i64LongestDelay(iRate + DELAY_PERIODS * iPeriodFrames)
{
    m_vecIn.resize(static_cast<size_t>(BinOf(m_i64LongestDelay + iPeriodFrames) + BINS_PER_ROW + SPARE));
    m_vecRows.reserve(static_cast<size_t>(BinOf(m_i64LongestDelay + i64BlockFrames) / BINS_PER_ROW + SPARE));
}

int64_t CSpeakerTrace::BinOf(int64_t i64Frame) const
{
    return i64Frame * BINS_PER_SECOND / m_iRate;
}

void CSpeakerTrace::AddIn(int64_t i64Frame, const TraceBin& oSeen)
{
    if (m_i64LastIn < 0)
        for (size_t i = 0; i < oSeen.oLooks.size(); ++i)
            m_oRest.oLooks[i] = {0, oSeen.oLooks[i].f32CoilC, oSeen.oLooks[i].f32MagnetC};
    if (m_i64FirstSoundIn < 0 && oSeen.f32SquareSum > 0)
        m_i64FirstSoundIn = i64Frame;
    const int64_t i64Bin = BinOf(i64Frame);
    TraceBin& oBin = m_vecIn[static_cast<size_t>(i64Bin) % m_vecIn.size()];
    if (i64Bin != m_i64LastIn)
        oBin = {};
    m_i64LastIn = i64Bin;
    Join(oBin, oSeen);
}

void CSpeakerTrace::AddOut(int64_t i64Frame, const TraceBin& oSeen, PeriodPath ePath)
{
    if (const int64_t i64Row = BinOf(i64Frame) / BINS_PER_ROW; i64Row != m_i64Row)
    {
        EndRow();
        m_i64Row = i64Row;
        m_oRow = {};
        m_oRow.ePath = ePath;
    }
    Join(m_oRow.oOut, oSeen);
    if (m_i64FirstSoundOut < 0 && oSeen.f32SquareSum > 0)
        m_i64FirstSoundOut = i64Frame;
    FindDelay(i64Frame);
}

void CSpeakerTrace::FindDelay(int64_t i64OutFrame)
{
    if (m_i64Delay >= 0 || m_i64FirstSoundIn < 0)
        return;
    if (m_i64FirstSoundOut >= 0)
        m_i64Delay = BinOf(std::max<int64_t>(0, m_i64FirstSoundOut - m_i64FirstSoundIn));
    else if (i64OutFrame - m_i64FirstSoundIn > m_i64LongestDelay)
        m_i64Delay = 0;
}

void CSpeakerTrace::EndRow()
{
    if (m_i64Row < 0)
        return;
    m_vecRows.push_back(m_oRow);
    Release();
}

// As long as no sound went in, the delay doesn't matter.
void CSpeakerTrace::Release()
{
    if (m_i64Delay < 0 && m_i64FirstSoundIn >= 0)
        return;
    for (; m_uReady < m_vecRows.size(); ++m_uReady, ++m_i64Released)
        AddInput(m_vecRows[m_uReady], m_i64Released * BINS_PER_ROW - std::max<int64_t>(0, m_i64Delay));
}

void CSpeakerTrace::AddInput(TraceRow& oRow, int64_t i64FirstBin) const
{
    const int64_t i64Sound = m_i64FirstSoundIn < 0 ? m_i64LastIn + 1 : BinOf(m_i64FirstSoundIn);
    for (int64_t i = i64FirstBin; i < i64FirstBin + BINS_PER_ROW && i <= m_i64LastIn; ++i)
        Join(oRow.oIn, i < i64Sound ? m_oRest : m_vecIn[static_cast<size_t>(i) % m_vecIn.size()]);
}

void CSpeakerTrace::Finish()
{
    EndRow();
    m_i64Row = -1;
    m_i64Delay = std::max<int64_t>(0, m_i64Delay);
    Release();
}

void CSpeakerTrace::TakeRows(std::vector<TraceRow>& vecRows)
{
    const auto itWaiting = m_vecRows.begin() + static_cast<std::ptrdiff_t>(m_uReady);
    vecRows.assign(m_vecRows.begin(), itWaiting);
    m_vecRows.erase(m_vecRows.begin(), itWaiting);
    m_uReady = 0;
}
