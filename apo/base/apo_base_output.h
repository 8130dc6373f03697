// The engine's output side: the system frames that are ready for the callback, and the caches that the algorithm's
// frames are cut into them by.
#pragma once

#include "apo/base/apo_base_frame.h"
#include "apo/base/apo_base_stream.h"
#include "audioapi/audio_api_lock.h"

#include <windows.h>

inline constexpr int AUDIO_CACHE_FRAME_NUM = 3; // callbacks of silence ahead of a stream with a worker

// The queue is between the processing thread, which takes, and the side that runs the algorithm, whose the caches are.
// All audio is interleaved, lengths count floats.
class CBaseOutput
{
public:
    explicit CBaseOutput(const CBaseStream& oStream) : m_oStream(oStream) {}

    void SetLimits(int iHigh, int iLow);
    void SetPriming(int iCacheFrameCount) { m_iCacheFrameCount = iCacheFrameCount; }
    // Whether this callback still gets silence ahead of the stream.
    bool TakePriming();
    // The oldest frame of iSystemDataLen floats, or one without data. Frames of another length, cut just before the
    // callback changed its own, go.
    CAudioFrame Pop(int iSystemDataLen);
    void Clear();
    void CheckOutputQueueThreshold();
    void CalcOutputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit);

    // The caches, empty. False without memory.
    bool Allocate(int iAlgoDataLen, int iCacheFrameDataLen);
    void Release();
    // Behind the algorithm's output, 48 kHz. AUDIO_BAD_DATA without memory: the frame is lost.
    int AppendAlgoOutput(const FLOAT32* pInputMicBuffer, int iAlgoDataLen);
    // The head of it, when there are iStandardDataLen floats; else null. Stays until it is dropped.
    const FLOAT32* Block(int iStandardDataLen) const;
    void DropBlock(int iStandardDataLen);
    // Behind what waits for a whole system frame, at the stream's rate; a block that couldn't be converted goes out as
    // silence. AUDIO_BAD_DATA without memory: the block is lost.
    int AppendOutputCache(const FLOAT32* pReSamplerBuffer, int iReSampleDataLen, int iSystemDataLen);
    // Queues every whole system frame of it. The last copy's code, or AUDIO_NO_HANDLE when a frame can't be had.
    int CutSystemFrames(int iSystemDataLen);

private:
    friend class CEngineInside;

    const CBaseStream& m_oStream;
    CAudioFrameQueue m_oOutputQueue; // system frames
    CAudioLock m_csOutputQueue;
    int m_iOutputQueueHigh = 100; // frames
    int m_iOutputQueueLow = 8;
    int m_iOutputZeroCount = 0;                     // near-zero frames in a row
    int m_iCacheFrameCount = AUDIO_CACHE_FRAME_NUM; // silent callbacks still to come
    CAudioFloatCache m_pAlgoOutputBuffer;           // 48 kHz, not yet a whole block
    int m_iAlgoOutputDataLen = 0;                   // floats in it
    CAudioFloatCache m_pOutputCacheBuffer;          // stream rate, not yet a whole system frame
    int m_iOutputCacheDataLen = 0;                  // floats in it
};
