// What the module costs: a processing call, the manager's start, the memory of a stream.
#include "bench/bench_machine.h"
#include "bench/heap_count.h"
#include "host/playing/apo_stream.h"
#include "host/report/play_result.h"
#include "platform/control/machine.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

struct PeriodCase
{
    const char* pName;
    StreamSetup oSetup;
    double f64LimitMicroseconds; // of the median call; 0: none
};

const PeriodCase PERIOD_CASES[] = {
    {"period/EFX/48000Hz/480/2ch", {false, 48000, 2, 480, false}, 0},
    {"period/OMFX/48000Hz/480/2ch", {true, 48000, 2, 480, false}, 6},
    {"period/EFX/44100Hz/441/2ch", {false, 44100, 2, 441, false}, 0},
    {"period/OMFX/44100Hz/441/2ch", {true, 44100, 2, 441, false}, 15},
};

constexpr double START_LIMIT_MS = 60;
constexpr double STREAM_LIMIT_MB = 2;
constexpr int MEASURED_STREAMS = 8;
constexpr int WARM_UP_PERIODS = 200;

double Seconds(Clock::time_point tBegin)
{
    return std::chrono::duration<double>(Clock::now() - tBegin).count();
}

std::vector<float> Tone(const StreamSetup& oSetup, size_t iDataLen)
{
    std::vector<float> vecTone(iDataLen);
    for (size_t i = 0; i < iDataLen; ++i)
        vecTone[i] = 0.5f * std::sin(0.05f * static_cast<float>(i / static_cast<size_t>(oSetup.iChannels)));
    return vecTone;
}

// One call and, untimed, what the workers do with it.
void RunPeriod(CApoStream& oStream, const std::vector<float>& vecTone)
{
    oStream.Fill(vecTone.data());
    oStream.Process();
    machine::WaitUntilIdle();
}

void Verdict(benchmark::State& oState, const char* pUnit, double f64Value, double f64Limit)
{
    if (f64Limit <= 0)
        return;
    char strLabel[64];
    std::snprintf(strLabel, sizeof(strLabel), "%s limit of %g %s", f64Value < f64Limit ? "under the" : "OVER THE",
                  f64Limit, pUnit);
    oState.SetLabel(strLabel);
}

void BenchPeriod(benchmark::State& oState, const PeriodCase& oCase)
{
    const CComApartment oApartment;
    CApoStream oStream(oCase.oSetup);
    const std::vector<float> vecTone = Tone(oCase.oSetup, oStream.DataLen());
    for (int i = 0; i < WARM_UP_PERIODS; ++i)
        RunPeriod(oStream, vecTone);
    int64_t i64Blocks = 0;
    std::vector<uint32_t> vecNanoseconds;
    vecNanoseconds.reserve(oState.max_iterations);
    for (auto _ : oState)
    {
        oStream.Fill(vecTone.data());
        const int64_t i64Before = ThreadHeapBlocks();
        const Clock::time_point tBegin = Clock::now();
        oStream.Process();
        const double f64Seconds = Seconds(tBegin);
        i64Blocks += ThreadHeapBlocks() - i64Before;
        vecNanoseconds.push_back(static_cast<uint32_t>(f64Seconds * 1e9));
        oState.SetIterationTime(f64Seconds);
        machine::WaitUntilIdle();
    }
    const PeriodTimes oTimes = SummarizeTimes(vecNanoseconds);
    oState.counters["median_us"] = oTimes.f64Median;
    oState.counters["x_real_time"] = 1e6 * oCase.oSetup.iPeriodFrames / (oCase.oSetup.iRate * oTimes.f64Median);
    oState.counters["heap_blocks"] = static_cast<double>(i64Blocks) / static_cast<double>(oState.iterations());
    Verdict(oState, "us", oTimes.f64Median, oCase.f64LimitMicroseconds);
    if (oStream.ProbeBypass())
        oState.SkipWithError("the module bypassed the stream");
}

// Attach and detach of the module: log, protection library, the whole tuning file, watchers.
void BenchManagerStart(benchmark::State& oState)
{
    double f64Start = 0;
    for (auto _ : oState)
    {
        const Clock::time_point tBegin = Clock::now();
        const HMODULE hModule = LoadLibraryA("KelvaneAPO.dll");
        const double f64Loaded = Seconds(tBegin);
        if (hModule == nullptr || !FreeLibrary(hModule))
            oState.SkipWithError("the module can't be loaded");
        f64Start += f64Loaded;
        oState.SetIterationTime(Seconds(tBegin));
    }
    const double f64Mean = f64Start / static_cast<double>(oState.iterations());
    oState.counters["start_ms"] = f64Mean * 1e3;
    Verdict(oState, "ms", f64Mean * 1e3, START_LIMIT_MS);
}

double ResidentMegabytes()
{
    std::ifstream oFile("/proc/self/statm");
    double f64Size = 0;
    double f64Resident = 0;
    oFile >> f64Size >> f64Resident;
    return f64Resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

// Growth of resident memory per stream that plays, the manager and a first stream being there already.
void BenchStreamMemory(benchmark::State& oState)
{
    const CComApartment oApartment;
    const StreamSetup oSetup = PERIOD_CASES[0].oSetup;
    double f64Grown = 0;
    for (auto _ : oState)
    {
        std::vector<std::unique_ptr<CApoStream>> vecStreams;
        double f64Before = 0;
        for (int i = 0; i <= MEASURED_STREAMS; ++i)
        {
            f64Before = i == 1 ? ResidentMegabytes() : f64Before;
            vecStreams.push_back(std::make_unique<CApoStream>(oSetup));
            const std::vector<float> vecTone = Tone(oSetup, vecStreams.back()->DataLen());
            for (int j = 0; j < WARM_UP_PERIODS; ++j)
                RunPeriod(*vecStreams.back(), vecTone);
        }
        f64Grown = (ResidentMegabytes() - f64Before) / MEASURED_STREAMS;
    }
    oState.counters["stream_MB"] = f64Grown;
    Verdict(oState, "MB", f64Grown, STREAM_LIMIT_MB);
}

void RegisterAll()
{
    // The memory first: what the other benchmarks leave in the heap would hide a stream's growth.
    benchmark::RegisterBenchmark("memory/stream", BenchStreamMemory)->Iterations(1)->Unit(benchmark::kMillisecond);
    for (const PeriodCase& oCase : PERIOD_CASES)
        benchmark::RegisterBenchmark(oCase.pName, BenchPeriod, oCase)->UseManualTime();
    benchmark::RegisterBenchmark("manager/load_and_free", BenchManagerStart)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
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
        RegisterAll();
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
    catch (const std::exception& oError)
    {
        std::fprintf(stderr, "bench_kelvane: %s\n", oError.what());
        return 1;
    }
}
