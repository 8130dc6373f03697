// How long a registry change is on its way to the status record, set by this process and by another program.
#include "audioapi/audio_api_monitor.h"
#include "host/registry/registry_text.h"
#include "host/report/play_result.h"
#include "platform/control/machine_native.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace
{

using Clock = std::chrono::system_clock; // the one of the file's time stamps

constexpr double FOLLOW_LIMIT_MICROSECONDS = 50000;
constexpr std::chrono::seconds FOLLOW_TIME_OUT{5};

// Sets a volume that is new each time, waits until the record has it, and asks when the change was made.
void BenchFollow(benchmark::State& oState, const std::function<void(int)>& fnSet,
                 const std::function<Clock::time_point(Clock::time_point tBegin)>& fnChanged)
{
    const CAudioMonitor* const pMonitor = CAudioMonitor::Instance();
    std::vector<uint32_t> vecNanoseconds;
    vecNanoseconds.reserve(oState.max_iterations);
    int iVolume = pMonitor->GetSpeakerVolume();
    for (auto _ : oState)
    {
        machine::WaitUntilIdle();
        iVolume = iVolume == 10 ? 90 : 10;
        const Clock::time_point tBegin = Clock::now();
        fnSet(iVolume);
        while (pMonitor->GetSpeakerVolume() != iVolume && Clock::now() - tBegin < FOLLOW_TIME_OUT)
            usleep(50);
        const Clock::time_point tEnd = Clock::now();
        if (pMonitor->GetSpeakerVolume() != iVolume)
            oState.SkipWithError("the change never came");
        const Clock::duration oTime = std::max(tEnd - fnChanged(tBegin), Clock::duration::zero());
        vecNanoseconds.push_back(static_cast<uint32_t>(std::chrono::nanoseconds(oTime).count()));
        oState.SetIterationTime(std::chrono::duration<double>(oTime).count());
    }
    const PeriodTimes oTimes = SummarizeTimes(vecNanoseconds);
    oState.counters["median_us"] = oTimes.f64Median;
    oState.counters["p99_us"] = oTimes.f64Percentile99;
    oState.SetLabel(oTimes.f64Percentile99 < FOLLOW_LIMIT_MICROSECONDS ? "under the limit of 50 ms"
                                                                       : "OVER THE limit of 50 ms");
}

std::string Setting(int iVolume)
{
    return "Volume\\Speaker\\VolumeNum=" + std::to_string(iVolume);
}

// The writing of the registry is in the time.
void BenchFollowOwn(benchmark::State& oState)
{
    BenchFollow(
        oState, [](int iVolume) { SetRegistryValue(Setting(iVolume)); },
        [](Clock::time_point tBegin) { return tBegin; });
}

// From the time stamp of the registry's file, which is a few milliseconds coarse: the program's start is left out.
void BenchFollowOther(benchmark::State& oState)
{
    const auto oHost = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "apohost";
    const std::string strCommand = "KELVANE_MACHINE='" + machine::Folder() + "' '" + oHost.string() + "' reg set '";
    const auto fnSet = [&](int iVolume)
    {
        if (std::system((strCommand + Setting(iVolume) + "' >/dev/null &").c_str()) != 0)
            oState.SkipWithError("the other program failed");
    };
    const auto fnChanged = [](Clock::time_point)
    {
        struct stat oStat
        {
        };
        stat(machine::RegistryFile().c_str(), &oStat);
        return Clock::time_point(std::chrono::seconds(oStat.st_mtim.tv_sec) +
                                 std::chrono::nanoseconds(oStat.st_mtim.tv_nsec));
    };
    BenchFollow(oState, fnSet, fnChanged);
}

BENCHMARK(BenchFollowOwn)->Name("follow/own_process")->UseManualTime();
BENCHMARK(BenchFollowOther)->Name("follow/other_program")->UseManualTime();

} // namespace
