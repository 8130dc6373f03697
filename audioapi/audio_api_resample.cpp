// The conversions between stream rates. Each works channel by channel on one block, without history.
#include "audioapi/audio_api_data.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_trace.h"

#include <algorithm>
#include <new>

namespace
{
// One table of channel arrays, freed with it.
struct ChannelTable
{
    FLOAT32* ppData[AUDIO_MAX_RESAMPLE_CHANNEL] = {};

    ChannelTable() = default;
    ~ChannelTable() { CAudioDATA::ReleasePointerArray(ppData, AUDIO_MAX_RESAMPLE_CHANNEL); }
    ChannelTable(const ChannelTable&) = delete;
    ChannelTable& operator=(const ChannelTable&) = delete;
};

// Converts one channel: iSrcLen frames of ppInputData[iChannelIndex] to iDstLen frames of ppOutputData[iChannelIndex].
using ChannelConverter = void (*)(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex,
                                  const FLOAT32* const* ppInputData, FLOAT32* const* ppOutputData);

// A block length that isn't a whole number of steps ends with the output: the step's samples that have no place are
// left out, so that none behind the input's end is read.
void OneToThree(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex,
                const FLOAT32* const* ppInputData, FLOAT32* const* ppOutputData)
{
    const FLOAT32* pIn = ppInputData[iChannelIndex];
    FLOAT32* pOut = ppOutputData[iChannelIndex];
    for (INT32 i = 0; i + 1 < iSrcLen; ++i)
    {
        pOut[3 * i] = pIn[i];
        pOut[3 * i + 1] = (pIn[i] + pIn[i]) / 3.0F + pIn[i + 1] / 3.0F;
        pOut[3 * i + 2] = (pIn[i + 1] + pIn[i + 1]) / 3.0F + pIn[i] / 3.0F;
    }
    for (INT32 i = iDstLen - 3; i < iDstLen; ++i)
        pOut[i] = pIn[iSrcLen - 1];
}

void OneToTwo(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex, const FLOAT32* const* ppInputData,
              FLOAT32* const* ppOutputData)
{
    const FLOAT32* pIn = ppInputData[iChannelIndex];
    FLOAT32* pOut = ppOutputData[iChannelIndex];
    for (INT32 i = 0; i + 1 < iSrcLen; ++i)
    {
        pOut[2 * i] = pIn[i];
        pOut[2 * i + 1] = pIn[i] * 0.5F + pIn[i + 1] * 0.5F;
    }
    pOut[iDstLen - 2] = pIn[iSrcLen - 1];
    pOut[iDstLen - 1] = pIn[iSrcLen - 1];
}

void TwoToThree(const INT32&, const INT32& iDstLen, const INT32& iChannelIndex, const FLOAT32* const* ppInputData,
                FLOAT32* const* ppOutputData)
{
    const FLOAT32* pIn = ppInputData[iChannelIndex];
    FLOAT32* pOut = ppOutputData[iChannelIndex];
    INT32 o = 0;
    for (; o + 2 < iDstLen; o += 3, pIn += 2)
    {
        pOut[o] = pIn[0];
        pOut[o + 1] = pIn[1] * 0.5F + pIn[0] * 0.5F;
        pOut[o + 2] = pIn[1];
    }
    if (o < iDstLen) // an odd input: its last sample
        pOut[o] = pIn[0];
}

void ThreeToTwo(const INT32&, const INT32& iDstLen, const INT32& iChannelIndex, const FLOAT32* const* ppInputData,
                FLOAT32* const* ppOutputData)
{
    const FLOAT32* pIn = ppInputData[iChannelIndex];
    FLOAT32* pOut = ppOutputData[iChannelIndex];
    INT32 o = 0;
    for (; o + 1 < iDstLen; o += 2, pIn += 3)
    {
        pOut[o] = (pIn[0] + pIn[1]) * 0.5F;
        pOut[o + 1] = (pIn[2] + pIn[1]) * 0.5F;
    }
    if (o < iDstLen) // two samples are left of the last three
        pOut[o] = (pIn[0] + pIn[1]) * 0.5F;
}

void ThreeToOne(const INT32&, const INT32& iDstLen, const INT32& iChannelIndex, const FLOAT32* const* ppInputData,
                FLOAT32* const* ppOutputData)
{
    const FLOAT32* pIn = ppInputData[iChannelIndex];
    for (INT32 i = 0; i < iDstLen; ++i)
        ppOutputData[iChannelIndex][i] = (pIn[3 * i] + pIn[3 * i + 1] + pIn[3 * i + 2]) / 3.0F;
}

void TwoToOne(const INT32&, const INT32& iDstLen, const INT32& iChannelIndex, const FLOAT32* const* ppInputData,
              FLOAT32* const* ppOutputData)
{
    for (INT32 i = 0; i < iDstLen; ++i)
        ppOutputData[iChannelIndex][i] = ppInputData[iChannelIndex][2 * i];
}

// Both lengths span the axis from 0 to 1; between source samples the value is linear. From the last interval on the
// search rests, so the final outputs may extrapolate past it. A lone source sample is repeated.
void FillReSampleData(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex,
                      const FLOAT32* const* ppInputData, FLOAT32* const* ppOutputData)
{
    if (iSrcLen <= 0)
        return;
    const FLOAT32* pIn = ppInputData[iChannelIndex];
    FLOAT32* pOut = ppOutputData[iChannelIndex];
    if (iSrcLen == 1)
    {
        std::fill_n(pOut, iDstLen, pIn[0]);
        return;
    }
    const std::unique_ptr<FLOAT32[]> pSrcSmapleDistance(new (std::nothrow) FLOAT32[static_cast<size_t>(iSrcLen)]);
    if (AUDIO_MISSING(pSrcSmapleDistance, AUDIO_BAD_DATA))
        return;
    const FLOAT32 fSrcLen = static_cast<FLOAT32>(iSrcLen);
    const FLOAT32 fDstLen = static_cast<FLOAT32>(iDstLen);
    for (INT32 k = 0; k < iSrcLen; ++k)
        pSrcSmapleDistance[k] = static_cast<FLOAT32>(k) / fSrcLen;

    INT32 iSrcIndex = 0;
    for (INT32 j = 0; j < iDstLen; ++j)
    {
        const FLOAT32 fPos = static_cast<FLOAT32>(j) / fDstLen;
        if (iSrcIndex < iSrcLen - 2)
        {
            INT32 k = iSrcIndex + 1;
            while (k < iSrcLen && !(pSrcSmapleDistance[k] > fPos))
                ++k;
            if (k < iSrcLen)
                iSrcIndex = k - 1;
        }
        const FLOAT32 fRight = pSrcSmapleDistance[iSrcIndex + 1] - fPos;
        const FLOAT32 fSpan = (fPos - pSrcSmapleDistance[iSrcIndex]) + fRight;
        const FLOAT32 fWeight = fRight / fSpan;
        pOut[j] = (1.0F - fWeight) * pIn[iSrcIndex + 1] + fWeight * pIn[iSrcIndex];
    }
}

// The frame of every conversion.
std::unique_ptr<FLOAT32[]> Convert(const FLOAT32* pfInputData, INT32 iChannel, INT32 iFramelen, INT32 iFromRate,
                                   INT32 iToRate, ChannelConverter pfnConvert)
{
    if (AUDIO_FAIL_IF(pfInputData == nullptr || iChannel <= 0 || iFramelen <= 0, AUDIO_BAD_DATA) ||
        AUDIO_FAIL_IF(iChannel > 8, AUDIO_BAD_DATA))
        return nullptr;
    ChannelTable oInput;
    if (CAudioDATA::AllocatePointerArray(oInput.ppData, iChannel, iFramelen) != 0)
        return nullptr;
    for (INT32 iIndex = 0; iIndex < iChannel; ++iIndex)
        for (INT32 i = 0; i < iFramelen; ++i)
            oInput.ppData[iIndex][i] = pfInputData[static_cast<size_t>(i) * iChannel + iIndex];

    const INT32 iDstLen = CAudioDATA::CalcReSampleLen(iFramelen, iFromRate, iToRate);
    ChannelTable oOutput;
    const INT32 iResult = CAudioDATA::AllocatePointerArray(oOutput.ppData, iChannel, iDstLen);
    const INT64 iReSampleDataLen = static_cast<INT64>(iChannel) * iDstLen;
    if (AUDIO_FAIL_IF(iReSampleDataLen <= 0, AUDIO_BAD_DATA) || iResult != 0)
        return nullptr;
    for (INT32 iIndex = 0; iIndex < iChannel; ++iIndex)
        pfnConvert(iFramelen, iDstLen, iIndex, oInput.ppData, oOutput.ppData);

    std::unique_ptr<FLOAT32[]> pfOutputData(new (std::nothrow) FLOAT32[static_cast<size_t>(iReSampleDataLen)]);
    if (AUDIO_MISSING(pfOutputData, AUDIO_BAD_DATA))
        return nullptr;
    for (INT32 iIndex = 0; iIndex < iChannel; ++iIndex)
        for (INT32 i = 0; i < iDstLen; ++i)
            pfOutputData[static_cast<size_t>(i) * iChannel + iIndex] = oOutput.ppData[iIndex][i];
    return pfOutputData;
}
} // namespace

void CAudioDATA::FillReSampleData44KTo48K(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex,
                                          const FLOAT32* const* ppInputData, FLOAT32* const* ppOutputData)
{
    FillReSampleData(iSrcLen, iDstLen, iChannelIndex, ppInputData, ppOutputData);
}

void CAudioDATA::FillReSampleData48KTo44K(const INT32& iSrcLen, const INT32& iDstLen, const INT32& iChannelIndex,
                                          const FLOAT32* const* ppInputData, FLOAT32* const* ppOutputData)
{
    FillReSampleData(iSrcLen, iDstLen, iChannelIndex, ppInputData, ppOutputData);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom16KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 16000, 48000, OneToThree);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom22KTo44K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 22050, 44100, OneToTwo);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom32KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 32000, 48000, TwoToThree);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom44KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 44100, 48000, FillReSampleData44KTo48K);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom96KTo48K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    const CTraceLog oTrace(__FUNCTION__, __FILE__, __LINE__, AUDIO_LEVEL_TRACE, "");
    return Convert(pfInputData, iChannel, iFramelen, 96000, 48000, TwoToOne);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom48KTo16K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 48000, 16000, ThreeToOne);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom44KTo22K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 44100, 22050, TwoToOne);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom48KTo32K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 48000, 32000, ThreeToTwo);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom48KTo44K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 48000, 44100, FillReSampleData48KTo44K);
}

std::unique_ptr<FLOAT32[]> CAudioDATA::ReSampleFrom48KTo96K(const FLOAT32* pfInputData, const INT32& iChannel,
                                                            const INT32& iFramelen)
{
    return Convert(pfInputData, iChannel, iFramelen, 48000, 96000, OneToTwo);
}
