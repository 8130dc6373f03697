// What the workers behind a queue share: the wait for the next batch, and the taking of an item.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <list>

// Moves the item at the front, if there is one, into a list of its own. Takes no memory. The caller holds the queue's
// lock.
template <class T> std::list<T> TakeFront(std::list<T>& oQueue) noexcept
{
    std::list<T> oFront;
    if (!oQueue.empty())
        oFront.splice(oFront.begin(), oQueue, oQueue.begin());
    return oFront;
}

// Calls fnBatch after each signal until the flag is 0. fnBatch takes what is queued and heeds the flag too.
template <class Batch> void RunQueueWorker(const CAudioFlag& iRunFlag, const CAudioWorkerEvent& hEvent, Batch fnBatch)
{
    while (iRunFlag == 1)
    {
        if (WaitForSingleObject(hEvent, INFINITE) != WAIT_OBJECT_0)
        {
            Sleep(1);
            continue;
        }
        // Before the batch, so that an item queued behind its last one wakes the worker again.
        ResetEvent(hEvent);
        if (iRunFlag == 0)
            return;
        fnBatch();
        Sleep(0);
    }
}
