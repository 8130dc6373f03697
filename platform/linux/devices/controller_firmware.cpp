// The declared controller's sensors and answers.
#include "devices/controller_firmware.h"

#include "time/filetime.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <mutex>

namespace
{
constexpr size_t OUTPUT_BYTES = 256;
constexpr BYTE REFUSED = 1; // the error byte for a sensor or command that isn't there
constexpr UINT64 COMMAND_READ = 0x0202;
constexpr UINT64 COMMAND_REPORT = 0x0F02;

double ClockSeconds()
{
    FILETIME stNow{};
    GetSystemTimeAsFileTime(&stNow);
    return static_cast<double>(TicksOf(stNow)) / TICKS_PER_SECOND;
}

double CelsiusAt(const std::vector<CSensorPoint>& vecCurve, double f64Seconds)
{
    const auto itNext =
        std::find_if(vecCurve.begin(), vecCurve.end(),
                     [f64Seconds](const CSensorPoint& oPoint) { return oPoint.f64Seconds > f64Seconds; });
    if (itNext == vecCurve.begin())
        return vecCurve.front().f64Celsius;
    if (itNext == vecCurve.end())
        return vecCurve.back().f64Celsius;
    const CSensorPoint& oFrom = *std::prev(itNext);
    const double f64Share = (f64Seconds - oFrom.f64Seconds) / (itNext->f64Seconds - oFrom.f64Seconds);
    return oFrom.f64Celsius + f64Share * (itNext->f64Celsius - oFrom.f64Celsius);
}

// What somebody outside the machine knows: simulated temperatures, by name.
std::mutex g_oFollowedMutex;
std::map<std::string, double> g_mapFollowed;

double CelsiusOf(const CSensor& oSensor, double f64Seconds)
{
    const std::lock_guard<std::mutex> oLock(g_oFollowedMutex);
    const auto itFollowed = g_mapFollowed.find(oSensor.strFollows);
    return itFollowed != g_mapFollowed.end() ? itFollowed->second : CelsiusAt(oSensor.vecCurve, f64Seconds);
}

std::vector<BYTE> Refusal()
{
    std::vector<BYTE> vecAnswer(OUTPUT_BYTES);
    vecAnswer[0] = REFUSED;
    return vecAnswer;
}
} // namespace

std::vector<BYTE> machine::TemperatureAnswer(int iTenths)
{
    std::vector<BYTE> vecAnswer(OUTPUT_BYTES);
    const int iMagnitude = std::min(std::abs(iTenths), 2559);
    vecAnswer[1] = static_cast<BYTE>(iTenths < 0);
    vecAnswer[2] = static_cast<BYTE>(iMagnitude / 10);
    vecAnswer[3] = static_cast<BYTE>(iMagnitude % 10);
    return vecAnswer;
}

void machine::SetFollowed(const std::string& strWhat, double f64Celsius)
{
    const std::lock_guard<std::mutex> oLock(g_oFollowedMutex);
    g_mapFollowed[strWhat] = f64Celsius;
}

std::function<std::vector<BYTE>(UINT64)> ControllerFirmware(std::vector<CSensor> vecSensors)
{
    return [vecSensors = std::move(vecSensors), f64Begin = ClockSeconds()](UINT64 u64Word)
    {
        const UINT64 u64Command = u64Word & 0xFFFF;
        if (u64Command == COMMAND_REPORT)
            return std::vector<BYTE>(OUTPUT_BYTES);
        const int iId = static_cast<int>((u64Word >> 16) & 0xFF);
        const auto itSensor = std::find_if(vecSensors.begin(), vecSensors.end(),
                                           [iId](const CSensor& oSensor) { return oSensor.iId == iId; });
        if (u64Command != COMMAND_READ || itSensor == vecSensors.end())
            return Refusal();
        const double f64Celsius = CelsiusOf(*itSensor, ClockSeconds() - f64Begin);
        return machine::TemperatureAnswer(static_cast<int>(std::lround(f64Celsius * 10)));
    };
}
