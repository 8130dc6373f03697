// What the engine's two sides have in common: how a queue is trimmed, when silence is told, how a cache grows.
#pragma once

#include "apo/base/apo_base_frame.h"
#include "apo/base/apo_base_stream.h"
#include "audioapi/audio_api_log.h"

inline constexpr int AUDIO_ZERO_FRAME_LIMIT = 1000; // near-zero frames in a row per report

// What is said of a queue, and where.
struct CQueueReport
{
    AudioLogSite oSite;
    const char* pOverflowText;
    const char* pSizeText;
};

// Drops the oldest frames of a queue of iHigh frames or more until there are fewer than iLow; never in inline mode. The
// caller holds the queue's lock.
void TrimQueue(CAudioFrameQueue& oQueue, int iHigh, int iLow, const CBaseStream& oStream, const CQueueReport& oReport);

// Counts the near-zero frames in a row in iZeroCount. Whether there are iLimit of them, which starts the count over.
bool IsZeroFrameLimit(const FLOAT32* pFrame, int iDataLen, int iLimit, int& iZeroCount);

// Makes a cache longer, for callbacks that are longer than the first, and keeps its head. False without memory. pName
// is for the log.
bool GrowCache(CAudioFloatCache& oCache, int iDataLen, int iKeepDataLen, const CBaseStream& oStream, const char* pName);
