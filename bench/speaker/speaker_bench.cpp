// How many times faster than real time one channel of the simulated loudspeaker runs, by the processor's time.
#include "speaker/loudspeaker.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace
{

constexpr double RATE = 48000.0;

// Argument: steps per sample.
void BenchLoudspeaker(benchmark::State& oState)
{
    CLoudspeaker oSpeaker;
    if (const SpeakerResult oResult = oSpeaker.Init({}, RATE, static_cast<int>(oState.range(0))); !oResult)
    {
        oState.SkipWithError(oResult.strText.c_str());
        return;
    }
    std::minstd_rand oRandom(1);
    std::vector<float> vecNoise(static_cast<size_t>(RATE));
    for (float& f32Sample : vecNoise)
        f32Sample = std::uniform_real_distribution<float>(-1.0f, 1.0f)(oRandom);
    for ([[maybe_unused]] auto oPass : oState)
        oSpeaker.Process(vecNoise.data(), vecNoise.size());
    oState.counters["x_real_time"] =
        benchmark::Counter(static_cast<double>(oState.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BenchLoudspeaker)->Arg(1)->Arg(2)->Arg(4)->Arg(8)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
