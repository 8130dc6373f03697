// The tests' way inside an engine: what it keeps to itself.
#pragma once

#include "apo/base/apo_base_engine.h"

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
};
