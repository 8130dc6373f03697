// What a frame of the protection library costs, beside a plain copy and limiters of the distribution on the same
// frames.
#include "bench/heap_count.h"
#include "bench/protection/limiter_plugin.h"
#include "protection/kelvane_parameters.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <random>

namespace
{
constexpr int FRAME_LEN = 240;
constexpr int FRAMES = 4000; // 20 s, played again and again
using Clock = std::chrono::steady_clock;
using ProcessFrame = std::function<void(const float* const (&pIn)[2], float* const (&pOut)[2])>;

// Bass, a voice's range, treble and noise, driven into clipping: every stage has work in every frame.
struct Programme
{
    std::vector<float> vecChannels[2];

    Programme()
    {
        std::mt19937 oRandom(1);
        std::normal_distribution<float> oNoise(0.0f, 0.3f);
        for (int i = 0; i < FRAMES * FRAME_LEN; ++i)
        {
            const float f32Sec = static_cast<float>(i) / 48000.0f;
            const float f32Both =
                std::sin(440.0f * f32Sec) + 0.8f * std::sin(4400.0f * f32Sec) + std::sin(22000.0f * f32Sec);
            for (std::vector<float>& vecChannel : vecChannels)
                vecChannel.push_back(std::clamp(1.2f * (f32Both + oNoise(oRandom)), -1.0f, 1.0f));
        }
    }
};

const Programme& Loud()
{
    static const Programme oProgramme;
    return oProgramme;
}

// The library as its caller has it: its file, two buffers.
class CLibrary
{
public:
    CLibrary()
    {
        void* const hFile = dlopen(KELVANE_LIBRARY_FILE, RTLD_NOW);
        const auto fnFind = [&](const char* pName) { return hFile != nullptr ? dlsym(hFile, pName) : nullptr; };
        m_fApply = reinterpret_cast<KelvaneApply>(fnFind("AudioKelvaneApply"));
        m_fGetPara = reinterpret_cast<KelvaneGetPara>(fnFind("AudioKelvaneGetParams"));
        const auto fnGetSize = reinterpret_cast<KelvaneGetSize>(fnFind("AudioKelvaneGetSize"));
        const auto fnInit = reinterpret_cast<KelvaneInit>(fnFind("AudioKelvaneInit"));
        const auto fnSetPara = reinterpret_cast<KelvaneSetPara>(fnFind("AudioKelvaneSetParams"));
        const auto fnTemperature =
            reinterpret_cast<KelvaneTemperature>(fnFind("AudioKelvaneSetTemperatureInformation"));
        KelvaneMemSize oSize{};
        fnGetSize(&oSize);
        m_vecRun.resize(static_cast<size_t>(oSize.iRunBufSize) / sizeof(std::max_align_t) + 1);
        m_vecScratch.resize(static_cast<size_t>(oSize.iScratchSize) / sizeof(std::max_align_t) + 1);
        KelvaneStruParam oParameters = DefaultParameters();
        // What a stage takes away, the ones behind it have less to do with. So one speaker gets hot, and the other
        // loud.
        SetParameter(oParameters, KelvaneParameter::HEAT_LINK, 0);
        SetParameter(oParameters, KelvaneParameter::COIL_LIMIT, 80, 0);
        SetParameter(oParameters, KelvaneParameter::MAGNET_HEAT, 500, 0); // hot as it is, however long a run is
        for (int i = 0; i < 2; ++i)
            SetParameter(oParameters, KelvaneParameter::DISPLACEMENT_LIMIT, 0.2, i);
        fnInit(m_vecRun.data(), m_vecScratch.data());
        m_bReady = fnSetPara(m_vecRun.data(), m_vecScratch.data(), &oParameters) == 0 &&
                   fnTemperature(m_vecRun.data(), 5500) == 0;
        m_oFrame.iFrameLen = FRAME_LEN;
        m_oFrame.ACLineStatus = 1;
    }

    void Process(const float* const (&pIn)[2], float* const (&pOut)[2])
    {
        for (int i = 0; i < 2; ++i)
        {
            m_oFrame.psDataIn[i] = const_cast<float*>(pIn[i]);
            m_oFrame.psDataOut[i] = pOut[i];
        }
        m_bReady = m_fApply(m_vecRun.data(), m_vecScratch.data(), &m_oFrame) == 0 && m_bReady;
    }

    bool AllStagesWork()
    {
        KelvaneStruParam oState{};
        m_fGetPara(m_vecRun.data(), &oState);
        return m_bReady && oState.sTEPCurrentGain[0] < 100 && oState.sANDCurrentGain[0] < 100 &&
               oState.sANDCurrentGain[1] < 100 && oState.sIPWCurrentGain[1] < 10000;
    }
    bool IsReady() const { return m_bReady; }

private:
    bool m_bReady = false;
    KelvaneApply m_fApply = nullptr;
    KelvaneGetPara m_fGetPara = nullptr;
    std::vector<std::max_align_t> m_vecRun;
    std::vector<std::max_align_t> m_vecScratch;
    KelvaneDataStruct m_oFrame{};
};

// Times frame by frame; looks, untimed, every half second. bSilence: zeros, after the programme.
void Measure(
    benchmark::State& oState, const ProcessFrame& fnProcess, bool bSilence, const std::function<void()>& fnLook = [] {})
{
    const Programme& oLoud = Loud();
    const std::vector<float> vecSilence(FRAME_LEN);
    std::vector<float> vecOut[2] = {std::vector<float>(FRAME_LEN), std::vector<float>(FRAME_LEN)};
    float* const pOut[2] = {vecOut[0].data(), vecOut[1].data()};
    size_t uFrame = 0;
    const auto fnNext = [&](bool bZeros)
    {
        const size_t uPlace = uFrame++ % FRAMES * FRAME_LEN;
        const float* const pIn[2] = {bZeros ? vecSilence.data() : oLoud.vecChannels[0].data() + uPlace,
                                     bZeros ? vecSilence.data() : oLoud.vecChannels[1].data() + uPlace};
        const int64_t i64Before = ThreadHeapBlocks();
        const Clock::time_point tBegin = Clock::now();
        fnProcess(pIn, pOut);
        const double f64Seconds = std::chrono::duration<double>(Clock::now() - tBegin).count();
        return std::make_pair(f64Seconds, ThreadHeapBlocks() - i64Before);
    };
    for (int i = 0; i < FRAMES; ++i)
        fnNext(false);
    std::vector<double> vecMicroseconds;
    vecMicroseconds.reserve(oState.max_iterations);
    int64_t i64Blocks = 0;
    for (auto _ : oState)
    {
        const auto [f64Seconds, i64FrameBlocks] = fnNext(bSilence);
        oState.SetIterationTime(f64Seconds);
        vecMicroseconds.push_back(f64Seconds * 1e6);
        i64Blocks += i64FrameBlocks;
        if (uFrame % 100 == 0)
            fnLook();
    }
    std::sort(vecMicroseconds.begin(), vecMicroseconds.end());
    oState.counters["median_us"] = vecMicroseconds[vecMicroseconds.size() / 2];
    oState.counters["p99_us"] = vecMicroseconds[vecMicroseconds.size() * 99 / 100];
    oState.counters["worst_us"] = vecMicroseconds.back();
    oState.counters["heap_blocks"] = static_cast<double>(i64Blocks);
}

void BenchLibrary(benchmark::State& oState, bool bSilence)
{
    CLibrary oLibrary;
    int iLooks = 0;
    int iBusy = 0;
    Measure(
        oState, [&](const auto& pIn, const auto& pOut) { oLibrary.Process(pIn, pOut); }, bSilence,
        [&]
        {
            ++iLooks;
            iBusy += oLibrary.AllStagesWork();
        });
    if (!oLibrary.IsReady() || (!bSilence && 10 * iBusy < 9 * iLooks))
        oState.SkipWithError("a stage of the library had nothing to do");
}

void BenchCopy(benchmark::State& oState)
{
    Measure(
        oState,
        [](const auto& pIn, const auto& pOut)
        {
            for (int i = 0; i < 2; ++i)
                memcpy(pOut[i], pIn[i], FRAME_LEN * sizeof(float));
        },
        false);
}

struct PluginCase
{
    const char* pName;
    const char* pFile;
    const char* pLabel;
    std::map<std::string, float> mapControls;
};

const PluginCase PLUGIN_CASES[] = {
    {"limiter/lsp",
     "lsp-plugins-ladspa",
     "http://lsp-plug.in/plugins/ladspa/limiter_stereo",
     {{"Threshold (G)", 0.5f}}},
    {"limiter/swh", "fast_lookahead_limiter", "fastLookaheadLimiter", {{"Limit (dB)", -6.0f}}},
};

void BenchPlugin(benchmark::State& oState, const PluginCase& oCase)
{
    const auto pPlugin = CLimiterPlugin::Open(oCase.pFile, oCase.pLabel, oCase.mapControls);
    if (pPlugin == nullptr)
    {
        oState.SkipWithError("not installed");
        return;
    }
    Measure(
        oState, [&](const auto& pIn, const auto& pOut) { pPlugin->Process(pIn, pOut, FRAME_LEN); }, false);
}
} // namespace

int main(int iArgumentCount, char** ppArguments)
{
    benchmark::Initialize(&iArgumentCount, ppArguments);
    if (benchmark::ReportUnrecognizedArguments(iArgumentCount, ppArguments))
        return 2;
    benchmark::RegisterBenchmark("protection/all_stages", BenchLibrary, false)->UseManualTime();
    benchmark::RegisterBenchmark("protection/silence_behind", BenchLibrary, true)->UseManualTime();
    benchmark::RegisterBenchmark("copy", BenchCopy)->UseManualTime();
    for (const PluginCase& oCase : PLUGIN_CASES)
        benchmark::RegisterBenchmark(oCase.pName, BenchPlugin, oCase)->UseManualTime();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
