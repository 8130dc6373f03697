// The report of a run as JSON.
#include "host/host_error.h"
#include "host/report/report.h"
#include "host/report/temperature_course.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>

namespace
{

using Json = nlohmann::ordered_json; // members in order of their writing

Json Milliseconds(double f64Seconds)
{
    return std::round(f64Seconds * 1000) / 1000;
}

// [[seconds, text], ...]
Json Series(const std::vector<TimedText>& vecTexts)
{
    Json oList = Json::array();
    for (const TimedText& oText : vecTexts)
        oList.push_back({Milliseconds(oText.f64Seconds), oText.strText});
    return oList;
}

// [[seconds, number], ...]
Json Series(const std::vector<TimedNumber>& vecTenths)
{
    Json oList = Json::array();
    for (const TimedNumber& oTenths : vecTenths)
        oList.push_back({Milliseconds(oTenths.f64Seconds), oTenths.iValue / 10.0});
    return oList;
}

Json Series(const std::vector<double>& vecSeconds)
{
    Json oList = Json::array();
    for (const double f64Seconds : vecSeconds)
        oList.push_back(Milliseconds(f64Seconds));
    return oList;
}

Json Level(const CSampleLevel& oLevel)
{
    return {{"peak", oLevel.Peak()}, {"rms", oLevel.Rms()}, {"not_finite", oLevel.NotFinite()}};
}

void AddOptions(Json& oJson, const PlayResult& oResult)
{
    const PlayOptions& oOptions = oResult.oOptions;
    oJson["input_file"] = oOptions.strInput;
    oJson["output_file"] = oOptions.strOutput;
    oJson["variant"] = oOptions.bInlineVariant ? "omfx" : "efx";
    oJson["rate_hz"] = oOptions.iRate;
    oJson["channels"] = oOptions.iChannels;
    oJson["period_frames"] = oOptions.iPeriodFrames;
    oJson["in_place"] = oOptions.bInPlace;
    oJson["realtime"] = oOptions.bRealtime;
    oJson["input_frames"] = oResult.i64InputFrames;
}

Json Paths(const PlayResult& oResult)
{
    return {{"processed", oResult.Path(PeriodPath::Processed)}, {"same_as_input", oResult.Path(PeriodPath::Same)},
            {"silent", oResult.Path(PeriodPath::Silent)},       {"quiet_input", oResult.Path(PeriodPath::Quiet)},
            {"underflow", oResult.Path(PeriodPath::Underflow)}, {"refused", oResult.Path(PeriodPath::Refused)}};
}

Json Side(const SpeakerSide& oSide)
{
    return {{"level_db", oSide.f64LevelDb}, {"level_above_500_hz_db", oSide.f64LevelAboveDb}};
}

Json Extremes(double f64CoilC, double f64DisplacementMm)
{
    return {{"coil_c", f64CoilC}, {"displacement_mm", f64DisplacementMm}};
}

Json Speakers(const SpeakerComparison& oSpeaker)
{
    const SpeakerFigures& oFigures = oSpeaker.oFigures;
    Json oChannels = Json::array();
    for (const auto& [oLimits, oWithout, oBehind] : oFigures.vecChannels)
        oChannels.push_back({{"limits", Extremes(oLimits.f64CoilC, oLimits.f64DisplacementMm)},
                             {"unprotected", Extremes(oWithout.f64HottestCoilC, oWithout.f64PeakDisplacementMm)},
                             {"protected", Extremes(oBehind.f64HottestCoilC, oBehind.f64PeakDisplacementMm)},
                             {"held", oBehind.Holds(oLimits)}});
    Json oJson = {
        {"tuning_file", oSpeaker.strTuning},
        {"set", oSpeaker.strSet},
        {"channels", oChannels},
        {"unprotected", Side(oFigures.oUnprotected)},
        {"protected", Side(oFigures.oProtected)},
        {"level_lost_db", oFigures.LostDb()},
        {"level_lost_above_500_hz_db", oFigures.LostAboveDb()},
    };
    if (oSpeaker.oConstant)
        oJson["constant_gain_loss_db"] = oSpeaker.oConstant->LostDb();
    return oJson;
}

void AddTraffic(Json& oJson, const PlayResult& oResult)
{
    oJson["devices"] = Json::object();
    for (const DeviceTraffic& oDevice : oResult.oTraffic.vecDevices)
        oJson["devices"][oDevice.strName] = Series(oDevice.vecEvents);
    const ControllerTraffic& oController = oResult.oTraffic.oController;
    Json oCourse = Json::array();
    for (const CoursePart& oPart : FoldCourse(oController.vecReports))
        oCourse.push_back(FormatCoursePart(oPart));
    Json oQueries = Json::object();
    for (const auto& [iSensor, vecSeconds] : oController.mapQueries)
        oQueries[std::to_string(iSensor)] = Series(vecSeconds);
    oJson["controller"] = {{"reports", Series(oController.vecReports)},
                           {"course", oCourse},
                           {"taken_back", Series(oController.vecCancels)},
                           {"queries", oQueries},
                           {"other", Series(oController.vecOther)}};
    oJson["parameter_sets"] = Series(oResult.oLog.vecSets);
    oJson["library_temperatures"] = Series(oResult.oLog.vecTemperatures);
}

} // namespace

std::string FormatJson(const PlayResult& oResult)
{
    Json oJson;
    AddOptions(oJson, oResult);
    oJson["periods"] = oResult.i64Periods;
    oJson["late_periods"] = oResult.i64Late;
    oJson["stopped"] = oResult.bStopped;
    oJson["settled"] = oResult.bSettled;
    oJson["seconds"] = oResult.f64Seconds;
    oJson["time_per_period_us"] = {{"median", oResult.oTimes.f64Median},
                                   {"percentile_99", oResult.oTimes.f64Percentile99},
                                   {"worst", oResult.oTimes.f64Worst}};
    oJson["path_taken"] = Paths(oResult);
    oJson["bypassed_at_end"] = oResult.bBypassAtEnd;
    oJson["bypass_reasons"] = oResult.vecReasons;
    oJson["lead_in_periods"] = oResult.oLeadIn.Periods();
    oJson["input"] = Level(oResult.oInputLevel);
    oJson["output"] = Level(oResult.oOutputLevel);
    if (oResult.oSpeaker)
        oJson["speakers"] = Speakers(*oResult.oSpeaker);
    AddTraffic(oJson, oResult);
    oJson["module_log"] = {{"path", oResult.oLog.strPath},
                           {"errors", oResult.oLog.i64Errors},
                           {"warnings", oResult.oLog.i64Warnings},
                           {"stop_lines", oResult.oLog.i64StopLines},
                           {"messages", oResult.oLog.vecMessages}};
    // A file's name needn't be valid UTF-8.
    return oJson.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
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
