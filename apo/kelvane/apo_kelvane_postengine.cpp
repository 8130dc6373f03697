// The data path of the protection engine: split, library, merge.
#include "apo/kelvane/apo_kelvane_postengine.h"

#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_time.h"

#include <string>

namespace
{
// The worker is late. Memory that runs out costs the report.
void ReportInputQueueSize(int iSize)
try
{
    CAudioMonitor::SetGetCPUStatusEvent();
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_INPUT_SIZE) + "KelvaneInpuSize:" + std::to_string(iSize));
}
catch (...)
{
}
} // namespace

int CKelvanePostEngine::InputStandardFrameToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                                  const int& iDataLen)
{
    const bool bInline = m_oStream.m_bInlineMode == 1;
    const int iResult =
        QueueStandardFrames(pMicInputFrames, iInputChannelNum, iDataLen, bInline ? nullptr : ReportInputQueueSize);
    if (bInline)
        DrainInputQueue();
    return iResult;
}

// Runs the algorithm on every queued frame. A frame that the library failed on goes out as it stands.
void CKelvanePostEngine::DrainInputQueue()
{
    CKelvanePostEngine* const pThis = this; // the name that the failure lines carry
    while (SplitInputDataItem() == 0)
    {
        AUDIO_CHECK(pThis->AudioKelvaneApply());
        AUDIO_CHECK(pThis->MergerOutputDataItem());
    }
}

void CKelvanePostEngine::ClearAllQueues()
{
    m_oInput.Clear();
    m_oOutput.Clear();
    try
    {
        m_oTemperature.AudioSmartCancelECTemperature();
    }
    catch (...) // no memory for the word; the engine goes all the same
    {
    }
}

int CKelvanePostEngine::RefreshAlgorithmParams()
{
    return CKelvaneManager::Instance()->GetAlgoCtrlParam(3) == 1 ? m_oChoice.SetAudioHeatEffectParamsID()
                                                                 : m_oChoice.SetAudioVolumeEffectParamsID();
}

int CKelvanePostEngine::SplitInputDataItem()
{
    const CAudioFrame oFrame = m_oInput.Pop(GetInChannelCount() * AUDIO_KELVANE_FRAME_LEN);
    if (oFrame.pData == nullptr)
        return AUDIO_BAD_DATA;
    m_oFrame.Split(oFrame.pData.get());
    return 0;
}

int CKelvanePostEngine::AudioKelvaneApply()
{
    if (const int iMissing = m_oInstance.CheckMemory())
        return iMissing;
    SYSTEMTIME stStart;
    GetLocalTime(&stStart);
    KelvaneDataStruct* const pDataStruct = m_oFrame.DataStruct();
    pDataStruct->SpeakerDBVolume = CAudioMonitor::Instance()->GetSpeakerVolumeDB();
    pDataStruct->SpeakerPersentVolume = static_cast<INT16>(CAudioMonitor::Instance()->GetSpeakerVolume());
    m_oPower.Tell(*pDataStruct);
    const int iRet = m_oInstance.Apply(pDataStruct);
    SYSTEMTIME stEnd;
    GetLocalTime(&stEnd);
    m_oTimes.CountApplyTime(CAudioTIME::GetTimeDiff(stStart, stEnd), m_oStream.m_bInlineMode);
    m_oJobs.CountFrame();
    return iRet;
}

int CKelvanePostEngine::MergerOutputDataItem()
{
    const int iChannelCount = GetOutChannelCount();
    if (AUDIO_FAIL_IF(iChannelCount > KELVANE_MAX_CHANNELS, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    FLOAT32 pOutBuf[KELVANE_MAX_CHANNELS * AUDIO_KELVANE_FRAME_LEN];
    m_oFrame.Merge(iChannelCount, pOutBuf);
    return AUDIO_CHECK(FormatOutputFrameToQueue(pOutBuf, iChannelCount, AUDIO_KELVANE_FRAME_LEN));
}
