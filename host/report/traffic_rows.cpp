// Rows on devices, reports, queries, parameter sets and temperatures.
#include "host/report/traffic_rows.h"

#include "host/report/temperature_course.h"
#include "host/text_format.h"

#include <algorithm>

namespace
{

constexpr double CLOCK_STEP = 0.001; // seconds; the clock lags behind the audio by less
constexpr size_t MOMENTS_SHOWN = 12; // of one row; what lies between the first and the last of them is counted

// Collects what happened, by its moment: "before" the stream, "after" it, or one of its seconds.
class CMoments
{
public:
    explicit CMoments(double f64Audio) : m_f64Audio(f64Audio) {}

    void Add(double f64Seconds, const std::string& strWhat)
    {
        const std::string strMoment = f64Seconds < 0                          ? "before"
                                      : f64Seconds >= m_f64Audio - CLOCK_STEP ? "after"
                                                                              : Print("%.1f s", f64Seconds);
        if (!m_vecMoments.empty() && strMoment == m_strLast)
            m_vecMoments.back() += ", " + strWhat;
        else
            m_vecMoments.push_back(strMoment + ": " + strWhat);
        m_strLast = strMoment;
    }

    std::string Text() const
    {
        std::string strText;
        const size_t iHidden = m_vecMoments.size() > MOMENTS_SHOWN ? m_vecMoments.size() - MOMENTS_SHOWN : 0;
        for (size_t i = 0; i < m_vecMoments.size(); ++i)
        {
            const bool bHidden = i >= MOMENTS_SHOWN / 2 && i < MOMENTS_SHOWN / 2 + iHidden;
            if (!bHidden)
                strText += (i == 0 ? "" : "; ") + m_vecMoments[i];
            else if (i == MOMENTS_SHOWN / 2)
                strText += Print("; %zu more", iHidden);
        }
        return strText;
    }

private:
    const double m_f64Audio;
    std::vector<std::string> m_vecMoments;
    std::string m_strLast;
};

std::string Pace(double f64First, double f64Last, size_t iCount)
{
    return iCount < 2 ? "" : Print(", every %.1f s", (f64Last - f64First) / static_cast<double>(iCount - 1));
}

// A row that counts the values, and one for each part of their course.
void AddCourse(std::vector<ReportRow>& vecRows, const char* pLabel, const char* pOne, const char* pMany,
               const std::vector<TimedNumber>& vecValues)
{
    if (vecValues.empty())
        return;
    vecRows.push_back({pLabel, Count(vecValues.size(), pOne, pMany) +
                                   Pace(vecValues.front().f64Seconds, vecValues.back().f64Seconds, vecValues.size())});
    for (const CoursePart& oPart : FoldCourse(vecValues))
        vecRows.push_back({"", Print("  %5.1f to %5.1f s  ", oPart.f64From, oPart.f64To) + FormatCoursePart(oPart) +
                                   Print(" (%zu)", oPart.iCount)});
}

// Queries of one moment are one round.
void AddQueries(std::vector<ReportRow>& vecRows, int iSensor, std::vector<double> vecSeconds)
{
    const size_t iQueries = vecSeconds.size();
    vecSeconds.erase(std::unique(vecSeconds.begin(), vecSeconds.end()), vecSeconds.end());
    const size_t iRounds = vecSeconds.size();
    vecRows.push_back(
        {"", Print("sensor %d: ", iSensor) + Count(iQueries, "query", "queries") +
                 (iQueries > iRounds && iQueries % iRounds == 0 ? Print(", %zu at a time", iQueries / iRounds) : "") +
                 Pace(vecSeconds.front(), vecSeconds.back(), iRounds)});
}

void AddController(std::vector<ReportRow>& vecRows, const ControllerTraffic& oController, double f64Audio)
{
    if (oController.IsEmpty())
        return;
    const size_t iFirst = vecRows.size();
    AddCourse(vecRows, "", "report of a temperature", "reports of a temperature", oController.vecReports);
    CMoments oOther(f64Audio);
    for (const double f64Seconds : oController.vecCancels)
        oOther.Add(f64Seconds, "report taken back");
    for (const TimedText& oWord : oController.vecOther)
        oOther.Add(oWord.f64Seconds, oWord.strText);
    if (!oOther.Text().empty())
        vecRows.push_back({"", oOther.Text()});
    for (const auto& [iSensor, vecSeconds] : oController.mapQueries)
        AddQueries(vecRows, iSensor, vecSeconds);
    vecRows[iFirst].strLabel = "controller";
}

} // namespace

std::vector<ReportRow> TrafficRows(const PlayResult& oResult)
{
    const double f64Audio =
        static_cast<double>(oResult.i64Periods) * oResult.oOptions.iPeriodFrames / oResult.oOptions.iRate;
    std::vector<ReportRow> vecRows;
    for (const DeviceTraffic& oDevice : oResult.oTraffic.vecDevices)
    {
        CMoments oEvents(f64Audio);
        for (const TimedText& oEvent : oDevice.vecEvents)
            oEvents.Add(oEvent.f64Seconds, oEvent.strText);
        vecRows.push_back({oDevice.strName, oEvents.Text()});
    }
    AddController(vecRows, oResult.oTraffic.oController, f64Audio);
    if (!oResult.oLog.vecSets.empty())
    {
        CMoments oSets(f64Audio);
        for (const TimedText& oSet : oResult.oLog.vecSets)
            oSets.Add(oSet.f64Seconds, oSet.strText);
        vecRows.push_back({"parameter sets", oSets.Text()});
    }
    AddCourse(vecRows, "to the library", "temperature", "temperatures", oResult.oLog.vecTemperatures);
    return vecRows;
}
