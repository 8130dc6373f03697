// Shaping: system frames of any rate and length into 48 kHz blocks for the algorithm, and its output back into them.
#include "apo/base/apo_base_engine.h"

#include "audioapi/audio_api_data.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_trace.h"

#include <string>

namespace
{
constexpr int iLeadInBlockCount = 3; // blocks of silence ahead of a stream whose system frames aren't whole blocks
} // namespace

void CBaseEngine::InitAudioCacheBuffer(const int& iChannel, const UINT32& ulFrameCount)
{
    if (m_eCaches == CacheState::Ready)
        return;
    if (iChannel <= 0 || ulFrameCount == 0 || m_oStream.m_iOutputBlockLen == 0)
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
    const int iCacheFrameDataLen = iPerSampleFrameLen + iAddition + iSysDataLen;

    m_eCaches = CacheState::Refused;
    if (!m_oInput.Allocate(iCacheFrameDataLen, iAddition) ||
        !m_oOutput.Allocate(4 * m_oStream.m_iOutputBlockLen * iChannel, iCacheFrameDataLen))
        return;
    m_eCaches = CacheState::Ready;
    AUDIOLOG_EVENT_INFO("SystemPerFrame Length:" + std::to_string(ulFrameCount) + ",FrameSample:" +
                        std::to_string(iSampleRate) + ",PerSampleFrameLen:" + std::to_string(iPerSampleFrameLen) +
                        ",iCacheFrameDataLen:" + std::to_string(iCacheFrameDataLen) +
                        ",AdditionInputCacheDataLen:" + std::to_string(iAddition));
}

void CBaseEngine::ReleaseAudioCacheBuffer()
{
    m_eCaches = CacheState::None;
    m_oInput.Release();
    m_oOutput.Release();
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

std::unique_ptr<FLOAT32[]> CBaseEngine::FormatNonStandardFrame(const FLOAT32* pInputMicBuffer, const int& iChannel,
                                                               const UINT32& ulFrameCount, int& iReSampleDataLen)
{
    const CTraceLog oTrace(__FUNCTION__, __FILE__, __LINE__, AUDIO_LEVEL_TRACE, {});
    iReSampleDataLen = 0;
    if (!m_oInput.Append(pInputMicBuffer, iChannel, SystemDataLen(iChannel, ulFrameCount)))
        return nullptr;
    int iProcessDataLen = 0;
    const std::unique_ptr<FLOAT32[]> pBlocks = m_oInput.TakeBlocks(iChannel, iProcessDataLen);
    return ReSamplerDataTo48K(pBlocks.get(), iChannel, iChannel > 0 ? iProcessDataLen / iChannel : 0, iReSampleDataLen);
}

int CBaseEngine::FormatOutputFrameToQueue(const FLOAT32* pInputMicBuffer, const int& iChannel, const int& iFrameLen)
{
    const int iOutChannelCount = GetOutChannelCount();
    const int iStandardDataLen = iOutChannelCount * m_oStream.m_iOutputBlockLen * (GetSampleRate() == 22050 ? 2 : 1);
    if (AUDIO_FAIL_IF(iStandardDataLen <= 0, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    if (const int iResult = m_oOutput.AppendAlgoOutput(pInputMicBuffer, iChannel * iFrameLen))
        return iResult;
    const FLOAT32* const pBlock = m_oOutput.Block(iStandardDataLen);
    if (pBlock == nullptr)
        return 0;

    int iReSampleDataLen = 0;
    const std::unique_ptr<FLOAT32[]> pReSamplerBuffer =
        ReSamplerDataFrom48K(pBlock, iOutChannelCount, iStandardDataLen / iOutChannelCount, iReSampleDataLen);
    m_oOutput.DropBlock(iStandardDataLen);

    const int iSystemDataLen = SystemDataLen(iOutChannelCount, static_cast<UINT32>(int{m_oStream.m_iSystemFrameLen}));
    if (const int iResult = m_oOutput.AppendOutputCache(pReSamplerBuffer.get(), iReSampleDataLen, iSystemDataLen))
        return iResult;
    return m_oOutput.CutSystemFrames(iSystemDataLen);
}
