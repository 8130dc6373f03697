// The periodic loop: one processing call per period, timed, judged and collected. But for changes of the registry it
// allocates nothing while it runs.
#pragma once

#include "host/playing/apo_stream.h"
#include "host/registry/registry_schedule.h"
#include "host/report/play_result.h"

#include <chrono>

class CProgress;

class CPeriodLoop
{
public:
    // Counts into oResult, whose options must be complete. Offline the machine's clock must stand still; the loop
    // moves it with the audio. i64Periods is what will come at most. Throws CHostError for a schedule that can't be
    // kept.
    // pWatch: the simulated speakers beside the stream, or null.
    CPeriodLoop(PlayResult& oResult, CApoStream& oStream, CProgress& oProgress, int64_t i64Periods,
                CSpeakerWatch* pWatch);
    CPeriodLoop(const CPeriodLoop&) = delete;
    CPeriodLoop& operator=(const CPeriodLoop&) = delete;
    ~CPeriodLoop();

    // Runs iPeriods periods of interleaved floats in pf32Block and puts their output in the same place; zeros where the
    // module gave none. Ends early on an interrupt, and when the module's threads don't come to rest. Gives the periods
    // done. Throws CHostError if the registry can't be changed.
    size_t Run(float* pf32Block, size_t iPeriods);

    // Asks once for a bypass, and sums up the times. After the last Run.
    void Finish();

private:
    using Clock = std::chrono::steady_clock;

    void WaitForPeriod();
    void Account(Clock::time_point tBegin, Clock::time_point tEnd);
    void ChangeRegistry();
    void WaitUntilIdle();
    void CheckStop();
    void Settle();
    void Collect(float* pf32Period);
    Clock::time_point StartOf(int64_t i64Period) const;

    PlayResult& m_oResult;
    CApoStream& m_oStream;
    CProgress& m_oProgress;
    CSpeakerWatch* const m_pWatch;
    const bool m_bRealtime;
    const size_t m_iPeriodLen; // floats
    CRegistrySchedule m_oSchedule;
    std::vector<uint32_t> m_vecNanoseconds;
    Clock::time_point m_tStart; // of the first period
    int64_t m_i64ClockRest = 0; // audio time not yet on the machine's clock, milliseconds times rate
    int64_t m_i64ZerosBeforeSound = 0;
};
