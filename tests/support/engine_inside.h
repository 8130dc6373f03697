// The tests' way inside an engine: what it keeps to itself.
#pragma once

#include "apo/kelvane/apo_kelvane_postengine.h"

#include <array>

class CEngineInside
{
public:
    static CBaseStream& Stream(CBaseEngine& oEngine) { return oEngine.m_oStream; }
    static CBaseVariant& Variant(CBaseEngine& oEngine) { return oEngine.m_oVariant; }
    static CAudioFlag& ThreadRun(CBaseEngine& oEngine) { return oEngine.m_bThreadRun; }
    static int& CacheFrameCount(CBaseEngine& oEngine) { return oEngine.m_oOutput.m_iCacheFrameCount; }
    static CAudioFrameQueue& InputQueue(CBaseEngine& oEngine) { return oEngine.m_oInput.m_oInputQueue; }
    static CAudioFrameQueue& OutputQueue(CBaseEngine& oEngine) { return oEngine.m_oOutput.m_oOutputQueue; }
    static int InputCacheDataLen(CBaseEngine& oEngine) { return oEngine.m_oInput.m_iInputCacheDataLen; }
    static int AlgoOutputDataLen(CBaseEngine& oEngine) { return oEngine.m_oOutput.m_iAlgoOutputDataLen; }
    static int OutputCacheDataLen(CBaseEngine& oEngine) { return oEngine.m_oOutput.m_iOutputCacheDataLen; }
    static int InputCapacity(CBaseEngine& oEngine) { return oEngine.m_oInput.m_pInputCacheBuffer.GetCapacity(); }
    static int OutputCapacity(CBaseEngine& oEngine) { return oEngine.m_oOutput.m_pOutputCacheBuffer.GetCapacity(); }
    static bool HasMemory(CKelvanePostEngine& oEngine)
    {
        return oEngine.m_oInstance.m_pRunBuf != nullptr || oEngine.m_oInstance.m_pScratchBuf != nullptr;
    }
    static std::atomic<const char*>& ParamID(CKelvanePostEngine& oEngine) { return oEngine.m_oChoice.m_strParamID; }
    static CKelvaneAverageQueue& Means(CKelvanePostEngine& oEngine) { return oEngine.m_oTemperature.m_oAverageQueue; }
    static UINT16& LastECTemperature(CKelvanePostEngine& oEngine)
    {
        return oEngine.m_oTemperature.m_iLastECTemperature;
    }
    // The counts since the last report and the last round.
    static int FrameCounts(CKelvanePostEngine& oEngine)
    {
        return oEngine.m_oTimes.m_iApplyFrameCount + oEngine.m_oJobs.m_iReleaseCount;
    }
    static std::array<INT64*, 4> Times(CKelvanePostEngine& oEngine)
    {
        CKelvaneApplyTimes& oTimes = oEngine.m_oTimes;
        return {&oTimes.m_i64MaxTime, &oTimes.m_i64MinTime, &oTimes.m_i64TotalTime, &oTimes.m_i64GapTime};
    }
};
