// What the workers behind a queue share: the wait for the next batch, and the taking of an item.
#pragma once

#include "audioapi/audio_api_worker_loop.h"

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
    RunWorkerLoop(iRunFlag, hEvent,
                  [&]
                  {
                      ResetEvent(hEvent);
                      fnBatch();
                      Sleep(0);
                  });
}
