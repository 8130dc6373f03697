// The engine's input side: the standard frames that wait for the algorithm, and the cache that system frames of any
// rate and length are gathered in.
#pragma once

#include "apo/base/apo_base_frame.h"
#include "apo/base/apo_base_stream.h"
#include "audioapi/audio_api_lock.h"

#include <windows.h>

#include <memory>

// The processing thread's; Pop belongs to the side that runs the algorithm. All audio is interleaved, lengths count
// floats.
class CBaseInput
{
public:
    explicit CBaseInput(const CBaseStream& oStream) : m_oStream(oStream) {}

    void SetLimits(int iHigh, int iLow);
    // Queues iFrameCount copies of iAlgoDataLen floats each, zeroed ones if the source is null; one without memory is
    // skipped. fnFull, if any, is called behind each frame that finds the queue at its high mark, with the size and
    // under the lock. The last copy's code.
    int Push(const FLOAT32* pMicInputFrames, int iAlgoDataLen, int iFrameCount, void (*fnFull)(int iSize));
    // The oldest frame of iDataLen floats, or one without data. Frames of another length, queued before the stream's
    // format changed, go.
    CAudioFrame Pop(int iDataLen);
    void Clear();
    void CheckInputQueueThreshold();
    void CalcInputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit);

    // The cache, zeroed and filled with iAddition floats. False without memory.
    bool Allocate(int iCacheFrameDataLen, int iAddition);
    void Release();
    // Appends a system frame of iSysDataLen floats; a source that can't be read goes in as silence, so that the stream
    // keeps its time. False without memory.
    bool Append(const FLOAT32* pInputMicBuffer, int iChannel, int iSysDataLen);
    // The whole blocks among what was gathered, iProcessDataLen floats at the stream's rate; null without memory, with
    // the blocks gone.
    std::unique_ptr<FLOAT32[]> TakeBlocks(int iChannel, int& iProcessDataLen);

private:
    friend class CEngineInside;
    int PushFrame(const FLOAT32* pMicInputFrames, int iAlgoDataLen, int i);

    const CBaseStream& m_oStream;
    CAudioFrameQueue m_oInputQueue; // standard frames
    CAudioLock m_csInputQueue;
    int m_iInputQueueHigh = 100; // frames
    int m_iInputQueueLow = 8;
    int m_iInputZeroCount = 0;            // near-zero frames in a row
    CAudioFloatCache m_pInputCacheBuffer; // stream rate, not yet a whole block
    int m_iInputCacheDataLen = 0;         // floats in it
};
