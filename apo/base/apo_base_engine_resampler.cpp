// The choice of a conversion between the stream's rate and the algorithm's 48 kHz.
#include "apo/base/apo_base_engine.h"

#include "audioapi/audio_api_dump.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

namespace
{
using Conversion = std::unique_ptr<FLOAT32[]> (*)(const FLOAT32*, const INT32&, const INT32&);

struct RateConversion
{
    int iSampleRate;
    Conversion fnTo48K;
    Conversion fnFrom48K;
};

constexpr RateConversion aRateConversion[] = {
    {96000, CAudioDATA::ReSampleFrom96KTo48K, CAudioDATA::ReSampleFrom48KTo96K},
    {44100, CAudioDATA::ReSampleFrom44KTo48K, CAudioDATA::ReSampleFrom48KTo44K},
    {32000, CAudioDATA::ReSampleFrom32KTo48K, CAudioDATA::ReSampleFrom48KTo32K},
    {16000, CAudioDATA::ReSampleFrom16KTo48K, CAudioDATA::ReSampleFrom48KTo16K},
};

// Null for a rate that has none.
const RateConversion* FindConversion(int iSampleRate)
{
    const auto pFound =
        std::find_if(std::begin(aRateConversion), std::end(aRateConversion),
                     [iSampleRate](const RateConversion& oRate) { return oRate.iSampleRate == iSampleRate; });
    return pFound != std::end(aRateConversion) ? pFound : nullptr;
}

// What a block that can't be copied becomes, if there is room for it at all: the stream keeps its time.
void FillSilence(FLOAT32* pFrames, int iDataLen)
{
    if (pFrames != nullptr)
        std::fill_n(pFrames, iDataLen, 0.0F);
}

// Records a converted block, when samples are dumped.
void DumpBlock(const FLOAT32* pFrames, int iDataLen, const char* pName)
{
    CAudioDump::Instance()->RecordItemByName(pFrames, iDataLen * static_cast<int>(sizeof(FLOAT32)), pName);
}
} // namespace

std::unique_ptr<FLOAT32[]> CBaseEngine::ReSamplerDataTo48K(const FLOAT32* pMicInputFrames, const int& iChannel,
                                                           const int& iFramelen, int& iReSampleDataLen)
{
    const int iSampleRate = GetSampleRate();
    iReSampleDataLen = CAudioDATA::CalcReSampleLen(iFramelen, iSampleRate, AUDIO_KELVANE_SAMPLE_RATE);
    if (AUDIO_FAIL_IF(iChannel <= 0 || iReSampleDataLen <= 0 || iFramelen <= 0, AUDIO_BAD_DATA))
        return nullptr;

    std::unique_ptr<FLOAT32[]> pReSampleOwner;
    if (iSampleRate == AUDIO_KELVANE_SAMPLE_RATE)
    {
        pReSampleOwner = NewFloats(iChannel * iReSampleDataLen);
        FLOAT32* const pReSampleInputFrames = pReSampleOwner.get();
        if (AUDIO_CHECK(memmove_s(pReSampleInputFrames, sizeof(FLOAT32) * iChannel * iReSampleDataLen, pMicInputFrames,
                                  sizeof(FLOAT32) * iChannel * iReSampleDataLen)) != 0)
            FillSilence(pReSampleInputFrames, iChannel * iReSampleDataLen);
    }
    else if (iSampleRate == 22050)
    {
        const int iFrames44 = CAudioDATA::CalcReSampleLen(iFramelen, 22050, 44100);
        const auto p44KFrames = CAudioDATA::ReSampleFrom22KTo44K(pMicInputFrames, iChannel, iFramelen);
        pReSampleOwner = CAudioDATA::ReSampleFrom44KTo48K(p44KFrames.get(), iChannel, iFrames44);
        iReSampleDataLen = CAudioDATA::CalcReSampleLen(iFrames44, 44100, AUDIO_KELVANE_SAMPLE_RATE);
    }
    else if (const RateConversion* const pConversion = FindConversion(iSampleRate))
    {
        pReSampleOwner = pConversion->fnTo48K(pMicInputFrames, iChannel, iFramelen);
    }
    else
    {
        AUDIOLOG_WARN("Not define frame sample " + std::to_string(iSampleRate));
    }
    iReSampleDataLen *= iChannel;
    DumpBlock(pReSampleOwner.get(), iReSampleDataLen, "InputSample");
    return pReSampleOwner;
}

std::unique_ptr<FLOAT32[]> CBaseEngine::ReSamplerDataFrom48K(const FLOAT32* pMicInputFrames, const int& iChannel,
                                                             const int& iFramelen, int& iReSampleDataLen)
{
    const int iSampleRate = GetSampleRate();
    iReSampleDataLen = CAudioDATA::CalcReSampleLen(iFramelen, AUDIO_KELVANE_SAMPLE_RATE, iSampleRate);
    if (AUDIO_FAIL_IF(iChannel <= 0 || iReSampleDataLen <= 0 || iFramelen <= 0, AUDIO_BAD_DATA))
        return nullptr;

    std::unique_ptr<FLOAT32[]> pReSampleOwner;
    if (iSampleRate == AUDIO_KELVANE_SAMPLE_RATE)
    {
        pReSampleOwner = NewFloats(iChannel * iReSampleDataLen);
        FLOAT32* const pReSampleOutputFrames = pReSampleOwner.get();
        if (AUDIO_CHECK(memmove_s(pReSampleOutputFrames, sizeof(FLOAT32) * iChannel * iReSampleDataLen, pMicInputFrames,
                                  sizeof(FLOAT32) * iChannel * iReSampleDataLen)) != 0)
            FillSilence(pReSampleOutputFrames, iChannel * iReSampleDataLen);
    }
    else if (iSampleRate == 22050)
    {
        const int iFrames44 = CAudioDATA::CalcReSampleLen(iFramelen, AUDIO_KELVANE_SAMPLE_RATE, 44100);
        const auto p44KFrames = CAudioDATA::ReSampleFrom48KTo44K(pMicInputFrames, iChannel, iFramelen);
        pReSampleOwner = CAudioDATA::ReSampleFrom44KTo22K(p44KFrames.get(), iChannel, iFrames44);
        iReSampleDataLen = CAudioDATA::CalcReSampleLen(iFrames44, 44100, 22050);
    }
    else if (const RateConversion* const pConversion = FindConversion(iSampleRate))
    {
        pReSampleOwner = pConversion->fnFrom48K(pMicInputFrames, iChannel, iFramelen);
    }
    else
    {
        AUDIOLOG_WARN("Not define frame sample " + std::to_string(iSampleRate));
    }
    iReSampleDataLen *= iChannel;
    DumpBlock(pReSampleOwner.get(), iReSampleDataLen, "OutputSample");
    return pReSampleOwner;
}
