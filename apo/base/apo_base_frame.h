// What the engine's queues and caches are made of: owning frames, the ring that holds them, the float cache.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_data.h"
#include <windows.h>

#include <cstddef>
#include <memory>
#include <vector>

// Not initialised; null without memory. A negative length counts as 0.
std::unique_ptr<FLOAT32[]> NewFloats(int iDataLen);

// One queued frame, one heap block; null data means no frame.
struct CAudioFrame
{
    std::unique_ptr<FLOAT32[]> pData;
    int iDataLen = 0; // floats
};

// First in, first out. Its slots are had at construction and reused, so that a queue at work allocates nothing; it
// grows only beyond the engine's own limits. The owner locks; Size and Empty need no lock.
class CAudioFrameQueue
{
public:
    CAudioFrameQueue() : m_vecFrame(AUDIO_QUEUE_SLOT_COUNT) {}

    int Size() const { return m_iCount; }
    bool Empty() const { return m_iCount == 0; }

    // False without memory for more slots: the frame is lost.
    bool Push(CAudioFrame oFrame) noexcept;

    // The oldest frame, or one without data.
    CAudioFrame Pop();

    // Frees every frame.
    void Clear();

private:
    static constexpr size_t AUDIO_QUEUE_SLOT_COUNT = 256;

    bool Grow() noexcept;

    std::vector<CAudioFrame> m_vecFrame;
    size_t m_iFirst = 0;
    CAudioInt m_iCount = 0;
};

// A cache of floats that knows its capacity; reads as a pointer to its first float, null until allocated.
class CAudioFloatCache
{
public:
    // Frees what it holds and takes iDataLen zeroed floats; without memory it is null.
    void Allocate(int iDataLen);

    // Moves to iDataLen floats and keeps the first iKeepDataLen. False without memory: nothing changed.
    bool Grow(int iDataLen, int iKeepDataLen);

    void Release();

    int GetCapacity() const { return m_iCapacity; }
    operator FLOAT32*() const { return m_pData.get(); }

private:
    std::unique_ptr<FLOAT32[]> m_pData;
    int m_iCapacity = 0;
};
