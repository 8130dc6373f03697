// The two frame queues: what goes in, what comes out, how full they may get, and the mirrors of the status record.
#include "apo/base/apo_base_engine.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>

CBaseEngine::CBaseEngine() = default;

CBaseEngine::~CBaseEngine()
{
    CAudioMonitor::StopMonitorThread(&m_bThreadRun, m_hApplyEvent, m_pThreadWorker);
}

void CBaseEngine::SetInitData(const BYTE*)
{
}

int CBaseEngine::InputDataToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                  const UINT32& ulFrameCount)
{
    InitAudioCacheBuffer(iInputChannelNum, ulFrameCount);
    if (!m_bCacheReady && m_iCacheFrameDataLen > 0)
        return AUDIO_BAD_DATA; // no memory; until the caches exist no frame may reach the worker, which uses them
    const bool bStandard =
        ulFrameCount % static_cast<UINT32>(m_iStandardFrameLen) == 0 && GetSampleRate() == AUDIO_KELVANE_SAMPLE_RATE;
    const int iResult =
        bStandard
            ? AUDIO_CHECK(InputStandardFrameToQueue(pMicInputFrames, iInputChannelNum, ulFrameCount * iInputChannelNum))
            : AUDIO_CHECK(InputNonStandardFrameToQueue(pMicInputFrames, iInputChannelNum, ulFrameCount));
    if (iResult == 0)
        CheckInputQueueThreshold();
    return iResult;
}

int CBaseEngine::InputStandardFrameToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                           const int& iDataLen)
{
    const int iAlgoDataLen = iInputChannelNum * m_iStandardFrameLen;
    if (AUDIO_FAIL_IF(iAlgoDataLen <= 0, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    int iResult = 0;
    {
        const std::lock_guard<CAudioLock> oGuard(m_csInputQueue);
        for (int i = 0; i < iDataLen / iAlgoDataLen; ++i)
            iResult = PushInputFrame(pMicInputFrames, iAlgoDataLen, i);
    }
    SetEvent(m_hApplyEvent);
    return iResult;
}

int CBaseEngine::PushInputFrame(const FLOAT32* pMicInputFrames, int iAlgoDataLen, int i)
{
    CAudioFrame oFrame{NewFloats(iAlgoDataLen), iAlgoDataLen};
    FLOAT32* const pInputDataIn = oFrame.pData.get();
    if (AUDIO_MISSING(pInputDataIn, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    if (pMicInputFrames == nullptr)
        i = 0; // null has no frame i either; the copy refuses it
    const int iResult = AUDIO_CHECK(memmove_s(pInputDataIn, sizeof(FLOAT32) * iAlgoDataLen,
                                              pMicInputFrames + (iAlgoDataLen * i), sizeof(FLOAT32) * iAlgoDataLen));
    if (iResult != 0)
        std::fill_n(pInputDataIn, iAlgoDataLen, 0.0F);
    CalcInputFrameEnergy(pInputDataIn, iAlgoDataLen, AUDIO_ZERO_FRAME_LIMIT);
    return AUDIO_FAIL_IF(!m_oInputQueue.Push(std::move(oFrame)), AUDIO_BAD_DATA) ? AUDIO_BAD_DATA : iResult;
}

int CBaseEngine::OutputDataFromQueue(FLOAT32* pf32OutputFrames, const int& iChannel, const UINT32& ulFrameCount)
{
    const int iSystemDataLen = static_cast<int>(iChannel * ulFrameCount);
    if (m_iCacheFrameCount > 0)
    {
        --m_iCacheFrameCount;
        AUDIOLOG_DEBUG("Cache Frame decrement:" + std::to_string(m_iCacheFrameCount));
        if (pf32OutputFrames != nullptr)
            std::fill_n(pf32OutputFrames, iSystemDataLen, 0.0F);
        return 0;
    }
    const CAudioFrame oFrame = PopOutputFrame(iSystemDataLen);
    const FLOAT32* const pFloat32DataOut = oFrame.pData.get();
    if (pFloat32DataOut == nullptr)
    {
        AUDIOLOG_EVENT_WARN(std::string(AUDIO_APO_TYPE_TAG[m_iAPOType]) +
                            " Output Queue is empty, will be appear PoP!");
        return 0;
    }
    const int iResult = AUDIO_CHECK(memmove_s(pf32OutputFrames, sizeof(FLOAT32) * iSystemDataLen, pFloat32DataOut,
                                              sizeof(FLOAT32) * iSystemDataLen));
    CalcOutputFrameEnergy(pf32OutputFrames, iSystemDataLen, AUDIO_ZERO_FRAME_LIMIT);
    CheckOutputQueueThreshold();
    return iResult;
}

// The oldest frame of iSystemDataLen floats. Frames of another length, cut just before the callback changed its own,
// go.
CAudioFrame CBaseEngine::PopOutputFrame(int iSystemDataLen)
{
    CAudioFrame oFrame;
    do
    {
        const std::lock_guard<CAudioLock> oGuard(m_csOutputQueue);
        oFrame = m_oOutputQueue.Pop();
    } while (oFrame.pData != nullptr && oFrame.iDataLen != iSystemDataLen);
    return oFrame;
}

void CBaseEngine::ResetOutputQueue()
{
    if (m_bInlineMode == 0)
        m_iCacheFrameCount = AUDIO_CACHE_FRAME_NUM;
    const std::lock_guard<CAudioLock> oGuard(m_csOutputQueue);
    while (!m_oOutputQueue.Empty())
        m_oOutputQueue.Pop();
}

void CBaseEngine::CheckInputQueueThreshold()
{
    const std::lock_guard<CAudioLock> oGuard(m_csInputQueue);
    static constexpr QueueReport oReport = {AUDIO_LOG_SITE, "InputQueue Overflow Size : ", "InputQueue size:"};
    TrimQueue(m_oInputQueue, m_iInputQueueHigh, m_iInputQueueLow, oReport);
}

void CBaseEngine::CheckOutputQueueThreshold()
{
    const std::lock_guard<CAudioLock> oGuard(m_csOutputQueue);
    static constexpr QueueReport oReport = {AUDIO_LOG_SITE, "OutputQueue Overflow Size : ", "OutputQueue size:"};
    TrimQueue(m_oOutputQueue, m_iOutputQueueHigh, m_iOutputQueueLow, oReport);
}

// The caller holds the queue's lock.
void CBaseEngine::TrimQueue(CAudioFrameQueue& oQueue, int iHigh, int iLow, const QueueReport& oReport)
{
    const int iSize = oQueue.Size();
    if (iSize >= iHigh && m_bInlineMode == 0)
    {
        AUDIO_LOG_AT(oReport.oSite, AUDIO_LEVEL_WARN, 0, oReport.pOverflowText + std::to_string(iSize));
        while (!oQueue.Empty() && oQueue.Size() >= iLow)
            oQueue.Pop();
    }
    else if (m_iProcessCount == AUDIO_PROCESS_COUNT_MAX || m_bInlineMode == 1)
    {
        AUDIO_LOG_AT(oReport.oSite, AUDIO_LEVEL_DEBUG, 0, oReport.pSizeText + std::to_string(iSize));
    }
}

void CBaseEngine::CalcInputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit)
{
    if (IsZeroFrameLimit(pFrame, iDataLen, iLimit, m_iInputZeroCount))
        AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_INPUT_ZERO) + "Input Frame Energy is near zero!");
}

void CBaseEngine::CalcOutputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit)
{
    if (IsZeroFrameLimit(pFrame, iDataLen, iLimit, m_iOutputZeroCount))
        AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_OUTPUT_ZERO) + "Output Frame Energy is near zero!");
}

bool CBaseEngine::IsZeroFrameLimit(const FLOAT32* pFrame, int iDataLen, int iLimit, int& iZeroCount)
{
    const bool bNearZero = CAudioDATA::IsNearZeroEnergy(pFrame, iDataLen);
    const bool bLimit = bNearZero && iZeroCount + 1 >= iLimit;
    iZeroCount = bNearZero && !bLimit ? iZeroCount + 1 : 0;
    return bLimit;
}

int CBaseEngine::RefreshMirror(const int& iRefresh, MonitorGetter fnRead, MirrorSetter fnStore,
                               const CAudioInt& iMirror)
{
    if (iRefresh == 1)
        (this->*fnStore)((CAudioMonitor::Instance()->*fnRead)());
    return iMirror;
}

int CBaseEngine::GetHeadsetMode(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetHeadSetMode, &CBaseEngine::SetHeadsetMode, m_iHeadsetMode);
}

int CBaseEngine::GetHeadsetStatus(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetHeadSetStatus, &CBaseEngine::SetHeadsetStatus, m_iHeadsetStatus);
}

int CBaseEngine::GetHeadsetType(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetHeadSetType, &CBaseEngine::SetHeadsetType, m_iHeadsetType);
}

int CBaseEngine::GetLyranaMode(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetLyranaMode, &CBaseEngine::SetLyranaMode, m_iLyranaMode);
}

int CBaseEngine::GetHeadphoneMode(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetHeadphoneMode, &CBaseEngine::SetHeadphoneMode, m_iHeadphoneMode);
}

int CBaseEngine::GetMicrophoneMode(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetMicrophoneMode, &CBaseEngine::SetMicrophoneMode,
                         m_iMicrophoneMode);
}

int CBaseEngine::GetSpeakerMode(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetSpeakerMode, &CBaseEngine::SetSpeakerMode, m_iSpeakerMode);
}

int CBaseEngine::GetSilentSpace(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetSilentSpace, &CBaseEngine::SetSilentSpace, m_iSilentSpace);
}

int CBaseEngine::GetSpeakerVolume(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetSpeakerVolume, &CBaseEngine::SetSpeakerVolume, m_iSpeakerVolume);
}

int CBaseEngine::GetAPOMode(const int& iRefresh)
{
    return RefreshMirror(iRefresh, &CAudioMonitor::GetMultiRender, &CBaseEngine::SetAPOMode, m_iAPOMode);
}
