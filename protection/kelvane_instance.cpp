// The algorithm: a plain gain per channel, and the state that it reports.
#include "protection/kelvane_instance.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

namespace
{
constexpr int LOAD_ATTEMPTS = 1000;

int16_t ToWord(float f32Value)
{
    return static_cast<int16_t>(std::lround(std::clamp(f32Value, -32768.0f, 32767.0f)));
}

// Root of the mean square. Independent sums, for one running sum would wait on every addition.
float CalcRms(const float* pSamples, int32_t iFrameLen)
{
    constexpr int32_t SUM_COUNT = 8;
    float f32Sums[SUM_COUNT] = {};
    int32_t i = 0;
    for (; i + SUM_COUNT <= iFrameLen; i += SUM_COUNT)
        for (int32_t j = 0; j < SUM_COUNT; ++j)
            f32Sums[j] += pSamples[i + j] * pSamples[i + j];
    for (; i < iFrameLen; ++i)
        f32Sums[0] += pSamples[i] * pSamples[i];
    const float f32Sum = std::accumulate(f32Sums, f32Sums + SUM_COUNT, 0.0f);
    return std::sqrt(f32Sum / static_cast<float>(iFrameLen));
}

// Samples times the gain; in and out may be the same.
void ApplyGain(const float* pIn, float* pOut, int32_t iFrameLen, float f32Gain)
{
    for (int32_t i = 0; i < iFrameLen; ++i)
        pOut[i] = pIn[i] * f32Gain;
}
} // namespace

// An attempt fails only when another whole set was stored within these few loads: no thread can hold the frame up.
void CKelvaneInstance::Apply(KelvaneScratch& oScratch, const KelvaneDataStruct& oDataStruct)
{
    while (!m_oRecord.TryLoadGains(oScratch.bActive, oScratch.f32Gain))
    {
    }
    for (int32_t i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        const float* pIn = oDataStruct.psDataIn[i];
        float* pOut = oDataStruct.psDataOut[i];
        if (pIn == nullptr || pOut == nullptr)
            continue;
        if (oScratch.bActive)
            ApplyGain(pIn, pOut, oDataStruct.iFrameLen, oScratch.f32Gain[i]);
        else
            memmove(pOut, pIn, static_cast<size_t>(oDataStruct.iFrameLen) * sizeof(float));
        const float f32Rms = CalcRms(pOut, oDataStruct.iFrameLen);
        m_f32Rms[i].store(std::isfinite(f32Rms) ? f32Rms : 0.0f, std::memory_order_relaxed);
    }
}

bool CKelvaneInstance::GetParams(KelvaneStruParam& oStruParam) const
{
    int iAttempt = 0;
    while (!m_oRecord.TryLoad(oStruParam))
        if (++iAttempt == LOAD_ATTEMPTS)
            return false;

    const float f32Temperature = static_cast<float>(m_iTemperature.load(std::memory_order_relaxed));
    const bool bActive = oStruParam.sFFModule[0] != 0;
    for (int32_t i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        const float f32Gain = bActive ? static_cast<float>(oStruParam.sPOWTargetGain[i]) / 100.0f : 1.0f;
        oStruParam.sLSMCoilTemp[i] = ToWord(f32Temperature);
        oStruParam.sPOWPrms[i] = ToWord(m_f32Rms[i].load(std::memory_order_relaxed) * 100.0f);
        oStruParam.sTEPCurrentGain[i] = ToWord(f32Gain * 100.0f);
        oStruParam.sANDCurrentGain[i] = ToWord(f32Gain * 100.0f);
        oStruParam.sIPWCurrentGain[i] = ToWord(f32Gain * 10000.0f);
    }
    oStruParam.sLSMMonitorTemp = ToWord(f32Temperature / 100.0f);
    oStruParam.sBCNCurrentGain = 100;
    return true;
}

void CKelvaneInstance::ClearStatus()
{
    m_iTemperature.store(INITIAL_TEMPERATURE, std::memory_order_relaxed);
    for (std::atomic<float>& f32Rms : m_f32Rms)
        f32Rms.store(0.0f, std::memory_order_relaxed);
}
