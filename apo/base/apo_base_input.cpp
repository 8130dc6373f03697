// The input queue and the input cache.
#include "apo/base/apo_base_input.h"

#include "apo/base/apo_base_sides.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_data.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <utility>

void CBaseInput::SetLimits(int iHigh, int iLow)
{
    m_iInputQueueHigh = iHigh;
    m_iInputQueueLow = iLow;
}

int CBaseInput::Push(const FLOAT32* pMicInputFrames, int iAlgoDataLen, int iFrameCount, void (*fnFull)(int iSize))
{
    int iResult = 0;
    const std::lock_guard<CAudioLock> oGuard(m_csInputQueue);
    for (int i = 0; i < iFrameCount; ++i)
    {
        iResult = PushFrame(pMicInputFrames, iAlgoDataLen, i);
        if (fnFull != nullptr && m_oInputQueue.Size() >= m_iInputQueueHigh)
            fnFull(m_oInputQueue.Size());
    }
    return iResult;
}

// The caller holds m_csInputQueue.
int CBaseInput::PushFrame(const FLOAT32* pMicInputFrames, int iAlgoDataLen, int i)
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

CAudioFrame CBaseInput::Pop(int iDataLen)
{
    CAudioFrame oFrame;
    do
    {
        const std::lock_guard<CAudioLock> oGuard(m_csInputQueue);
        oFrame = m_oInputQueue.Pop();
    } while (oFrame.pData != nullptr && oFrame.iDataLen != iDataLen);
    return oFrame;
}

void CBaseInput::Clear()
{
    const std::lock_guard<CAudioLock> oGuard(m_csInputQueue);
    m_oInputQueue.Clear();
}

void CBaseInput::CheckInputQueueThreshold()
{
    const std::lock_guard<CAudioLock> oGuard(m_csInputQueue);
    static constexpr CQueueReport oReport = {AUDIO_LOG_SITE, "InputQueue Overflow Size : ", "InputQueue size:"};
    TrimQueue(m_oInputQueue, m_iInputQueueHigh, m_iInputQueueLow, m_oStream, oReport);
}

void CBaseInput::CalcInputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit)
{
    if (IsZeroFrameLimit(pFrame, iDataLen, iLimit, m_iInputZeroCount))
        AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_INPUT_ZERO) + "Input Frame Energy is near zero!");
}

bool CBaseInput::Allocate(int iCacheFrameDataLen, int iAddition)
{
    m_iInputCacheDataLen = iAddition;
    m_pInputCacheBuffer.Allocate(iCacheFrameDataLen);
    return !AUDIO_MISSING(m_pInputCacheBuffer, AUDIO_BAD_DATA);
}

void CBaseInput::Release()
{
    m_pInputCacheBuffer.Release();
    m_iInputCacheDataLen = 0;
}

bool CBaseInput::Append(const FLOAT32* pInputMicBuffer, int iChannel, int iSysDataLen)
{
    // A rest is less than a block, and a block at most 20 ms.
    const int iRestDataLen = std::max(iChannel * PerSampleFrameLen(m_oStream.m_iSampleRate) * 2, m_iInputCacheDataLen);
    if (m_iInputCacheDataLen + iSysDataLen > m_pInputCacheBuffer.GetCapacity() &&
        !GrowCache(m_pInputCacheBuffer, iRestDataLen + iSysDataLen, m_iInputCacheDataLen, m_oStream,
                   "m_pInputCacheBuffer"))
        return false;
    if (AUDIO_CHECK(memmove_s(m_pInputCacheBuffer + m_iInputCacheDataLen, sizeof(FLOAT32) * iSysDataLen,
                              pInputMicBuffer, sizeof(FLOAT32) * iSysDataLen)) != 0)
        std::fill_n(m_pInputCacheBuffer + m_iInputCacheDataLen, iSysDataLen, 0.0F);
    m_iInputCacheDataLen += iSysDataLen;
    return true;
}

std::unique_ptr<FLOAT32[]> CBaseInput::TakeBlocks(int iChannel, int& iProcessDataLen)
{
    iProcessDataLen = CAudioDATA::AlignProcessDataLen(m_iInputCacheDataLen, iChannel, m_oStream.m_iSampleRate);
    std::unique_ptr<FLOAT32[]> pProcessOwner = NewFloats(iProcessDataLen);
    FLOAT32* const m_pInputProcessBuffer = pProcessOwner.get();
    AUDIO_CHECK(memmove_s(m_pInputProcessBuffer, sizeof(FLOAT32) * iProcessDataLen, m_pInputCacheBuffer,
                          sizeof(FLOAT32) * iProcessDataLen));
    m_iInputCacheDataLen -= iProcessDataLen;
    AUDIO_CHECK(memmove_s(m_pInputCacheBuffer, sizeof(FLOAT32) * m_iInputCacheDataLen,
                          m_pInputCacheBuffer + iProcessDataLen, sizeof(FLOAT32) * m_iInputCacheDataLen));
    return pProcessOwner;
}
