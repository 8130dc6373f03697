// The report of a run as JSON.
#include "host/host_error.h"
#include "host/report.h"
#include "host/temperature_course.h"
#include "host/text_format.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>

namespace
{

// Writes one object after the other, members in order of the calls.
class CJsonWriter
{
public:
    void Open(const char* pKey) { Key(pKey) += "{", m_bFirst = true, ++m_iDepth; }
    void Close()
    {
        --m_iDepth;
        m_strText += "\n" + Indent() + "}";
        m_bFirst = false;
    }
    void Text(const char* pKey, const std::string& strValue) { Key(pKey) += Quote(strValue); }
    void Number(const char* pKey, int64_t i64Value) { Key(pKey) += std::to_string(i64Value); }
    void Flag(const char* pKey, bool bValue) { Key(pKey) += bValue ? "true" : "false"; }
    void Number(const char* pKey, double f64Value)
    {
        char strNumber[40];
        std::snprintf(strNumber, sizeof(strNumber), "%.9g", f64Value);
        Key(pKey) += std::isfinite(f64Value) ? strNumber : "null";
    }
    void List(const char* pKey, const std::vector<std::string>& vecTexts)
    {
        std::string strList;
        for (const std::string& strText : vecTexts)
            strList += (strList.empty() ? "" : ", ") + Quote(strText);
        Key(pKey) += "[" + strList + "]";
    }
    // [[seconds, text or number], ...]
    void Series(const char* pKey, const std::vector<TimedText>& vecTexts)
    {
        std::string strList;
        for (const TimedText& oText : vecTexts)
            strList += Print("%s[%.3f, ", strList.empty() ? "" : ", ", oText.f64Seconds) + Quote(oText.strText) + "]";
        Key(pKey) += "[" + strList + "]";
    }
    void Series(const char* pKey, const std::vector<TimedNumber>& vecTenths)
    {
        std::string strList;
        for (const TimedNumber& oTenths : vecTenths)
            strList += Print("%s[%.3f, %.1f]", strList.empty() ? "" : ", ", oTenths.f64Seconds, oTenths.iValue / 10.0);
        Key(pKey) += "[" + strList + "]";
    }
    void Series(const char* pKey, const std::vector<double>& vecSeconds)
    {
        std::string strList;
        for (const double f64Seconds : vecSeconds)
            strList += Print("%s%.3f", strList.empty() ? "" : ", ", f64Seconds);
        Key(pKey) += "[" + strList + "]";
    }
    const std::string& Done() { return m_strText += "\n"; }

private:
    std::string Indent() const { return std::string(2 * m_iDepth, ' '); }

    std::string& Key(const char* pKey)
    {
        if (m_iDepth > 0)
            m_strText += (m_bFirst ? "\n" : ",\n") + Indent() + Quote(pKey) + ": ";
        m_bFirst = false;
        return m_strText;
    }

    static std::string Quote(const std::string& strValue)
    {
        std::string strQuoted = "\"";
        for (const char cValue : strValue)
        {
            char strEscape[8];
            if (static_cast<unsigned char>(cValue) < 0x20)
            {
                std::snprintf(strEscape, sizeof(strEscape), "\\u%04x", static_cast<unsigned>(cValue));
                strQuoted += strEscape;
                continue;
            }
            if (cValue == '"' || cValue == '\\')
                strQuoted += '\\';
            strQuoted += cValue;
        }
        return strQuoted + "\"";
    }

    std::string m_strText;
    size_t m_iDepth = 0;
    bool m_bFirst = true;
};

void WriteLevel(CJsonWriter& oJson, const char* pKey, const CLevelMeter& oLevel)
{
    oJson.Open(pKey);
    oJson.Number("peak", oLevel.Peak());
    oJson.Number("rms", oLevel.Rms());
    oJson.Number("not_finite", oLevel.NotFinite());
    oJson.Close();
}

void WriteOptions(CJsonWriter& oJson, const PlayResult& oResult)
{
    const PlayOptions& oOptions = oResult.oOptions;
    oJson.Text("input_file", oOptions.strInput);
    oJson.Text("output_file", oOptions.strOutput);
    oJson.Text("variant", oOptions.bInlineVariant ? "omfx" : "efx");
    oJson.Number("rate_hz", static_cast<int64_t>(oOptions.iRate));
    oJson.Number("channels", static_cast<int64_t>(oOptions.iChannels));
    oJson.Number("period_frames", static_cast<int64_t>(oOptions.iPeriodFrames));
    oJson.Flag("in_place", oOptions.bInPlace);
    oJson.Flag("realtime", oOptions.bRealtime);
    oJson.Number("input_frames", oResult.i64InputFrames);
}

void WritePaths(CJsonWriter& oJson, const PlayResult& oResult)
{
    oJson.Open("path_taken");
    oJson.Number("processed", oResult.Path(PeriodPath::Processed));
    oJson.Number("same_as_input", oResult.Path(PeriodPath::Same));
    oJson.Number("silent", oResult.Path(PeriodPath::Silent));
    oJson.Number("quiet_input", oResult.Path(PeriodPath::Quiet));
    oJson.Number("underflow", oResult.Path(PeriodPath::Underflow));
    oJson.Number("refused", oResult.Path(PeriodPath::Refused));
    oJson.Close();
}

void WriteTraffic(CJsonWriter& oJson, const PlayResult& oResult)
{
    oJson.Open("devices");
    for (const DeviceTraffic& oDevice : oResult.oTraffic.vecDevices)
        oJson.Series(oDevice.strName.c_str(), oDevice.vecEvents);
    oJson.Close();
    const ControllerTraffic& oController = oResult.oTraffic.oController;
    oJson.Open("controller");
    oJson.Series("reports", oController.vecReports);
    std::vector<std::string> vecCourse;
    for (const CoursePart& oPart : FoldCourse(oController.vecReports))
        vecCourse.push_back(FormatCoursePart(oPart));
    oJson.List("course", vecCourse);
    oJson.Series("taken_back", oController.vecCancels);
    oJson.Open("queries");
    for (const auto& [iSensor, vecSeconds] : oController.mapQueries)
        oJson.Series(std::to_string(iSensor).c_str(), vecSeconds);
    oJson.Close();
    oJson.Series("other", oController.vecOther);
    oJson.Close();
    oJson.Series("parameter_sets", oResult.oLog.vecSets);
    oJson.Series("library_temperatures", oResult.oLog.vecTemperatures);
}

} // namespace

std::string FormatJson(const PlayResult& oResult)
{
    CJsonWriter oJson;
    oJson.Open("");
    WriteOptions(oJson, oResult);
    oJson.Number("periods", oResult.i64Periods);
    oJson.Number("late_periods", oResult.i64Late);
    oJson.Flag("stopped", oResult.bStopped);
    oJson.Flag("settled", oResult.bSettled);
    oJson.Number("seconds", oResult.f64Seconds);
    oJson.Open("time_per_period_us");
    oJson.Number("median", oResult.oTimes.f64Median);
    oJson.Number("percentile_99", oResult.oTimes.f64Percentile99);
    oJson.Number("worst", oResult.oTimes.f64Worst);
    oJson.Close();
    WritePaths(oJson, oResult);
    oJson.Flag("bypassed_at_end", oResult.bBypassAtEnd);
    oJson.List("bypass_reasons", oResult.vecReasons);
    oJson.Number("lead_in_periods", oResult.oLeadIn.Periods());
    WriteLevel(oJson, "input", oResult.oInputLevel);
    WriteLevel(oJson, "output", oResult.oOutputLevel);
    WriteTraffic(oJson, oResult);
    oJson.Open("module_log");
    oJson.Text("path", oResult.oLog.strPath);
    oJson.Number("errors", oResult.oLog.i64Errors);
    oJson.Number("warnings", oResult.oLog.i64Warnings);
    oJson.Number("stop_lines", oResult.oLog.i64StopLines);
    oJson.List("messages", oResult.oLog.vecMessages);
    oJson.Close();
    oJson.Close();
    return oJson.Done();
}

void WriteReport(const std::string& strPath, const PlayResult& oResult)
{
    errno = 0;
    std::ofstream oFile(strPath);
    oFile << FormatJson(oResult);
    oFile.close();
    if (!oFile)
        throw CHostError(strPath + ": the report could not be written: " + std::strerror(errno));
}
