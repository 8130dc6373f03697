// What the engine's own operations cost inside a processing call, which the calls through COM don't show one by one.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "audioapi/audio_api_monitor.h"
#include "bench/bench_machine.h"
#include "host/report/play_result.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr double SWITCH_LIMIT_MICROSECONDS = 50;

// A volume change that crosses a band with each call: the key, the set and the library's taking it over.
void BenchParameterSwitch(benchmark::State& oState)
{
    CAudioStatus& oStatus = CAudioMonitor::Instance()->StatusRecord();
    CKelvanePostEngine oEngine;
    if (oEngine.InitAlgorithmParameter() != 0)
    {
        oState.SkipWithError("the engine doesn't start");
        return;
    }
    std::vector<uint32_t> vecNanoseconds;
    vecNanoseconds.reserve(oState.max_iterations);
    const char* pOldID = oEngine.ParamID();
    for (auto _ : oState)
    {
        oStatus.m_iSpeakerVolume = oStatus.m_iSpeakerVolume == 10 ? 90 : 10;
        const Clock::time_point tBegin = Clock::now();
        oEngine.RefreshAlgorithmParams();
        const Clock::duration oTime = Clock::now() - tBegin;
        vecNanoseconds.push_back(static_cast<uint32_t>(std::chrono::nanoseconds(oTime).count()));
        oState.SetIterationTime(std::chrono::duration<double>(oTime).count());
        if (oEngine.ParamID() == pOldID)
            oState.SkipWithError("the key didn't change");
        pOldID = oEngine.ParamID();
    }
    const PeriodTimes oTimes = SummarizeTimes(vecNanoseconds);
    oState.counters["median_us"] = oTimes.f64Median;
    oState.counters["p99_us"] = oTimes.f64Percentile99;
    char strLabel[64];
    std::snprintf(strLabel, sizeof(strLabel), "%s limit of %g us",
                  oTimes.f64Percentile99 < SWITCH_LIMIT_MICROSECONDS ? "under the" : "OVER THE",
                  SWITCH_LIMIT_MICROSECONDS);
    oState.SetLabel(strLabel);
}

} // namespace

int main(int iArgumentCount, char** ppArguments)
{
    try
    {
        const CBenchMachine oMachine;
        benchmark::Initialize(&iArgumentCount, ppArguments);
        if (benchmark::ReportUnrecognizedArguments(iArgumentCount, ppArguments))
            return 2;
        CKelvaneManager::Instance()->Initialize(nullptr);
        benchmark::RegisterBenchmark("engine/parameter_switch", BenchParameterSwitch)->UseManualTime();
        benchmark::RunSpecifiedBenchmarks();
        CKelvaneManager::DeleteInstance();
        return 0;
    }
    catch (const std::exception& oError)
    {
        std::fprintf(stderr, "bench_engine: %s\n", oError.what());
        return 1;
    }
}
