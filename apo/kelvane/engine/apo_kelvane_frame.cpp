// Splitting and merging.
#include "apo/kelvane/engine/apo_kelvane_frame.h"

#include "apo/kelvane/apo_kelvane_engine.h"
#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_data.h"
#include "audioapi/audio_api_dump.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace
{
constexpr int iDataMode = 3; // what the library expects in the frame record
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

void MergeChannel(const FLOAT32* pDataOut, int iChannelCount, int ch, FLOAT32* pOutBuf)
{
    for (int s = 0; s < AUDIO_KELVANE_FRAME_LEN; ++s)
        pOutBuf[s * iChannelCount + ch] = pDataOut[s];
}
} // namespace

bool CKelvaneFrame::Prepare(int iChannelCount)
{
    if (m_pDataStruct == nullptr)
        m_pDataStruct = InitDataStruct(iChannelCount);
    return !AUDIO_MISSING(m_pDataStruct, AUDIO_NO_INSTANCE);
}

void CKelvaneFrame::Reset()
{
    ReleaseDataStruct(&m_pDataStruct);
    m_bChannelReported = false;
    m_bNotFiniteReported = false;
}

KelvaneDataStruct* CKelvaneFrame::InitDataStruct(const int& iChannelCount)
{
    const int iRealChannlCount = std::max(int{m_oStream.m_iInChannelCount}, iChannelCount);
    if (AUDIO_FAIL_IF(iRealChannlCount > KELVANE_MAX_CHANNELS, AUDIO_BAD_DATA))
        return nullptr;
    KelvaneDataStruct* pDataStruct = new (std::nothrow) KelvaneDataStruct{};
    if (AUDIO_MISSING(pDataStruct, AUDIO_NO_INSTANCE))
        return nullptr;
    pDataStruct->iFrameLen = AUDIO_KELVANE_FRAME_LEN;
    pDataStruct->iDataMode = iDataMode;
    if (AUDIO_CHECK(
            CAudioDATA::AllocatePointerArray(pDataStruct->psDataIn, iRealChannlCount, AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(
            CAudioDATA::AllocatePointerArray(pDataStruct->psDataOut, iRealChannlCount, AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(CAudioDATA::AllocatePointerArrayConst(pDataStruct->psVoltageIn, iRealChannlCount,
                                                          AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(CAudioDATA::AllocatePointerArrayConst(pDataStruct->psCurrentIn, iRealChannlCount,
                                                          AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(CAudioDATA::AllocatePointerArrayConst(pDataStruct->psVoltageBatteryIn, iRealChannlCount,
                                                          AUDIO_KELVANE_FRAME_LEN)) == 0)
        return pDataStruct;
    ReleaseDataStruct(&pDataStruct);
    return nullptr;
}

void CKelvaneFrame::ReleaseDataStruct(KelvaneDataStruct** pDataStruct)
{
    if (*pDataStruct == nullptr)
        return;
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psDataIn, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psDataOut, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psVoltageIn, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psCurrentIn, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psVoltageBatteryIn, KELVANE_MAX_CHANNELS);
    delete *pDataStruct;
    *pDataStruct = nullptr;
}

// In DIV mode and with four channels, two stream channels drive four of the library's.
void CKelvaneFrame::Split(const FLOAT32* pFrame)
{
    const int n = m_oStream.m_iInChannelCount;
    const bool bDIVMode = CKelvaneManager::Instance()->Tuning().m_iDIVMode == 1;
    const int iSplitCount = !bDIVMode && n == 4 ? 2 : n;
    for (int ch = 0; ch < iSplitCount; ++ch)
    {
        SplitChannel(pFrame, n, ch, ch);
        if (bDIVMode || n == 4)
            SplitChannel(pFrame, n, ch, ch + 2);
    }
    DumpInputDataItem(m_pDataStruct, n * AUDIO_KELVANE_FRAME_LEN);
}

// As the library sees the channels; one without an array is silent.
void CKelvaneFrame::DumpInputDataItem(const KelvaneDataStruct* pDataStruct, int iDataLen)
{
    if (!CAudioDump::Instance()->IsDetailOn() || iDataLen == 0 || pDataStruct == nullptr)
        return;
    const int iChannelCount = std::min(int{m_oStream.m_iInChannelCount}, KELVANE_MAX_CHANNELS);
    FLOAT32 pInBuf[KELVANE_MAX_CHANNELS * AUDIO_KELVANE_FRAME_LEN];
    for (int ch = 0; ch < iChannelCount; ++ch)
        MergeChannel(HasChannel(ch) ? pDataStruct->psDataIn[ch] : aSilence, iChannelCount, ch, pInBuf);
    CAudioDump::Instance()->RecordItemByName(pInBuf, iChannelCount * iFrameBytes, m_oVariant.m_strDumpInName);
}

// Copies channel ch of an interleaved frame of n channels to the library's channel iTarget, if it has an array.
void CKelvaneFrame::SplitChannel(const FLOAT32* pFrame, int n, int ch, int iTarget)
{
    if (!HasChannel(iTarget))
        return;
    FLOAT32* const pDataIn = m_pDataStruct->psDataIn[iTarget];
    for (int s = 0; s < AUDIO_KELVANE_FRAME_LEN; ++s)
        pDataIn[s] = pFrame[s * n + ch];
}

// Whether the library's record has arrays for the channel; says once per stream that one has none.
bool CKelvaneFrame::HasChannel(int iChannel)
{
    if (m_pDataStruct != nullptr && iChannel < KELVANE_MAX_CHANNELS && m_pDataStruct->psDataIn[iChannel] != nullptr)
        return true;
    if (!m_bChannelReported)
        AUDIOLOG_WARN("Channel " + std::to_string(iChannel) + " has no array in the algorithm, it stays silent");
    m_bChannelReported = true;
    return false;
}

void CKelvaneFrame::Merge(int iChannelCount, FLOAT32* pOutBuf)
{
    if (iChannelCount == 4)
        SwapOutputChannelData();
    const bool bPlayable = IsOutputFinite(iChannelCount);
    for (int ch = 0; ch < iChannelCount; ++ch)
    {
        const bool bSilent = !bPlayable || !HasChannel(ch);
        MergeChannel(bSilent ? aSilence : m_pDataStruct->psDataOut[ch], iChannelCount, ch, pOutBuf);
    }
    CAudioDump::Instance()->RecordDetailItem(pOutBuf, iChannelCount * iFrameBytes, m_oVariant.m_strDumpOutName);
}

// Whether the frame can be played. One that can't goes out as silence; says so once per episode.
bool CKelvaneFrame::IsOutputFinite(int iChannelCount)
{
    bool bFinite = true;
    for (int ch = 0; ch < iChannelCount && m_pDataStruct != nullptr; ++ch)
        bFinite = bFinite && (m_pDataStruct->psDataOut[ch] == nullptr || IsFinite(m_pDataStruct->psDataOut[ch]));
    if (!bFinite && !m_bNotFiniteReported)
        AUDIOLOG_WARN("Algorithm output is not finite, silence goes out");
    m_bNotFiniteReported = !bFinite;
    return bFinite;
}

void CKelvaneFrame::SwapOutputChannelData()
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

void CKelvaneFrame::ExchangeChannels(int iFirst, int iSecond)
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
