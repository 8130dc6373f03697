// The wait that the workers share.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

// Calls fnServe after each signal until the flag is 0. fnServe takes the signal back before it looks at what there is,
// so that what comes meanwhile wakes the worker again.
template <class Serve> void RunWorkerLoop(const CAudioFlag& iRunFlag, const CAudioWorkerEvent& hEvent, Serve fnServe)
{
    while (iRunFlag == 1)
    {
        if (WaitForSingleObject(hEvent, INFINITE) != WAIT_OBJECT_0)
        {
            Sleep(1);
            continue;
        }
        if (iRunFlag == 0)
            return;
        fnServe();
    }
}
