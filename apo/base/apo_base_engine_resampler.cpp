// The choice of a conversion between the stream's rate and the algorithm's 48 kHz.
#include "apo/base/apo_base_engine.h"

#include "audioapi/audio_api_data.h"
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

// One way of the two.
struct Direction
{
    Conversion RateConversion::*pConversion; // between 48 kHz and a rate of the table
    bool bTo48K;
    const char* pCopyText; // of the copy at 48 kHz
    const char* pDumpName;
};

constexpr Direction oTo48K = {&RateConversion::fnTo48K, true,
                              "memmove_s(pReSampleInputFrames, sizeof(FLOAT32) * iChannel * iReSampleDataLen, "
                              "pMicInputFrames, sizeof(FLOAT32) * iChannel * iReSampleDataLen)",
                              "InputSample"};
constexpr Direction oFrom48K = {&RateConversion::fnFrom48K, false,
                                "memmove_s(pReSampleOutputFrames, sizeof(FLOAT32) * iChannel * iReSampleDataLen, "
                                "pMicInputFrames, sizeof(FLOAT32) * iChannel * iReSampleDataLen)",
                                "OutputSample"};

// A block that can't be copied becomes silence, if there is room for it at all: the stream keeps its time.
std::unique_ptr<FLOAT32[]> CopyBlock(const FLOAT32* pMicInputFrames, int iDataLen, const Direction& oWay,
                                     const AudioLogSite& oSite)
{
    std::unique_ptr<FLOAT32[]> pFrames = NewFloats(iDataLen);
    if (AudioCheckResult(
            memmove_s(pFrames.get(), sizeof(FLOAT32) * iDataLen, pMicInputFrames, sizeof(FLOAT32) * iDataLen), oSite,
            oWay.pCopyText) != 0 &&
        pFrames != nullptr)
        std::fill_n(pFrames.get(), iDataLen, 0.0F);
    return pFrames;
}

// 22050 Hz goes by way of 44100. iReSampleDataLen becomes the sample frames that result.
std::unique_ptr<FLOAT32[]> ConvertTwice(const FLOAT32* pMicInputFrames, const int& iChannel, const int& iFramelen,
                                        int& iReSampleDataLen, const Direction& oWay)
{
    const int iFromRate = oWay.bTo48K ? 22050 : AUDIO_KELVANE_SAMPLE_RATE;
    const int iToRate = oWay.bTo48K ? AUDIO_KELVANE_SAMPLE_RATE : 22050;
    const Conversion fnFirst = oWay.bTo48K ? CAudioDATA::ReSampleFrom22KTo44K : CAudioDATA::ReSampleFrom48KTo44K;
    const Conversion fnSecond = oWay.bTo48K ? CAudioDATA::ReSampleFrom44KTo48K : CAudioDATA::ReSampleFrom44KTo22K;
    const int iFrames44 = CAudioDATA::CalcReSampleLen(iFramelen, iFromRate, 44100);
    const auto p44KFrames = fnFirst(pMicInputFrames, iChannel, iFramelen);
    iReSampleDataLen = CAudioDATA::CalcReSampleLen(iFrames44, 44100, iToRate);
    return fnSecond(p44KFrames.get(), iChannel, iFrames44);
}

// The body of both ways; logs at the caller's site.
std::unique_ptr<FLOAT32[]> ReSampleData(const FLOAT32* pMicInputFrames, const int& iChannel, const int& iFramelen,
                                        int iSampleRate, int& iReSampleDataLen, const Direction& oWay,
                                        const AudioLogSite& oSite)
{
    iReSampleDataLen = CAudioDATA::CalcReSampleLen(iFramelen, oWay.bTo48K ? iSampleRate : AUDIO_KELVANE_SAMPLE_RATE,
                                                   oWay.bTo48K ? AUDIO_KELVANE_SAMPLE_RATE : iSampleRate);
    if (AudioCheckCondition(iChannel <= 0 || iReSampleDataLen <= 0 || iFramelen <= 0, oSite, AUDIO_BAD_DATA,
                            "iChannel <= 0 || iReSampleDataLen <= 0 || iFramelen <= 0"))
        return nullptr;

    std::unique_ptr<FLOAT32[]> pFrames;
    if (iSampleRate == AUDIO_KELVANE_SAMPLE_RATE)
        pFrames = CopyBlock(pMicInputFrames, iChannel * iReSampleDataLen, oWay, oSite);
    else if (iSampleRate == 22050)
        pFrames = ConvertTwice(pMicInputFrames, iChannel, iFramelen, iReSampleDataLen, oWay);
    else if (const RateConversion* const pConversion = FindConversion(iSampleRate))
        pFrames = (pConversion->*oWay.pConversion)(pMicInputFrames, iChannel, iFramelen);
    else
        AUDIO_LOG_AT(oSite, AUDIO_LEVEL_WARN, 0, "Not define frame sample " + std::to_string(iSampleRate));
    iReSampleDataLen *= iChannel;
    CAudioDump::Instance()->RecordItemByName(pFrames.get(), iReSampleDataLen * static_cast<int>(sizeof(FLOAT32)),
                                             oWay.pDumpName);
    return pFrames;
}
} // namespace

std::unique_ptr<FLOAT32[]> CBaseEngine::ReSamplerDataTo48K(const FLOAT32* pMicInputFrames, const int& iChannel,
                                                           const int& iFramelen, int& iReSampleDataLen)
{
    return ReSampleData(pMicInputFrames, iChannel, iFramelen, GetSampleRate(), iReSampleDataLen, oTo48K,
                        AUDIO_LOG_SITE);
}

std::unique_ptr<FLOAT32[]> CBaseEngine::ReSamplerDataFrom48K(const FLOAT32* pMicInputFrames, const int& iChannel,
                                                             const int& iFramelen, int& iReSampleDataLen)
{
    return ReSampleData(pMicInputFrames, iChannel, iFramelen, GetSampleRate(), iReSampleDataLen, oFrom48K,
                        AUDIO_LOG_SITE);
}
