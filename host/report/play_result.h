// What one `apohost play` saw: counted during the run, finished after it, shown as a table or as JSON.
#pragma once

#include "host/machine/device_traffic.h"
#include "host/play_options.h"
#include "host/report/period_evidence.h"
#include "host/speaker/speaker_watch.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// Peak and mean square of the samples that passed; samples that are no number are counted apart.
class CSampleLevel
{
public:
    void Add(const float* pf32Data, size_t iDataLen);
    double Peak() const { return m_f64Peak; }
    double Rms() const;
    int64_t NotFinite() const { return m_i64NotFinite; }

private:
    double m_f64Peak = 0;
    double m_f64SquareSum = 0;
    int64_t m_i64Count = 0;
    int64_t m_i64NotFinite = 0;
};

// Periods from the first with sound on the way in to the first with sound on the way out.
class CLeadIn
{
public:
    // Once per period, in order.
    void Add(bool bSoundIn, bool bSoundOut);
    // -1: no sound came out.
    int64_t Periods() const;
    bool IsOver() const { return m_i64FirstOut >= 0; }

private:
    int64_t m_i64Period = 0;
    int64_t m_i64FirstIn = -1;
    int64_t m_i64FirstOut = -1;
};

struct PeriodTimes
{
    double f64Median = 0; // microseconds
    double f64Percentile99 = 0;
    double f64Worst = 0;
};

// vecNanoseconds loses its order.
PeriodTimes SummarizeTimes(std::vector<uint32_t>& vecNanoseconds);

// The module's own log of this run, where it wrote one.
struct ModuleLog
{
    std::string strPath; // empty: none was written
    int64_t i64Errors = 0;
    int64_t i64Warnings = 0;
    int64_t i64StopLines = 0;             // errors in form, that every stop leaves
    std::vector<std::string> vecMessages; // the first different ones
    // What the library was given, as far as the log's level tells it.
    std::vector<TimedText> vecSets;           // keys of parameter sets, from level 3 on
    std::vector<TimedNumber> vecTemperatures; // tenths of a degree, from level 2 on
};

struct PlayResult
{
    PlayOptions oOptions; // rate, channels and period filled in
    int64_t i64InputFrames = 0;
    int64_t i64Periods = 0;
    int64_t i64Late = 0;
    bool bStopped = false; // before the end: interrupted by the person, or not settled
    bool bSettled = true;  // offline: the module's threads came to rest after every period
    double f64Seconds = 0; // the run took
    PeriodTimes oTimes;
    CStreamTime oStreamTime;
    std::array<int64_t, PERIOD_PATH_COUNT> iPaths{};
    bool bBypassAtEnd = false;
    std::vector<std::string> vecReasons; // why the module bypasses, as far as the host sees
    CLeadIn oLeadIn;
    CSampleLevel oInputLevel;
    CSampleLevel oOutputLevel;
    MachineTraffic oTraffic;
    ModuleLog oLog;
    std::optional<SpeakerComparison> oSpeaker;

    int64_t& Path(PeriodPath ePath) { return iPaths[static_cast<size_t>(ePath)]; }
    int64_t Path(PeriodPath ePath) const { return iPaths[static_cast<size_t>(ePath)]; }
};
