// The engine's way between callback and algorithm, and the mirrors of the status record.
#include "apo/base/apo_base_engine.h"

#include "apo/base/apo_base_sides.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <string>

namespace
{
using MonitorGetter = int (CAudioMonitor::*)() const;
using MirrorSetter = int (CBaseEngine::*)(const int&);

int RefreshMirror(CBaseEngine& oEngine, const int& iRefresh, MonitorGetter fnRead, MirrorSetter fnStore,
                  const CAudioInt& iMirror)
{
    if (iRefresh == 1)
        (oEngine.*fnStore)((CAudioMonitor::Instance()->*fnRead)());
    return iMirror;
}
} // namespace

CBaseEngine::CBaseEngine() = default;

CBaseEngine::~CBaseEngine()
{
    CAudioMonitor::StopMonitorThread(&m_bThreadRun, m_hApplyEvent, m_pThreadWorker);
}

void CBaseEngine::SetInitData(const BYTE*)
{
}

void CBaseEngine::BeginPeriod(int iSystemFrameLen)
{
    if (m_oStream.m_iSystemFrameLen != iSystemFrameLen)
    {
        AUDIOLOG_DEBUG("LastSystemFrameLength:" + std::to_string(m_oStream.m_iSystemFrameLen) +
                       ", CurrentSystemFrameLength:" + std::to_string(iSystemFrameLen));
        ResetOutputQueue();
    }
    m_oStream.m_iSystemFrameLen = iSystemFrameLen;
}

void CBaseEngine::EndPeriod()
{
    m_oStream.m_iProcessCount = m_oStream.m_iProcessCount < AUDIO_PROCESS_COUNT_MAX ? m_oStream.m_iProcessCount + 1 : 0;
}

int CBaseEngine::InputDataToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                  const UINT32& ulFrameCount)
{
    InitAudioCacheBuffer(iInputChannelNum, ulFrameCount);
    if (m_eCaches == CacheState::Refused)
        return AUDIO_BAD_DATA; // no memory; until the caches exist no frame may reach the worker, which uses them
    const bool bStandard = ulFrameCount % static_cast<UINT32>(m_oStream.m_iStandardFrameLen) == 0 &&
                           GetSampleRate() == AUDIO_KELVANE_SAMPLE_RATE;
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
    return QueueStandardFrames(pMicInputFrames, iInputChannelNum, iDataLen, nullptr);
}

int CBaseEngine::QueueStandardFrames(const FLOAT32* pMicInputFrames, const int& iInputChannelNum, const int& iDataLen,
                                     void (*fnFull)(int iSize))
{
    const int iAlgoDataLen = iInputChannelNum * m_oStream.m_iStandardFrameLen;
    if (AUDIO_FAIL_IF(iAlgoDataLen <= 0, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    const int iResult = m_oInput.Push(pMicInputFrames, iAlgoDataLen, iDataLen / iAlgoDataLen, fnFull);
    if (m_oStream.m_bInlineMode == 0)
        SetEvent(m_hApplyEvent);
    return iResult;
}

int CBaseEngine::OutputDataFromQueue(FLOAT32* pf32OutputFrames, const int& iChannel, const UINT32& ulFrameCount)
{
    const int iSystemDataLen = static_cast<int>(iChannel * ulFrameCount);
    if (m_oOutput.TakePriming())
    {
        if (pf32OutputFrames != nullptr)
            std::fill_n(pf32OutputFrames, iSystemDataLen, 0.0F);
        return 0;
    }
    const CAudioFrame oFrame = m_oOutput.Pop(iSystemDataLen);
    const FLOAT32* const pFloat32DataOut = oFrame.pData.get();
    if (pFloat32DataOut == nullptr)
    {
        AUDIOLOG_EVENT_WARN(std::string(GetAPOTypeTag()) + " Output Queue is empty, will be appear PoP!");
        return 0;
    }
    const int iResult = AUDIO_CHECK(memmove_s(pf32OutputFrames, sizeof(FLOAT32) * iSystemDataLen, pFloat32DataOut,
                                              sizeof(FLOAT32) * iSystemDataLen));
    CalcOutputFrameEnergy(pf32OutputFrames, iSystemDataLen, AUDIO_ZERO_FRAME_LIMIT);
    CheckOutputQueueThreshold();
    return iResult;
}

void CBaseEngine::ResetOutputQueue()
{
    if (m_oStream.m_bInlineMode == 0)
        m_oOutput.SetPriming(AUDIO_CACHE_FRAME_NUM);
    m_oOutput.Clear();
}

void CBaseEngine::CheckInputQueueThreshold()
{
    m_oInput.CheckInputQueueThreshold();
}

void CBaseEngine::CheckOutputQueueThreshold()
{
    m_oOutput.CheckOutputQueueThreshold();
}

void CBaseEngine::CalcInputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit)
{
    m_oInput.CalcInputFrameEnergy(pFrame, iDataLen, iLimit);
}

void CBaseEngine::CalcOutputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit)
{
    m_oOutput.CalcOutputFrameEnergy(pFrame, iDataLen, iLimit);
}

int CBaseEngine::GetHeadsetMode(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetHeadSetMode, &CBaseEngine::SetHeadsetMode,
                         m_oMirrors.m_iHeadsetMode);
}

int CBaseEngine::GetHeadsetStatus(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetHeadSetStatus, &CBaseEngine::SetHeadsetStatus,
                         m_oMirrors.m_iHeadsetStatus);
}

int CBaseEngine::GetHeadsetType(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetHeadSetType, &CBaseEngine::SetHeadsetType,
                         m_oMirrors.m_iHeadsetType);
}

int CBaseEngine::GetLyranaMode(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetLyranaMode, &CBaseEngine::SetLyranaMode,
                         m_oMirrors.m_iLyranaMode);
}

int CBaseEngine::GetHeadphoneMode(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetHeadphoneMode, &CBaseEngine::SetHeadphoneMode,
                         m_oMirrors.m_iHeadphoneMode);
}

int CBaseEngine::GetMicrophoneMode(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetMicrophoneMode, &CBaseEngine::SetMicrophoneMode,
                         m_oMirrors.m_iMicrophoneMode);
}

int CBaseEngine::GetSpeakerMode(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetSpeakerMode, &CBaseEngine::SetSpeakerMode,
                         m_oMirrors.m_iSpeakerMode);
}

int CBaseEngine::GetSilentSpace(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetSilentSpace, &CBaseEngine::SetSilentSpace,
                         m_oMirrors.m_iSilentSpace);
}

int CBaseEngine::GetSpeakerVolume(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetSpeakerVolume, &CBaseEngine::SetSpeakerVolume,
                         m_oMirrors.m_iSpeakerVolume);
}

int CBaseEngine::GetAPOMode(const int& iRefresh)
{
    return RefreshMirror(*this, iRefresh, &CAudioMonitor::GetMultiRender, &CBaseEngine::SetAPOMode,
                         m_oMirrors.m_iAPOMode);
}
