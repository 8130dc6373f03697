// Trimming, the count of silent frames, growth.
#include "apo/base/apo_base_sides.h"

#include "audioapi/audio_api_data.h"
#include "audioapi/audio_api_result.h"

#include <string>

void TrimQueue(CAudioFrameQueue& oQueue, int iHigh, int iLow, const CBaseStream& oStream, const CQueueReport& oReport)
{
    const int iSize = oQueue.Size();
    if (iSize >= iHigh && oStream.m_bInlineMode == 0)
    {
        AUDIO_LOG_AT(oReport.oSite, AUDIO_LEVEL_WARN, 0, oReport.pOverflowText + std::to_string(iSize));
        while (!oQueue.Empty() && oQueue.Size() >= iLow)
            oQueue.Pop();
    }
    else if (oStream.IsSizeLineDue())
    {
        AUDIO_LOG_AT(oReport.oSite, AUDIO_LEVEL_DEBUG, 0, oReport.pSizeText + std::to_string(iSize));
    }
}

bool IsZeroFrameLimit(const FLOAT32* pFrame, int iDataLen, int iLimit, int& iZeroCount)
{
    const bool bNearZero = CAudioDATA::IsNearZeroEnergy(pFrame, iDataLen);
    const bool bLimit = bNearZero && iZeroCount + 1 >= iLimit;
    iZeroCount = bNearZero && !bLimit ? iZeroCount + 1 : 0;
    return bLimit;
}

bool GrowCache(CAudioFloatCache& oCache, int iDataLen, int iKeepDataLen, const CBaseStream& oStream, const char* pName)
{
    if (!oCache.Grow(iDataLen, iKeepDataLen))
    {
        AUDIOLOG_ERROR(AUDIO_BAD_DATA, pName);
        return false;
    }
    AUDIOLOG_INFO(std::string(pName) + " grown, SystemPerFrame Length:" + std::to_string(oStream.m_iSystemFrameLen) +
                  ",FrameSample:" + std::to_string(oStream.m_iSampleRate) +
                  ",iCacheFrameDataLen:" + std::to_string(iDataLen));
    return true;
}
