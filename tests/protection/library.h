// The protection library as its callers load it, with signals to play through it.
#pragma once

#include "platform/compiler.h"
#include "protection/kelvane_parameters.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <vector>

using Samples = std::vector<float>;
using Signal = std::function<double(size_t)>; // a sample by its place at 48 kHz
inline constexpr size_t FRAME_LEN = 240;
inline constexpr size_t SECOND = 48000;
inline constexpr size_t LIBRARY_DELAY = 308; // of a protected signal, samples
inline constexpr double PI = 3.14159265358979323846;

class CLibrary
{
public:
    CLibrary()
    {
        KelvaneMemSize stSize{};
        EXPECT_EQ(Find<KelvaneGetSize>("AudioKelvaneGetSize")(&stSize), 0);
        m_pRunBuf.reset(malloc(static_cast<size_t>(stSize.iRunBufSize)));
        m_pScratchBuf.reset(malloc(static_cast<size_t>(stSize.iScratchSize)));
        memset(RunBuf(), 0xA5, static_cast<size_t>(stSize.iRunBufSize));
        EXPECT_EQ(Find<KelvaneInit>("AudioKelvaneInit")(RunBuf(), ScratchBuf()), 0);
        m_stData.ACLineStatus = 1;
    }
    explicit CLibrary(const KelvaneStruParam& stParam) : CLibrary() { EXPECT_EQ(Set(stParam), 0); }

    template <class Function> Function Find(const char* pName) const
    {
        const auto fFunction =
            reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(m_pDll.get(), pName)));
        EXPECT_NE(fFunction, nullptr) << pName;
        return fFunction;
    }
    int32_t Set(const KelvaneStruParam& stParam) { return m_fSetPara(RunBuf(), ScratchBuf(), &stParam); }
    int32_t Apply() { return m_fApply(RunBuf(), ScratchBuf(), &m_stData); }
    int32_t Temperature(int iTemperature) { return m_fTemperature(RunBuf(), iTemperature); }
    KelvaneStruParam Get()
    {
        KelvaneStruParam stParam{};
        EXPECT_EQ(m_fGetPara(RunBuf(), &stParam), 0);
        return stParam;
    }
    // In the state's unit.
    double State(KelvaneState eState, int iSpeaker = 0)
    {
        const KelvaneStruParam stParam = Get();
        const KelvaneStateInfo& oInfo = KELVANE_STATES[static_cast<int>(eState)];
        return reinterpret_cast<const int16_t*>(&stParam)[oInfo.iWord + iSpeaker] / static_cast<double>(oInfo.iDivisor);
    }
    // In place, channel by channel from the samples at uPlace on.
    void Apply(std::vector<Samples>& vecChannels, size_t uPlace, size_t uCount)
    {
        for (size_t i = 0; i < vecChannels.size(); ++i)
            m_stData.psDataIn[i] = m_stData.psDataOut[i] = vecChannels[i].data() + uPlace;
        m_stData.iFrameLen = static_cast<int32_t>(uCount);
        ASSERT_EQ(Apply(), 0);
    }
    // All of it; fnBefore is asked before each frame, with the place of its first sample.
    void Play(std::vector<Samples>& vecChannels, const std::function<void(size_t)>& fnBefore = {})
    {
        for (size_t i = 0; i < vecChannels[0].size(); i += FRAME_LEN)
        {
            if (fnBefore)
                fnBefore(i);
            Apply(vecChannels, i, std::min(FRAME_LEN, vecChannels[0].size() - i));
        }
    }
    void* RunBuf() const { return m_pRunBuf.get(); }
    void* ScratchBuf() const { return m_pScratchBuf.get(); }

    KelvaneDataStruct m_stData{};

private:
    struct CFree
    {
        void operator()(void* pMemory) const { free(pMemory); }
        void operator()(HMODULE hDll) const { FreeLibrary(hDll); }
    };
    std::unique_ptr<std::remove_pointer_t<HMODULE>, CFree> m_pDll{LoadLibraryA(KELVANE_LIBRARY_FILE)};
    const KelvaneApply m_fApply = Find<KelvaneApply>("AudioKelvaneApply");
    const KelvaneSetPara m_fSetPara = Find<KelvaneSetPara>("AudioKelvaneSetParams");
    const KelvaneGetPara m_fGetPara = Find<KelvaneGetPara>("AudioKelvaneGetParams");
    const KelvaneTemperature m_fTemperature = Find<KelvaneTemperature>("AudioKelvaneSetTemperatureInformation");
    std::unique_ptr<void, CFree> m_pRunBuf;
    std::unique_ptr<void, CFree> m_pScratchBuf;
};

// For all speakers.
inline KelvaneStruParam With(KelvaneStruParam stParam,
                             std::initializer_list<std::pair<KelvaneParameter, double>> oValues)
{
    for (const auto& [eParameter, f64Value] : oValues)
        for (int i = 0; i < (GetParameterInfo(eParameter).bPerSpeaker ? KELVANE_MAX_CHANNELS : 1); ++i)
            SetParameter(stParam, eParameter, f64Value, i);
    return stParam;
}
// The defaults without margins, for a speaker that is exactly like them.
inline KelvaneStruParam Matched()
{
    return With(DefaultParameters(), {{KelvaneParameter::DISPLACEMENT_MARGIN, 0},
                                      {KelvaneParameter::RESISTANCE_MARGIN, 0},
                                      {KelvaneParameter::AMBIENT_MARGIN, 0}});
}

inline Signal Sine(double f64Hz, double f64Amplitude = 1.0)
{
    return [=](size_t i) { return f64Amplitude * std::sin(2 * PI * f64Hz * static_cast<double>(i) / SECOND); };
}
inline Signal Square(double f64Hz)
{
    return [=](size_t i) { return std::fmod(f64Hz * static_cast<double>(i) / SECOND, 1.0) < 0.5 ? 1.0 : -1.0; };
}
// 50 to 3000 Hz in 4 s.
inline Signal Sweep()
{
    return [](size_t i)
    {
        const double f64Rate = std::log(60.0) / 4;
        return std::sin(2 * PI * 50 * (std::exp(f64Rate * static_cast<double>(i) / SECOND) - 1) / f64Rate);
    };
}
// Full scale, a new sign every uHold samples.
inline Signal Noise(size_t uHold)
{
    return [uHold, oRandom = std::mt19937(1), f64Sign = 1.0](size_t i) mutable
    { return i % uHold == 0 ? f64Sign = (oRandom() & 1) != 0 ? 1.0 : -1.0 : f64Sign; };
}
inline Signal Gated(const Signal& fnSignal, double f64On, double f64Off)
{
    return [=](size_t i)
    { return std::fmod(static_cast<double>(i) / SECOND, f64On + f64Off) < f64On ? fnSignal(i) : 0.0; };
}
inline Samples Make(const Signal& fnSignal, double f64Seconds)
{
    Samples vecSamples(static_cast<size_t>(f64Seconds * SECOND));
    for (size_t i = 0; i < vecSamples.size(); ++i)
        vecSamples[i] = static_cast<float>(fnSignal(i));
    return vecSamples;
}
