// What diagnostics cost: a line of the log for its caller, and whether the dump keeps up with a stream.
#include "audioapi/audio_api_dump.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_system.h"
#include "bench/bench_machine.h"
#include "host/playing/apo_stream.h"
#include "host/registry/reg_commands.h"
#include "host/report/play_result.h"
#include "platform/control/machine.h"
#include "platform/hostpath.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace
{

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int LOG_THREADS = 4;
constexpr int LOG_LINES = 25000; // of each thread
constexpr double LOG_LIMIT_MICROSECONDS = 3;
constexpr int DUMP_PERIODS = 1000;
const StreamSetup DUMP_STREAM = {false, 48000, 2, 480, false};
constexpr std::chrono::milliseconds DUMP_PERIOD(10);

// Each line's time for its caller.
void WriteLines(std::vector<uint32_t>& vecNanoseconds)
{
    for (int i = 0; i < LOG_LINES; ++i)
    {
        const Clock::time_point tBegin = Clock::now();
        AUDIOLOG_INFO("number " + std::to_string(i));
        vecNanoseconds.push_back(static_cast<uint32_t>(std::chrono::nanoseconds(Clock::now() - tBegin).count()));
    }
}

// How many lines of this benchmark stand in the files; 0 if those of a thread aren't in order.
int CountLines(const fs::path& oFolder)
{
    std::map<std::string, int> mapNext;
    int iCount = 0;
    for (const auto& oEntry : fs::directory_iterator(oFolder))
    {
        std::ifstream oFile(oEntry.path());
        for (std::string strLine; std::getline(oFile, strLine);)
        {
            const size_t iNumber = strLine.find("number ");
            if (iNumber == std::string::npos)
                continue;
            const size_t iThread = strLine.find("[T");
            int& iNext = mapNext[strLine.substr(iThread, strLine.find(']', iThread) - iThread)];
            if (std::stoi(strLine.substr(iNumber + 7)) != iNext++)
                return 0;
            ++iCount;
        }
    }
    return iCount;
}

void BenchLog(benchmark::State& oState)
{
    const fs::path oFolder = HostPath(CAudioSYS::GetDiagnosticsPath(CAudioSYS::GetModuleBaseName(nullptr)));
    fs::create_directories(oFolder);
    RegSet("Debug\\DebugLevel=3");
    CAudioLog::Instance()->Initialize(nullptr);
    for (auto _ : oState)
    {
        std::vector<std::vector<uint32_t>> vecTimes(LOG_THREADS);
        std::vector<std::thread> vecThreads;
        for (std::vector<uint32_t>& vecNanoseconds : vecTimes)
        {
            vecNanoseconds.reserve(LOG_LINES);
            vecThreads.emplace_back([&] { WriteLines(vecNanoseconds); });
        }
        std::vector<uint32_t> vecAll;
        for (int i = 0; i < LOG_THREADS; ++i)
        {
            vecThreads[static_cast<size_t>(i)].join();
            vecAll.insert(vecAll.end(), vecTimes[static_cast<size_t>(i)].begin(),
                          vecTimes[static_cast<size_t>(i)].end());
        }
        machine::WaitUntilIdle();
        const PeriodTimes oTimes = SummarizeTimes(vecAll);
        oState.counters["median_us"] = oTimes.f64Median;
        oState.counters["p99_us"] = oTimes.f64Percentile99;
        oState.SetLabel(oTimes.f64Median < LOG_LIMIT_MICROSECONDS ? "under the limit of 3 us"
                                                                  : "OVER THE limit of 3 us");
    }
    const int iLines = CountLines(oFolder);
    oState.counters["lines"] = iLines;
    if (iLines != LOG_THREADS * LOG_LINES)
        oState.SkipWithError("lines are missing or out of order");
    CAudioLog::DeleteInstance();
}

// Bytes of the item's dump files.
uintmax_t DumpedBytes(const std::string& strItem)
{
    uintmax_t iBytes = 0;
    for (const auto& oEntry : fs::directory_iterator(HostPath(CAudioSYS::GetDiagnosticsPath("KelvaneAPO"))))
        if (oEntry.path().filename().string().rfind("KelvaneAPO_" + strItem + "_P", 0) == 0)
            iBytes += oEntry.file_size();
    return iBytes;
}

// A stream by the clock with every point dumped.
void BenchDump(benchmark::State& oState)
{
    RegSet("Debug\\DebugLevel=0");
    RegSet("Dump\\DumpLevel=3");
    const CComApartment oApartment;
    CApoStream oStream(DUMP_STREAM);
    const std::vector<float> vecTone(oStream.DataLen(), 0.25f);
    std::vector<uint32_t> vecNanoseconds;
    for (auto _ : oState)
    {
        Clock::time_point tNext = Clock::now();
        for (int i = 0; i < DUMP_PERIODS; ++i)
        {
            oStream.Fill(vecTone.data());
            const Clock::time_point tBegin = Clock::now();
            oStream.Process();
            vecNanoseconds.push_back(static_cast<uint32_t>(std::chrono::nanoseconds(Clock::now() - tBegin).count()));
            std::this_thread::sleep_until(tNext += DUMP_PERIOD);
        }
        machine::WaitUntilIdle();
    }
    const uintmax_t iExpected = DUMP_PERIODS * vecTone.size() * sizeof(float);
    for (const char* pItem : {"PostDataIn", "PostDataOut", "PostInt32DataIn", "PostInt32DataOut", "OutputSample"})
    {
        if (DumpedBytes(pItem) == iExpected)
            continue;
        oState.SkipWithError((std::string(pItem) + " lacks blocks").c_str());
        return;
    }
    oState.counters["median_us"] = SummarizeTimes(vecNanoseconds).f64Median;
    oState.SetLabel("no block lost");
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
        benchmark::RegisterBenchmark("log/100000_lines_of_4_threads", BenchLog)
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RegisterBenchmark("dump/level_3_in_real_time", BenchDump)
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        benchmark::RunSpecifiedBenchmarks();
        return 0;
    }
    catch (const std::exception& oError)
    {
        std::fprintf(stderr, "bench_diagnostics: %s\n", oError.what());
        return 1;
    }
}
