// Trace rows as text.
#include "host/speaker/trace_file.h"

#include "host/host_error.h"
#include "host/text_format.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace
{

constexpr double FLOOR_DB = -120.0; // what silence is written as
constexpr double SOUND_DB = -60.0;  // below it a gain says nothing
constexpr const char* LOOK_COLUMNS[] = {"coil_unprotected_c", "coil_c", "magnet_c", "displacement_unprotected_mm",
                                        "displacement_mm"};

} // namespace

CTraceFile::CTraceFile(const std::string& strPath, int iRate, int iChannels, int iLooks)
    : m_strPath(strPath),
      m_strPart(strPath + ".part"),
      m_f64RowSamples(static_cast<double>(iRate) * iChannels / CSpeakerTrace::ROWS_PER_SECOND),
      m_iLooks(iLooks),
      m_pPart(std::fopen(m_strPart.c_str(), "w+b"), std::fclose)
{
    if (m_pPart == nullptr)
        Fail();
}

CTraceFile::~CTraceFile()
{
    m_pPart.reset();
    std::error_code oError;
    std::filesystem::remove(m_strPart, oError);
}

void CTraceFile::Fail() const
{
    throw CHostError(m_strPath + ": the trace could not be written: " + std::strerror(errno));
}

void CTraceFile::Write(const std::vector<TraceRow>& vecRows)
{
    if (std::fwrite(vecRows.data(), sizeof(TraceRow), vecRows.size(), m_pPart.get()) != vecRows.size())
        Fail();
}

void CTraceFile::Finish(const std::vector<TimedText>& vecSets)
{
    if (std::fflush(m_pPart.get()) != 0 || std::fseek(m_pPart.get(), 0, SEEK_SET) != 0)
        Fail();
    errno = 0;
    std::ofstream oFile(m_strPath, std::ios::binary);
    oFile << FormatHead();
    auto itNextSet = vecSets.begin();
    std::string strSet;
    TraceRow oRow;
    for (int64_t i = 0; std::fread(&oRow, sizeof(oRow), 1, m_pPart.get()) == 1; ++i)
    {
        const double f64Seconds = static_cast<double>(i) / CSpeakerTrace::ROWS_PER_SECOND;
        for (; itNextSet != vecSets.end() && itNextSet->f64Seconds <= f64Seconds; ++itNextSet)
            strSet = itNextSet->strText;
        oFile << FormatRow(oRow, f64Seconds) << strSet << ',' << PERIOD_PATH_NAMES[static_cast<size_t>(oRow.ePath)]
              << '\n';
    }
    oFile.close();
    if (!oFile || std::ferror(m_pPart.get()) != 0)
        Fail();
}

std::string CTraceFile::FormatHead() const
{
    std::string strHead = "seconds,level_in_db,level_out_db,gain_reduction_db,";
    for (int i = 0; i < m_iLooks; ++i)
        for (const char* pColumn : LOOK_COLUMNS)
            strHead += (m_iLooks > 1 ? Print("channel_%d_", i + 1) : "") + pColumn + ",";
    return strHead + "set,path\n";
}

std::string CTraceFile::FormatRow(const TraceRow& oRow, double f64Seconds) const
{
    const double f64InDb = LevelDb(oRow.oIn);
    const double f64OutDb = LevelDb(oRow.oOut);
    const double f64LostDb = f64InDb > SOUND_DB && f64OutDb > FLOOR_DB ? f64InDb - f64OutDb : 0.0;
    std::string strRow = Print("%.2f,%.2f,%.2f,%.2f,", f64Seconds, f64InDb, f64OutDb, f64LostDb);
    for (size_t i = 0; i < static_cast<size_t>(m_iLooks); ++i)
    {
        const SpeakerLook& oIn = oRow.oIn.oLooks[i];
        const SpeakerLook& oOut = oRow.oOut.oLooks[i];
        strRow += Print("%.2f,%.2f,%.2f,%.4f,%.4f,", oIn.f32CoilC, oOut.f32CoilC, oOut.f32MagnetC,
                        oIn.f32DisplacementMm, oOut.f32DisplacementMm);
    }
    return strRow;
}

double CTraceFile::LevelDb(const TraceBin& oBin) const
{
    return std::max(FLOOR_DB, 10 * std::log10(oBin.f32SquareSum / m_f64RowSamples + 1e-30));
}
