// The output queue and the two output caches.
#include "apo/base/apo_base_output.h"

#include "apo/base/apo_base_sides.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_data.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>

void CBaseOutput::SetLimits(int iHigh, int iLow)
{
    m_iOutputQueueHigh = iHigh;
    m_iOutputQueueLow = iLow;
}

bool CBaseOutput::TakePriming()
{
    if (m_iCacheFrameCount <= 0)
        return false;
    --m_iCacheFrameCount;
    AUDIOLOG_DEBUG("Cache Frame decrement:" + std::to_string(m_iCacheFrameCount));
    return true;
}

CAudioFrame CBaseOutput::Pop(int iSystemDataLen)
{
    CAudioFrame oFrame;
    do
    {
        const std::lock_guard<CAudioLock> oGuard(m_csOutputQueue);
        oFrame = m_oOutputQueue.Pop();
    } while (oFrame.pData != nullptr && oFrame.iDataLen != iSystemDataLen);
    return oFrame;
}

void CBaseOutput::Clear()
{
    const std::lock_guard<CAudioLock> oGuard(m_csOutputQueue);
    m_oOutputQueue.Clear();
}

void CBaseOutput::CheckOutputQueueThreshold()
{
    const std::lock_guard<CAudioLock> oGuard(m_csOutputQueue);
    static constexpr CQueueReport oReport = {AUDIO_LOG_SITE, "OutputQueue Overflow Size : ", "OutputQueue size:"};
    TrimQueue(m_oOutputQueue, m_iOutputQueueHigh, m_iOutputQueueLow, m_oStream, oReport);
}

void CBaseOutput::CalcOutputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit)
{
    if (IsZeroFrameLimit(pFrame, iDataLen, iLimit, m_iOutputZeroCount))
        AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_OUTPUT_ZERO) + "Output Frame Energy is near zero!");
}

bool CBaseOutput::Allocate(int iAlgoDataLen, int iCacheFrameDataLen)
{
    m_iAlgoOutputDataLen = 0;
    m_pAlgoOutputBuffer.Allocate(iAlgoDataLen);
    if (AUDIO_MISSING(m_pAlgoOutputBuffer, AUDIO_BAD_DATA))
        return false;
    m_iOutputCacheDataLen = 0;
    m_pOutputCacheBuffer.Allocate(iCacheFrameDataLen);
    return !AUDIO_MISSING(m_pOutputCacheBuffer, AUDIO_BAD_DATA);
}

void CBaseOutput::Release()
{
    m_pAlgoOutputBuffer.Release();
    m_pOutputCacheBuffer.Release();
    m_iAlgoOutputDataLen = 0;
    m_iOutputCacheDataLen = 0;
}

int CBaseOutput::AppendAlgoOutput(const FLOAT32* pInputMicBuffer, int iAlgoDataLen)
{
    const int iDataLen = m_iAlgoOutputDataLen + iAlgoDataLen;
    if (iDataLen > m_pAlgoOutputBuffer.GetCapacity() &&
        !GrowCache(m_pAlgoOutputBuffer, iDataLen, m_iAlgoOutputDataLen, m_oStream, "m_pAlgoOutputBuffer"))
        return AUDIO_BAD_DATA;
    if (AUDIO_CHECK(memmove_s(m_pAlgoOutputBuffer + m_iAlgoOutputDataLen, sizeof(FLOAT32) * iAlgoDataLen,
                              pInputMicBuffer, sizeof(FLOAT32) * iAlgoDataLen)) != 0)
        std::fill_n(m_pAlgoOutputBuffer + m_iAlgoOutputDataLen, iAlgoDataLen, 0.0F);
    m_iAlgoOutputDataLen += iAlgoDataLen;
    return 0;
}

const FLOAT32* CBaseOutput::Block(int iStandardDataLen) const
{
    return m_iAlgoOutputDataLen >= iStandardDataLen ? static_cast<const FLOAT32*>(m_pAlgoOutputBuffer) : nullptr;
}

void CBaseOutput::DropBlock(int iStandardDataLen)
{
    m_iAlgoOutputDataLen -= iStandardDataLen;
    AUDIO_CHECK(memmove_s(m_pAlgoOutputBuffer, sizeof(FLOAT32) * m_iAlgoOutputDataLen,
                          m_pAlgoOutputBuffer + iStandardDataLen, sizeof(FLOAT32) * m_iAlgoOutputDataLen));
}

int CBaseOutput::AppendOutputCache(const FLOAT32* pReSamplerBuffer, int iReSampleDataLen, int iSystemDataLen)
{
    if ((m_pOutputCacheBuffer == nullptr ||
         m_iOutputCacheDataLen + iReSampleDataLen > m_pOutputCacheBuffer.GetCapacity()) &&
        !GrowCache(m_pOutputCacheBuffer, std::max(m_iOutputCacheDataLen, iSystemDataLen) + iReSampleDataLen,
                   m_iOutputCacheDataLen, m_oStream, "m_pOutputCacheBuffer"))
        return AUDIO_BAD_DATA;
    const int m_iCacheFrameDataLen = m_pOutputCacheBuffer.GetCapacity(); // the name that the failure line carries
    if (AUDIO_CHECK(memmove_s(m_pOutputCacheBuffer + m_iOutputCacheDataLen, sizeof(FLOAT32) * m_iCacheFrameDataLen,
                              pReSamplerBuffer, sizeof(FLOAT32) * iReSampleDataLen)) != 0)
        std::fill_n(m_pOutputCacheBuffer + m_iOutputCacheDataLen, iReSampleDataLen, 0.0F);
    m_iOutputCacheDataLen += iReSampleDataLen;
    return 0;
}

int CBaseOutput::CutSystemFrames(int iSystemDataLen)
{
    int iResult = 0;
    while (iSystemDataLen > 0 && m_iOutputCacheDataLen >= iSystemDataLen)
    {
        CAudioFrame oFrame{NewFloats(iSystemDataLen), iSystemDataLen};
        FLOAT32* const pFloatFrameData = oFrame.pData.get();
        if (AUDIO_MISSING(pFloatFrameData, AUDIO_NO_HANDLE))
            return AUDIO_NO_HANDLE;
        iResult = AUDIO_CHECK(memmove_s(pFloatFrameData, sizeof(FLOAT32) * iSystemDataLen, m_pOutputCacheBuffer,
                                        sizeof(FLOAT32) * iSystemDataLen));
        m_iOutputCacheDataLen -= iSystemDataLen;
        if (m_iOutputCacheDataLen > 0)
            iResult =
                AUDIO_CHECK(memmove_s(m_pOutputCacheBuffer, sizeof(FLOAT32) * m_iOutputCacheDataLen,
                                      m_pOutputCacheBuffer + iSystemDataLen, sizeof(FLOAT32) * m_iOutputCacheDataLen));
        AUDIOLOG_DEBUG("iSystemDataLen=" + std::to_string(iSystemDataLen) +
                       ", left m_iOutputDataLen=" + std::to_string(m_iOutputCacheDataLen));
        const std::lock_guard<CAudioLock> oGuard(m_csOutputQueue);
        if (AUDIO_FAIL_IF(!m_oOutputQueue.Push(std::move(oFrame)), AUDIO_NO_HANDLE))
            return AUDIO_NO_HANDLE;
    }
    return iResult;
}
