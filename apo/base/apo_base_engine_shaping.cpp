// Shaping: system frames of any rate and length into 48 kHz blocks for the algorithm, and its output back into them.
#include "apo/base/apo_base_engine.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_trace.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <string>
#include <utility>

namespace
{
constexpr int iLeadInBlockCount = 3; // blocks of silence ahead of a stream whose system frames aren't whole blocks

// Sample frames of 10 ms; halves away from zero, so 221 at 22050 Hz.
int PerSampleFrameLen(int iSampleRate)
{
    return static_cast<int>(std::lround(static_cast<double>(iSampleRate) / 100.0));
}

// Floats of a system frame. 0 for one longer than any buffer, so that lengths can be added and converted in 32 bits.
int SystemDataLen(int iChannel, UINT32 ulFrameCount)
{
    constexpr INT64 iMaxDataLen = 1 << 27;
    const INT64 iDataLen = static_cast<INT64>(iChannel) * ulFrameCount;
    return iDataLen > 0 && iDataLen <= iMaxDataLen ? static_cast<int>(iDataLen) : 0;
}
} // namespace

void CBaseEngine::InitAudioCacheBuffer(const int& iChannel, const UINT32& ulFrameCount)
{
    if (m_bCacheReady)
        return;
    if (iChannel <= 0 || ulFrameCount == 0 || m_iOutputBlockLen == 0)
        return;
    const int iSysDataLen = SystemDataLen(iChannel, ulFrameCount);
    if (AUDIO_FAIL_IF(iSysDataLen <= 0, AUDIO_BAD_DATA))
        return;
    const int iSampleRate = GetSampleRate();
    const int iPerSampleFrameLen = PerSampleFrameLen(iSampleRate);
    const int iPerSampleDataLen = iChannel * iPerSampleFrameLen;
    if (AUDIO_FAIL_IF(iPerSampleDataLen <= 0, AUDIO_BAD_DATA))
        return;
    const bool bWholeBlocks = CAudioDATA::AlignProcessDataLen(iSysDataLen, iChannel, iSampleRate) == iSysDataLen;
    const int iAddition = bWholeBlocks ? 0 : iLeadInBlockCount * iPerSampleDataLen;

    m_iInputCacheDataLen = iAddition;
    m_iCacheFrameDataLen = iPerSampleFrameLen + iAddition + iSysDataLen;
    m_pInputCacheBuffer.Allocate(m_iCacheFrameDataLen);
    if (AUDIO_MISSING(m_pInputCacheBuffer, AUDIO_BAD_DATA))
        return;
    m_iAlgoOutputDataLen = 0;
    m_pAlgoOutputBuffer.Allocate(4 * m_iOutputBlockLen * iChannel);
    if (AUDIO_MISSING(m_pAlgoOutputBuffer, AUDIO_BAD_DATA))
        return;
    m_iOutputCacheDataLen = 0;
    m_pOutputCacheBuffer.Allocate(m_iCacheFrameDataLen);
    if (AUDIO_MISSING(m_pOutputCacheBuffer, AUDIO_BAD_DATA))
        return;
    m_bCacheReady = true;
    AUDIOLOG_EVENT_INFO("SystemPerFrame Length:" + std::to_string(ulFrameCount) + ",FrameSample:" +
                        std::to_string(iSampleRate) + ",PerSampleFrameLen:" + std::to_string(iPerSampleFrameLen) +
                        ",iCacheFrameDataLen:" + std::to_string(m_iCacheFrameDataLen) +
                        ",AdditionInputCacheDataLen:" + std::to_string(iAddition));
}

void CBaseEngine::ReleaseAudioCacheBuffer()
{
    m_bCacheReady = false;
    m_pInputCacheBuffer.Release();
    m_pAlgoOutputBuffer.Release();
    m_pOutputCacheBuffer.Release();
    m_iCacheFrameDataLen = 0;
    m_iInputCacheDataLen = 0;
    m_iAlgoOutputDataLen = 0;
    m_iOutputCacheDataLen = 0;
}

int CBaseEngine::InputNonStandardFrameToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                              const UINT32& ulFrameCount)
{
    const CTraceLog oTrace(__FUNCTION__, __FILE__, __LINE__, AUDIO_LEVEL_TRACE, {});
    int iReSampleDataLen = 0;
    const std::unique_ptr<FLOAT32[]> pReSamplerOwner =
        FormatNonStandardFrame(pMicInputFrames, iInputChannelNum, ulFrameCount, iReSampleDataLen);
    const FLOAT32* const pReSamplerBuffer = pReSamplerOwner.get();
    if (AUDIO_MISSING(pReSamplerBuffer, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    return AUDIO_CHECK(InputStandardFrameToQueue(pReSamplerBuffer, iInputChannelNum, iReSampleDataLen));
}

// A source that can't be read goes in as silence, so that the stream keeps its time.
std::unique_ptr<FLOAT32[]> CBaseEngine::FormatNonStandardFrame(const FLOAT32* pInputMicBuffer, const int& iChannel,
                                                               const UINT32& ulFrameCount, int& iReSampleDataLen)
{
    const CTraceLog oTrace(__FUNCTION__, __FILE__, __LINE__, AUDIO_LEVEL_TRACE, {});
    iReSampleDataLen = 0;
    const int iSysDataLen = SystemDataLen(iChannel, ulFrameCount);
    const int iSampleRate = GetSampleRate();
    // A rest is less than a block, and a block at most 20 ms.
    const int iRestDataLen = std::max(iChannel * PerSampleFrameLen(iSampleRate) * 2, m_iInputCacheDataLen);
    if (m_iInputCacheDataLen + iSysDataLen > m_pInputCacheBuffer.GetCapacity() &&
        !GrowCache(m_pInputCacheBuffer, iRestDataLen + iSysDataLen, m_iInputCacheDataLen, "m_pInputCacheBuffer"))
        return nullptr;
    if (AUDIO_CHECK(memmove_s(m_pInputCacheBuffer + m_iInputCacheDataLen, sizeof(FLOAT32) * iSysDataLen,
                              pInputMicBuffer, sizeof(FLOAT32) * iSysDataLen)) != 0)
        std::fill_n(m_pInputCacheBuffer + m_iInputCacheDataLen, iSysDataLen, 0.0F);
    m_iInputCacheDataLen += iSysDataLen;

    const int iProcessDataLen =
        iChannel > 0 ? CAudioDATA::AlignProcessDataLen(m_iInputCacheDataLen, iChannel, iSampleRate) : 0;
    const std::unique_ptr<FLOAT32[]> pProcessOwner = NewFloats(iProcessDataLen);
    FLOAT32* const m_pInputProcessBuffer = pProcessOwner.get();
    AUDIO_CHECK(memmove_s(m_pInputProcessBuffer, sizeof(FLOAT32) * iProcessDataLen, m_pInputCacheBuffer,
                          sizeof(FLOAT32) * iProcessDataLen));
    m_iInputCacheDataLen -= iProcessDataLen;
    AUDIO_CHECK(memmove_s(m_pInputCacheBuffer, sizeof(FLOAT32) * m_iInputCacheDataLen,
                          m_pInputCacheBuffer + iProcessDataLen, sizeof(FLOAT32) * m_iInputCacheDataLen));
    return ReSamplerDataTo48K(m_pInputProcessBuffer, iChannel, iChannel > 0 ? iProcessDataLen / iChannel : 0,
                              iReSampleDataLen);
}

int CBaseEngine::FormatOutputFrameToQueue(const FLOAT32* pInputMicBuffer, const int& iChannel, const int& iFrameLen)
{
    const int iOutChannelCount = GetOutChannelCount();
    const int iStandardDataLen = iOutChannelCount * m_iOutputBlockLen * (GetSampleRate() == 22050 ? 2 : 1);
    if (AUDIO_FAIL_IF(iStandardDataLen <= 0, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    if (const int iResult = AppendAlgoOutput(pInputMicBuffer, iChannel * iFrameLen))
        return iResult;
    if (m_iAlgoOutputDataLen < iStandardDataLen)
        return 0;

    int iReSampleDataLen = 0;
    const std::unique_ptr<FLOAT32[]> pReSamplerBuffer = ReSamplerDataFrom48K(
        m_pAlgoOutputBuffer, iOutChannelCount, iStandardDataLen / iOutChannelCount, iReSampleDataLen);
    m_iAlgoOutputDataLen -= iStandardDataLen;
    AUDIO_CHECK(memmove_s(m_pAlgoOutputBuffer, sizeof(FLOAT32) * m_iAlgoOutputDataLen,
                          m_pAlgoOutputBuffer + iStandardDataLen, sizeof(FLOAT32) * m_iAlgoOutputDataLen));

    const int iSystemDataLen = SystemDataLen(iOutChannelCount, static_cast<UINT32>(int{m_iSystemFrameLen}));
    if (const int iResult = AppendOutputCache(pReSamplerBuffer.get(), iReSampleDataLen, iSystemDataLen))
        return iResult;
    return CutSystemFrames(iSystemDataLen);
}

// AUDIO_BAD_DATA without memory: the frame is lost.
int CBaseEngine::AppendAlgoOutput(const FLOAT32* pInputMicBuffer, int iAlgoDataLen)
{
    const int iDataLen = m_iAlgoOutputDataLen + iAlgoDataLen;
    if (iDataLen > m_pAlgoOutputBuffer.GetCapacity() &&
        !GrowCache(m_pAlgoOutputBuffer, iDataLen, m_iAlgoOutputDataLen, "m_pAlgoOutputBuffer"))
        return AUDIO_BAD_DATA;
    if (AUDIO_CHECK(memmove_s(m_pAlgoOutputBuffer + m_iAlgoOutputDataLen, sizeof(FLOAT32) * iAlgoDataLen,
                              pInputMicBuffer, sizeof(FLOAT32) * iAlgoDataLen)) != 0)
        std::fill_n(m_pAlgoOutputBuffer + m_iAlgoOutputDataLen, iAlgoDataLen, 0.0F);
    m_iAlgoOutputDataLen += iAlgoDataLen;
    return 0;
}

// A block that couldn't be converted goes out as silence. AUDIO_BAD_DATA without memory: the block is lost.
int CBaseEngine::AppendOutputCache(const FLOAT32* pReSamplerBuffer, int iReSampleDataLen, int iSystemDataLen)
{
    if (m_pOutputCacheBuffer == nullptr || m_iOutputCacheDataLen + iReSampleDataLen > m_iCacheFrameDataLen)
    {
        const int iDataLen = std::max(m_iOutputCacheDataLen, iSystemDataLen) + iReSampleDataLen;
        if (!GrowCache(m_pOutputCacheBuffer, iDataLen, m_iOutputCacheDataLen, "m_pOutputCacheBuffer"))
            return AUDIO_BAD_DATA;
        m_iCacheFrameDataLen = iDataLen;
    }
    if (AUDIO_CHECK(memmove_s(m_pOutputCacheBuffer + m_iOutputCacheDataLen, sizeof(FLOAT32) * m_iCacheFrameDataLen,
                              pReSamplerBuffer, sizeof(FLOAT32) * iReSampleDataLen)) != 0)
        std::fill_n(m_pOutputCacheBuffer + m_iOutputCacheDataLen, iReSampleDataLen, 0.0F);
    m_iOutputCacheDataLen += iReSampleDataLen;
    return 0;
}

// Queues every whole system frame of the output cache. The last copy's code, or AUDIO_NO_HANDLE when a frame can't be
// had.
int CBaseEngine::CutSystemFrames(int iSystemDataLen)
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

// Makes a cache longer for callbacks that are longer than the first; its side's thread alone touches it.
bool CBaseEngine::GrowCache(CAudioFloatCache& oCache, int iDataLen, int iKeepDataLen, const char* pName)
{
    if (!oCache.Grow(iDataLen, iKeepDataLen))
    {
        AUDIOLOG_ERROR(AUDIO_BAD_DATA, pName);
        return false;
    }
    AUDIOLOG_INFO(std::string(pName) + " grown, SystemPerFrame Length:" + std::to_string(m_iSystemFrameLen) +
                  ",FrameSample:" + std::to_string(m_iSampleRate) + ",iCacheFrameDataLen:" + std::to_string(iDataLen));
    return true;
}
