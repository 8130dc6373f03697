// Blocks, modes and the way between them; sets, requests and state across threads.
#include "protection/kelvane_instance.h"

#include "protection/dsp/base/float_mode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace
{
constexpr int LOAD_ATTEMPTS = 1000;
constexpr int FADE_BLOCKS = Protector::FADE_BLOCKS; // between the modes
constexpr int WARM_BLOCKS = Protector::WARM_BLOCKS; // stages run this long before they are heard
constexpr float FADE_STEP = 1.0f / (FADE_BLOCKS * BLOCK_LEN);
enum Mode
{
    PASS = 0,
    GAIN = 1,
    PROTECT = 2
};

bool HasChannel(const KelvaneDataStruct& oFrame, int iChannel)
{
    return oFrame.psDataIn[iChannel] != nullptr && oFrame.psDataOut[iChannel] != nullptr;
}

double SquareSum(const float* pSamples, int iCount)
{
    constexpr int SUM_COUNT = 8; // independent, for one running sum would wait on every addition
    float f32Sums[SUM_COUNT] = {};
    int i = 0;
    for (; i + SUM_COUNT <= iCount; i += SUM_COUNT)
        for (int j = 0; j < SUM_COUNT; ++j)
            f32Sums[j] += pSamples[i + j] * pSamples[i + j];
    for (; i < iCount; ++i)
        f32Sums[0] += pSamples[i] * pSamples[i];
    double f64Sum = 0.0;
    for (const float f32Sum : f32Sums)
        f64Sum += static_cast<double>(f32Sum);
    return std::isfinite(f64Sum) ? f64Sum : 0.0;
}
} // namespace

bool CKelvaneInstance::SetParams(const KelvaneStruParam& oStruParam)
{
    if (CheckParameters(oStruParam).pInfo != nullptr)
        return false;
    m_oRecord.Store(oStruParam);
    return true;
}

bool CKelvaneInstance::GetParams(KelvaneStruParam& oStruParam) const
{
    int iAttempt = 0;
    while (!m_oRecord.TryLoad(oStruParam, m_oRecord.Count()))
        if (++iAttempt == LOAD_ATTEMPTS)
            return false;
    m_oState.Put(oStruParam);
    return true;
}

void CKelvaneInstance::SetTemperature(int32_t iTemperature)
{
    m_iTemperature.store(iTemperature, std::memory_order_relaxed);
    m_oState.Set(KelvaneState::AMBIENT, 0, iTemperature / 100.0);
}

void CKelvaneInstance::ClearStatus()
{
    m_bClearWanted.store(true, std::memory_order_relaxed);
    SetTemperature(UNKNOWN_TEMPERATURE);
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        m_oState.Set(KelvaneState::COIL_TEMPERATURE, i, UNKNOWN_TEMPERATURE / 100.0);
        m_oState.Set(KelvaneState::MAGNET_TEMPERATURE, i, UNKNOWN_TEMPERATURE / 100.0);
        m_oState.Set(KelvaneState::LEVEL, i, 0.0);
        m_oState.Set(KelvaneState::COIL_POWER, i, 0.0);
    }
}

void CKelvaneInstance::Apply(KelvaneScratch& oScratch, const KelvaneDataStruct& oDataStruct)
{
    const CFloatMode oFloatMode;
    for (int iOffset = 0; iOffset < oDataStruct.iFrameLen;)
    {
        if (m_iPosition == 0)
            TakeSet(oScratch, oDataStruct);
        const int iCount = std::min(oDataStruct.iFrameLen - iOffset, BLOCK_LEN - m_iPosition);
        ProcessPiece(oScratch, oDataStruct, iOffset, iCount);
        m_iPosition += iCount;
        iOffset += iCount;
        if (m_iPosition == BLOCK_LEN)
            FinishBlock(oDataStruct);
    }
}

// One attempt: a set that is replaced while it is read comes in the next block. One that comes while sets change waits.
void CKelvaneInstance::TakeSet(KelvaneScratch& oScratch, const Frame& oFrame)
{
    const uint32_t uSetCount = m_oRecord.Count();
    KelvaneStruParam& oSet = oScratch.oStruParam;
    const bool bChanging = m_bProtector && m_oProtector.IsChanging();
    if (uSetCount == m_uSetCount || bChanging || !m_oRecord.TryLoad(oSet, uSetCount))
        return;
    m_uSetCount = uSetCount;
    m_iMode = oSet.sFFModule[0];
    if (m_iMode != PROTECT)
        for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
            m_oDirect[i].f64Target = m_iMode == GAIN ? oSet.sPOWTargetGain[i] / 100.0 : 1.0;
    else if (m_bProtector)
        m_oProtector.Follow(oSet, Around(oFrame));
    else
        m_oProtector.Init(oSet, m_bStarted, Around(oFrame));
    m_bProtector |= m_iMode == PROTECT;
    if (!m_bStarted)
    {
        for (DirectGain& oDirect : m_oDirect)
            oDirect.Jump();
        m_iFadeBlocks = m_iFadeBefore = m_iMode == PROTECT ? FADE_BLOCKS : 0;
        m_iWarmBlocks = m_iMode == PROTECT ? WARM_BLOCKS : 0;
    }
}

void CKelvaneInstance::ProcessPiece(KelvaneScratch& oScratch, const Frame& oFrame, int iOffset, int iCount)
{
    m_bStarted = true;
    for (int i = 0; i < Protector::PAIRS; ++i)
        if (HasChannel(oFrame, 2 * i) || HasChannel(oFrame, 2 * i + 1))
            ProcessPair(oScratch, oFrame, i, iOffset, iCount);
        else if (m_bProtector)
            m_oProtector.StopPair(i); // what it held is another programme's when it comes back
    if (!m_bProtector)
        return;
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        const float* const pVoltage = oFrame.psVoltageIn[i];
        const float* const pCurrent = oFrame.psCurrentIn[i];
        const bool bSensed = pVoltage != nullptr && pCurrent != nullptr;
        m_oProtector.Sense(i, bSensed ? pVoltage + iOffset : nullptr, bSensed ? pCurrent + iOffset : nullptr, iCount);
    }
}

// Protected, direct, or from one to the other.
void CKelvaneInstance::ProcessPair(KelvaneScratch& oScratch, const Frame& oFrame, int iPair, int iOffset, int iCount)
{
    const bool bRuns = m_iMode == PROTECT || m_iFadeBlocks > 0 || m_iFadeBefore > 0;
    const bool bDirect = m_iFadeBlocks < FADE_BLOCKS || m_iFadeBefore < FADE_BLOCKS;
    const float* pIn[2] = {};
    for (int i = 0; i < 2; ++i)
        if (HasChannel(oFrame, 2 * iPair + i))
            pIn[i] = oFrame.psDataIn[2 * iPair + i] + iOffset;
    if (bRuns)
        m_oProtector.Process(iPair, pIn, m_iPosition, m_iPosition + iCount);
    const float* pHeard[2] = {};
    for (int i = 0; i < 2; ++i)
    {
        const int iChannel = 2 * iPair + i;
        if (pIn[i] == nullptr)
            continue;
        float* const pDirect = oScratch.f32Direct;
        float* const pOut = oFrame.psDataOut[iChannel] + iOffset;
        const float* const pProtected = m_oProtector.Heard().Output(iChannel) + m_iPosition;
        if (bDirect)
            m_oDirect[iChannel].Process(pIn[i], pDirect, m_iPosition, iCount, m_iMode == PASS && !bRuns);
        if (!bRuns || !bDirect)
            memcpy(pOut, bDirect ? pDirect : pProtected, static_cast<size_t>(iCount) * sizeof(float));
        else
            for (int j = 0; j < iCount; ++j)
                pOut[j] = pDirect[j] + (pProtected[j] - pDirect[j]) * Weight(m_iPosition + j);
        m_f64LevelSum[iChannel] += SquareSum(pOut, iCount);
        pHeard[i] = pOut;
    }
    if (m_bProtector)
        m_oProtector.TakeOut(iPair, pHeard, iCount);
}

// Of the protected signal, at a position of the block.
float CKelvaneInstance::Weight(int iPosition) const
{
    const int iWay = (m_iFadeBlocks - m_iFadeBefore) * (iPosition + 1) + m_iFadeBefore * BLOCK_LEN;
    return static_cast<float>(iWay) * FADE_STEP;
}

void CKelvaneInstance::FinishBlock(const Frame& oFrame)
{
    m_iPosition = 0;
    if (m_bProtector)
    {
        if (m_bClearWanted.exchange(false, std::memory_order_relaxed))
            m_oProtector.ClearHeat(Around(oFrame));
        m_oProtector.FinishBlock(Around(oFrame), m_bIvWanted.exchange(false, std::memory_order_relaxed));
    }
    Report();
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        m_f64LevelSum[i] = 0.0;
        m_oDirect[i].FinishBlock();
    }
    m_iFadeBefore = m_iFadeBlocks;
    if (m_iMode == PROTECT)
    {
        m_iWarmBlocks = std::min(m_iWarmBlocks + 1, WARM_BLOCKS);
        m_iFadeBlocks = std::min(m_iFadeBlocks + (m_iWarmBlocks == WARM_BLOCKS), FADE_BLOCKS);
    }
    else if (m_iFadeBlocks > 0)
        --m_iFadeBlocks;
    else if (m_iWarmBlocks > 0)
    {
        m_iWarmBlocks = 0;
        m_oProtector.Stop();
    }
}

// A frame that knows the battery's charge comes first; 0 is a charge that isn't known.
Surroundings CKelvaneInstance::Around(const Frame& oFrame) const
{
    const int32_t iTemperature = m_iTemperature.load(std::memory_order_relaxed);
    const int32_t iTold = m_iBattery.load(std::memory_order_relaxed);
    const bool bKnown = oFrame.BatteryLifePercent > 0 && oFrame.BatteryLifePercent <= 100;
    const int32_t iBattery = bKnown ? oFrame.BatteryLifePercent : iTold;
    Surroundings oAround;
    oAround.bAmbientKnown = iTemperature != UNKNOWN_TEMPERATURE;
    oAround.f64AmbientC = iTemperature / 100.0;
    oAround.f64BatteryPercent = oFrame.ACLineStatus == 1 || iBattery > 100 ? 100.0 : iBattery;
    return oAround;
}

void CKelvaneInstance::Report()
{
    const double f64GivenC = m_iTemperature.load(std::memory_order_relaxed) / 100.0;
    m_oState.Set(KelvaneState::AMBIENT, 0, f64GivenC);
    double f64Ceiling = 1.0;
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        const bool bRuns = m_iMode == PROTECT && m_oProtector.Heard().bPairRuns[i / 2];
        m_oState.Set(KelvaneState::LEVEL, i, 100.0 * std::sqrt(m_f64LevelSum[i] / BLOCK_LEN));
        if (!bRuns)
            m_oState.SetGains(i, m_iMode == PROTECT ? 1.0 : m_oDirect[i].f64Gain);
        else
            f64Ceiling = std::min(f64Ceiling, m_oProtector.Heard().oSpeakers[i].f64Ceiling);
        if (m_bProtector && i < m_oProtector.iChannels)
            m_oState.SetSpeaker(m_oProtector, i, bRuns);
        else
        {
            m_oState.Set(KelvaneState::COIL_TEMPERATURE, i, f64GivenC);
            m_oState.Set(KelvaneState::MAGNET_TEMPERATURE, i, f64GivenC);
        }
    }
    m_oState.Set(KelvaneState::CEILING, 0, f64Ceiling);
}
