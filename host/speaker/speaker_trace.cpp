// Rows of a trace.
#include "host/speaker/speaker_trace.h"

#include "host/text_format.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr double FLOOR_DB = -120.0; // what silence is written as
constexpr double SOUND_DB = -60.0;  // below it a gain says nothing
constexpr const char* COLUMNS = "seconds,level_in_db,level_out_db,gain_reduction_db,coil_unprotected_c,coil_c,magnet_c,"
                                "displacement_unprotected_mm,displacement_mm,set,path\n";

std::string SetAt(const std::vector<TimedText>& vecSets, double f64Seconds)
{
    std::string strSet;
    for (const TimedText& oSet : vecSets)
        if (oSet.f64Seconds <= f64Seconds)
            strSet = oSet.strText;
    return strSet;
}

void Join(TraceBin& oBin, const TraceBin& oNext)
{
    oBin.f32SquareSum += oNext.f32SquareSum;
    oBin.f32DisplacementMm = std::max(oBin.f32DisplacementMm, oNext.f32DisplacementMm);
    oBin.f32CoilC = oNext.f32CoilC;
    oBin.f32MagnetC = oNext.f32MagnetC;
}

} // namespace

CSpeakerTrace::CSpeakerTrace(int iRate, int iChannels, int64_t i64Frames) : m_iRate(iRate), m_iChannels(iChannels)
{
    const auto uBins = static_cast<size_t>(i64Frames * BINS_PER_SECOND / iRate + 1);
    for (std::vector<TraceBin>& vecBins : m_vecBins)
        vecBins.resize(uBins);
    m_vecPaths.reserve(static_cast<size_t>(i64Frames));
}

void CSpeakerTrace::Add(StreamSide eSide, int64_t i64Frame, const TraceBin& oSeen)
{
    std::vector<TraceBin>& vecBins = m_vecBins[static_cast<size_t>(eSide)];
    TraceBin& oBin = vecBins[std::min(static_cast<size_t>(i64Frame * BINS_PER_SECOND / m_iRate), vecBins.size() - 1)];
    Join(oBin, oSeen);
    int64_t& i64FirstSound = m_i64FirstSound[static_cast<size_t>(eSide)];
    if (i64FirstSound < 0 && oSeen.f32SquareSum > 0)
        i64FirstSound = i64Frame;
}

TraceBin CSpeakerTrace::Row(StreamSide eSide, int64_t i64FirstBin) const
{
    const std::vector<TraceBin>& vecBins = m_vecBins[static_cast<size_t>(eSide)];
    TraceBin oRow;
    oRow.f32CoilC = vecBins.front().f32CoilC; // before the first input has come out
    const auto i64End = std::min<int64_t>(i64FirstBin + BINS_PER_ROW, static_cast<int64_t>(vecBins.size()));
    for (int64_t i = std::max<int64_t>(i64FirstBin, 0); i < i64End; ++i)
        Join(oRow, vecBins[static_cast<size_t>(i)]);
    return oRow;
}

double CSpeakerTrace::LevelDb(const TraceBin& oRow) const
{
    const double f64Samples = static_cast<double>(m_iRate) * m_iChannels * BINS_PER_ROW / BINS_PER_SECOND;
    return std::max(FLOOR_DB, 10 * std::log10(oRow.f32SquareSum / f64Samples + 1e-30));
}

std::string CSpeakerTrace::Format(int iPeriodFrames, const std::vector<TimedText>& vecSets) const
{
    std::string strText = COLUMNS;
    const auto [i64FirstIn, i64FirstOut] = m_i64FirstSound;
    const int64_t i64Delay = std::max<int64_t>(0, i64FirstOut - i64FirstIn) * BINS_PER_SECOND / m_iRate;
    const auto i64Played = static_cast<int64_t>(m_vecPaths.size()) * iPeriodFrames;
    for (int64_t i64Bin = 0; i64Bin * m_iRate / BINS_PER_SECOND < i64Played; i64Bin += BINS_PER_ROW)
    {
        const TraceBin oIn = Row(StreamSide::In, i64FirstOut < 0 ? i64Bin : i64Bin - i64Delay);
        const TraceBin oOut = Row(StreamSide::Out, i64Bin);
        const double f64Seconds = static_cast<double>(i64Bin) / BINS_PER_SECOND;
        const double f64InDb = LevelDb(oIn);
        const double f64OutDb = LevelDb(oOut);
        const double f64LostDb = f64InDb > SOUND_DB && f64OutDb > FLOOR_DB ? f64InDb - f64OutDb : 0.0;
        const auto uPeriod = static_cast<size_t>(i64Bin * m_iRate / BINS_PER_SECOND / iPeriodFrames);
        strText += Print("%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.2f,%.4f,%.4f,", f64Seconds, f64InDb, f64OutDb, f64LostDb,
                         oIn.f32CoilC, oOut.f32CoilC, oOut.f32MagnetC, oIn.f32DisplacementMm, oOut.f32DisplacementMm) +
                   SetAt(vecSets, f64Seconds) + "," + PERIOD_PATH_NAMES[static_cast<size_t>(m_vecPaths[uPeriod])] +
                   "\n";
    }
    return strText;
}
