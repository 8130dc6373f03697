// The report of a run as a table.
#include "host/report/report.h"
#include "host/report/traffic_rows.h"
#include "host/text_format.h"

#include <cmath>

namespace
{

void AddRow(std::string& strTable, const char* pLabel, const std::string& strText)
{
    strTable += Print("  %-16s ", pLabel) + strText + "\n";
}

std::string FormatLevel(double f64Value)
{
    return f64Value > 0 ? Print("%.2f dBFS", 20 * std::log10(f64Value)) : "silence";
}

void AddLevel(std::string& strTable, const char* pLabel, const CSampleLevel& oLevel)
{
    std::string strText = "peak " + FormatLevel(oLevel.Peak()) + ", RMS " + FormatLevel(oLevel.Rms());
    if (oLevel.NotFinite() > 0)
        strText += ", " + std::to_string(oLevel.NotFinite()) + " samples that are no number";
    AddRow(strTable, pLabel, strText);
}

double PeriodMilliseconds(const PlayResult& oResult)
{
    return 1000.0 * oResult.oOptions.iPeriodFrames / oResult.oOptions.iRate;
}

std::string FormatPaths(const PlayResult& oResult)
{
    std::string strText;
    for (size_t i = 0; i < PERIOD_PATH_COUNT; ++i)
    {
        if (oResult.iPaths[i] > 0)
            strText += (strText.empty() ? "" : ", ") + std::string(PERIOD_PATH_NAMES[i]) + " " +
                       std::to_string(oResult.iPaths[i]);
    }
    return strText;
}

// What the state at the end says of periods that came out as they went in, and why a bypass is on.
void AddWhy(std::string& strTable, const PlayResult& oResult)
{
    if (!oResult.bBypassAtEnd)
    {
        AddRow(strTable, "at the end",
               oResult.Path(PeriodPath::Same) > 0
                   ? "not bypassed: processing leaves these samples as they are, or a bypass "
                     "ended before"
                   : "not bypassed");
        return;
    }
    std::string strReasons;
    for (const std::string& strReason : oResult.vecReasons)
        strReasons += (strReasons.empty() ? "" : "; ") + strReason;
    AddRow(strTable, "at the end",
           "bypassed: " + (strReasons.empty() ? "by the module's own state, see its log" : strReasons));
}

void AddTimes(std::string& strTable, const PlayResult& oResult)
{
    const double f64Audio = static_cast<double>(oResult.i64Periods) * PeriodMilliseconds(oResult) / 1000;
    AddRow(strTable, "periods",
           Print("%lld of %.2f ms, %.2f s of audio in %.2f s (%.1f x real time)",
                 static_cast<long long>(oResult.i64Periods), PeriodMilliseconds(oResult), f64Audio, oResult.f64Seconds,
                 oResult.f64Seconds > 0 ? f64Audio / oResult.f64Seconds : 0.0));
    AddRow(strTable, "late periods", std::to_string(oResult.i64Late));
    AddRow(strTable, "time per period",
           Print("median %.1f us, 99th percentile %.1f us, worst %.1f us", oResult.oTimes.f64Median,
                 oResult.oTimes.f64Percentile99, oResult.oTimes.f64Worst));
}

void AddLog(std::string& strTable, const ModuleLog& oLog)
{
    if (oLog.strPath.empty())
    {
        AddRow(strTable, "module log", "none");
        return;
    }
    AddRow(strTable, "module log",
           Count(static_cast<size_t>(oLog.i64Errors), "error", "errors") + ", " +
               Count(static_cast<size_t>(oLog.i64Warnings), "warning", "warnings") +
               (oLog.i64StopLines > 0
                    ? ", " + Count(static_cast<size_t>(oLog.i64StopLines), "line of its stop", "lines of its stop")
                    : "") +
               ": " + oLog.strPath);
    for (const std::string& strMessage : oLog.vecMessages)
        AddRow(strTable, "", strMessage);
}

// A row for each channel, or one for speakers that are all of one kind.
void AddSpeakers(std::string& strTable, const SpeakerComparison& oSpeaker)
{
    AddRow(strTable, "speakers", "of set " + oSpeaker.strSet + " in " + oSpeaker.strTuning);
    std::string strCoils;
    std::string strCones;
    int iChannel = 0;
    for (const auto& [oLimits, oWithout, oBehind] : oSpeaker.Shown())
    {
        const std::string strChannel = oSpeaker.bAlike ? "" : Print("channel %d: ", ++iChannel);
        AddRow(strCoils, strCoils.empty() ? "hottest coil" : "",
               strChannel + Print("%.1f C unprotected, %.1f C protected; limit %.1f C%s", oWithout.f64HottestCoilC,
                                  oBehind.f64HottestCoilC, oLimits.f64CoilC,
                                  oBehind.f64HottestCoilC > oLimits.f64CoilC ? ", not held" : ""));
        AddRow(strCones, strCones.empty() ? "displacement" : "",
               strChannel + Print("%.3f mm unprotected, %.3f mm protected; limit %.3f mm (%.2f and %.2f times)%s",
                                  oWithout.f64PeakDisplacementMm, oBehind.f64PeakDisplacementMm,
                                  oLimits.f64DisplacementMm, oWithout.f64PeakDisplacementMm / oLimits.f64DisplacementMm,
                                  oBehind.f64PeakDisplacementMm / oLimits.f64DisplacementMm,
                                  oBehind.f64PeakDisplacementMm > oLimits.f64DisplacementMm ? ", not held" : ""));
    }
    strTable += strCoils + strCones;
    const SpeakerFigures& oFigures = oSpeaker.oFigures;
    std::string strLost = Print("%.2f dB, %.2f dB above 500 Hz", oFigures.LostDb(), oFigures.LostAboveDb());
    if (oSpeaker.oConstant)
        strLost +=
            Print("; the largest constant gain that holds both limits loses %.2f dB", oSpeaker.oConstant->LostDb());
    AddRow(strTable, "level lost", strLost);
}

} // namespace

std::string FormatTable(const PlayResult& oResult)
{
    const PlayOptions& oOptions = oResult.oOptions;
    std::string strTable = oOptions.strInput +
                           Print(": %d Hz, %d channel(s), %d frames a period, %s variant, %s%s%s\n", oOptions.iRate,
                                 oOptions.iChannels, oOptions.iPeriodFrames, oOptions.bInlineVariant ? "OMFX" : "EFX",
                                 oOptions.bRealtime ? "in real time" : "offline", oOptions.bInPlace ? ", in place" : "",
                                 oResult.bStopped ? "; stopped before the end" : "");
    AddTimes(strTable, oResult);
    AddRow(strTable, "path taken", FormatPaths(oResult));
    AddWhy(strTable, oResult);
    const int64_t i64LeadIn = oResult.oLeadIn.Periods();
    AddRow(strTable, "lead-in",
           i64LeadIn < 0 ? "no sound came out"
                         : Print("%lld periods (%.2f ms)", static_cast<long long>(i64LeadIn),
                                 static_cast<double>(i64LeadIn) * PeriodMilliseconds(oResult)));
    AddRow(strTable, "underflows",
           oOptions.bInPlace ? "can't be told in place" : std::to_string(oResult.Path(PeriodPath::Underflow)));
    AddLevel(strTable, "input", oResult.oInputLevel);
    AddLevel(strTable, "output", oResult.oOutputLevel);
    if (oResult.oSpeaker)
        AddSpeakers(strTable, *oResult.oSpeaker);
    if (!oOptions.strOutput.empty())
        AddRow(strTable, "written", oOptions.strOutput);
    for (const ReportRow& oRow : TrafficRows(oResult))
        AddRow(strTable, oRow.strLabel.c_str(), oRow.strText);
    AddLog(strTable, oResult.oLog);
    return strTable;
}
