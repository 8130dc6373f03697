// The data path of the protection engine: split, library, merge, and the statistics and periodic work behind them.
#include "apo/kelvane/apo_kelvane_postengine.h"

#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_dump.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_time.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

namespace
{
constexpr int iReportFrameCount = 1000; // a timing period has one frame more
constexpr INT64 i64GapTimeLimit = 10;   // milliseconds for two frames, which is their playing time

constexpr int iFrameBytes = AUDIO_KELVANE_FRAME_LEN * static_cast<int>(sizeof(FLOAT32)); // of one channel
constexpr FLOAT32 aSilence[AUDIO_KELVANE_FRAME_LEN] = {};

// Whether no sample is infinite or not a number: all exponent bits set stand for these.
bool IsFinite(const FLOAT32* pSamples)
{
    UINT32 iNotFinite = 0;
    for (int s = 0; s < AUDIO_KELVANE_FRAME_LEN; ++s)
    {
        UINT32 iBits;
        std::memcpy(&iBits, pSamples + s, sizeof(iBits));
        iNotFinite |= static_cast<UINT32>((iBits & 0x7F800000U) == 0x7F800000U);
    }
    return iNotFinite == 0;
}

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

void MergeChannel(const FLOAT32* pDataOut, int iChannelCount, int ch, FLOAT32* pOutBuf)
{
    for (int s = 0; s < AUDIO_KELVANE_FRAME_LEN; ++s)
        pOutBuf[s * iChannelCount + ch] = pDataOut[s];
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
        AudioSmartCancelECTemperature();
    }
    catch (...) // no memory for the word; the engine goes all the same
    {
    }
}

int CKelvanePostEngine::SplitInputDataItem()
{
    const int n = GetInChannelCount();
    const CAudioFrame oFrame = m_oInput.Pop(n * AUDIO_KELVANE_FRAME_LEN);
    if (oFrame.pData == nullptr)
        return AUDIO_BAD_DATA;

    // In DIV mode and with four channels, two stream channels drive four of the library's.
    const bool bDIVMode = CKelvaneManager::Instance()->m_iDIVMode == 1;
    const int iSplitCount = !bDIVMode && n == 4 ? 2 : n;
    for (int ch = 0; ch < iSplitCount; ++ch)
    {
        SplitChannel(oFrame.pData.get(), n, ch, ch);
        if (bDIVMode || n == 4)
            SplitChannel(oFrame.pData.get(), n, ch, ch + 2);
    }
    DumpInputDataItem(m_pDataStruct, n * AUDIO_KELVANE_FRAME_LEN);
    return 0;
}

// As the library sees the channels; one without an array is silent.
void CKelvanePostEngine::DumpInputDataItem(const KelvaneDataStruct* pDataStruct, int iDataLen)
{
    if (!CAudioDump::Instance()->IsDetailOn() || iDataLen == 0 || pDataStruct == nullptr)
        return;
    const int iChannelCount = std::min(GetInChannelCount(), KELVANE_MAX_CHANNELS);
    FLOAT32 pInBuf[KELVANE_MAX_CHANNELS * AUDIO_KELVANE_FRAME_LEN];
    for (int ch = 0; ch < iChannelCount; ++ch)
        MergeChannel(HasChannel(ch) ? pDataStruct->psDataIn[ch] : aSilence, iChannelCount, ch, pInBuf);
    CAudioDump::Instance()->RecordItemByName(pInBuf, iChannelCount * iFrameBytes, m_oVariant.m_strDumpInName);
}

// Copies channel ch of an interleaved frame of n channels to the library's channel iTarget, if it has an array.
void CKelvanePostEngine::SplitChannel(const FLOAT32* pFrame, int n, int ch, int iTarget)
{
    if (!HasChannel(iTarget))
        return;
    FLOAT32* const pDataIn = m_pDataStruct->psDataIn[iTarget];
    for (int s = 0; s < AUDIO_KELVANE_FRAME_LEN; ++s)
        pDataIn[s] = pFrame[s * n + ch];
}

// Whether the library's record has arrays for the channel; says once per stream that one has none.
bool CKelvanePostEngine::HasChannel(int iChannel)
{
    if (m_pDataStruct != nullptr && iChannel < KELVANE_MAX_CHANNELS && m_pDataStruct->psDataIn[iChannel] != nullptr)
        return true;
    if (!m_bChannelReported)
        AUDIOLOG_WARN("Channel " + std::to_string(iChannel) + " has no array in the algorithm, it stays silent");
    m_bChannelReported = true;
    return false;
}

int CKelvanePostEngine::AudioKelvaneApply()
{
    if (AUDIO_MISSING(m_pRunBuf, iNoInstance) || AUDIO_MISSING(m_pScratchBuf, iNoInstance))
        return iNoInstance;
    SYSTEMTIME stStart;
    GetLocalTime(&stStart);
    const UINT32 iSysPower = m_iSysPower;
    m_pDataStruct->SpeakerDBVolume = CAudioMonitor::Instance()->GetSpeakerVolumeDB();
    m_pDataStruct->SpeakerPersentVolume = static_cast<INT16>(CAudioMonitor::Instance()->GetSpeakerVolume());
    m_pDataStruct->BatteryLifePercent = static_cast<UINT8>(iSysPower);
    m_pDataStruct->ACLineStatus = static_cast<UINT8>(iSysPower >> 8);
    const int iRet = AUDIO_CHECK(m_fAudioKelvaneApply(m_pRunBuf, m_pScratchBuf, m_pDataStruct));
    SYSTEMTIME stEnd;
    GetLocalTime(&stEnd);
    CountApplyTime(CAudioTIME::GetTimeDiff(stStart, stEnd));

    m_iReleaseCount = m_iReleaseCount + 1;
    if (m_iReleaseCount % 2 == 0)
    {
        if (m_i64GapTime > i64GapTimeLimit)
            AUDIOLOG_WARN("Audio Kelvane Apply time gap:" + std::to_string(m_i64GapTime));
        ParameterRelease();
    }
    return iRet;
}

// Adds a frame's milliseconds to the timing period, and ends the period at its last frame.
void CKelvanePostEngine::CountApplyTime(INT64 i64Time)
{
    m_i64GapTime += i64Time;
    m_i64TotalTime += i64Time;
    m_i64MaxTime = std::max(m_i64MaxTime, i64Time);
    m_i64MinTime = m_iApplyFrameCount == 0 ? i64Time : std::min(m_i64MinTime, i64Time);
    if (m_iApplyFrameCount++ < iReportFrameCount)
        return;
    ReportApplyTime();
    m_i64TotalTime = 0;
    m_i64MaxTime = 0;
    m_i64MinTime = 0;
    m_iApplyFrameCount = 0;
}

// The timing period's line. The formatting takes no heap block; memory that runs out behind it costs the line.
void CKelvanePostEngine::ReportApplyTime()
try
{
    char szText[1024] = {};
    const float fAverage = static_cast<float>(m_i64TotalTime) / static_cast<float>(m_iApplyFrameCount);
    const int iLen = snprintf(szText, sizeof(szText),
                              "Total Time Required(%lld),Max Time Required(%lld),Min Time Required(%lld),"
                              "average Time Required(%.2f) of Per %d frames.",
                              static_cast<long long>(m_i64TotalTime), static_cast<long long>(m_i64MaxTime),
                              static_cast<long long>(m_i64MinTime), fAverage, m_iApplyFrameCount);
    CKelvaneManager::Instance()->PrintSmartDebugLog(AUDIO_PERFORMANCE_FILE, iLen < 0 ? "" : szText,
                                                    m_oStream.m_bInlineMode);
}
catch (...)
{
}

int CKelvanePostEngine::MergerOutputDataItem()
{
    const int iChannelCount = GetOutChannelCount();
    if (AUDIO_FAIL_IF(iChannelCount > KELVANE_MAX_CHANNELS, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    if (iChannelCount == 4)
        SwapOutputChannelData();
    FLOAT32 pOutBuf[KELVANE_MAX_CHANNELS * AUDIO_KELVANE_FRAME_LEN];
    const bool bPlayable = IsOutputFinite(iChannelCount);
    for (int ch = 0; ch < iChannelCount; ++ch)
    {
        const bool bSilent = !bPlayable || !HasChannel(ch);
        MergeChannel(bSilent ? aSilence : m_pDataStruct->psDataOut[ch], iChannelCount, ch, pOutBuf);
    }
    CAudioDump::Instance()->RecordDetailItem(pOutBuf, iChannelCount * iFrameBytes, m_oVariant.m_strDumpOutName);
    return AUDIO_CHECK(FormatOutputFrameToQueue(pOutBuf, iChannelCount, AUDIO_KELVANE_FRAME_LEN));
}

// Whether the frame can be played. One that can't goes out as silence; says so once per episode.
bool CKelvanePostEngine::IsOutputFinite(int iChannelCount)
{
    bool bFinite = true;
    for (int ch = 0; ch < iChannelCount && m_pDataStruct != nullptr; ++ch)
        bFinite = bFinite && (m_pDataStruct->psDataOut[ch] == nullptr || IsFinite(m_pDataStruct->psDataOut[ch]));
    if (!bFinite && !m_bNotFiniteReported)
        AUDIOLOG_WARN("Algorithm output is not finite, silence goes out");
    m_bNotFiniteReported = !bFinite;
    return bFinite;
}

void CKelvanePostEngine::SwapOutputChannelData()
{
    switch (CKelvaneManager::Instance()->GetAlgoCtrlParam(6))
    {
    case 1:
        ExchangeChannels(0, 2);
        ExchangeChannels(1, 3);
        break;
    case 2:
        ExchangeChannels(1, 2);
        break;
    default:
        break;
    }
}

void CKelvanePostEngine::ExchangeChannels(int iFirst, int iSecond)
{
    constexpr int iArrySize = AUDIO_KELVANE_FRAME_LEN * sizeof(FLOAT32);
    if (m_pDataStruct == nullptr)
        return;
    FLOAT32 fTempData[AUDIO_KELVANE_FRAME_LEN] = {};
    FLOAT32* const* const psDataOut = m_pDataStruct->psDataOut;
    AUDIO_CHECK(memmove_s(fTempData, iArrySize, psDataOut[iFirst], iArrySize));
    AUDIO_CHECK(memmove_s(psDataOut[iFirst], iArrySize, psDataOut[iSecond], iArrySize));
    AUDIO_CHECK(memmove_s(psDataOut[iSecond], iArrySize, fTempData, iArrySize));
}
