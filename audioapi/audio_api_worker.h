// The start and the stop that every worker of the module goes through.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

// Operations of the worker's owner, who keeps flag, event and work object.
class CAudioWorker
{
public:
    // Starts a worker: one long callback on the process's default pool. Sets *piRunFlag to 1; the worker leaves its
    // callback when the flag is 0. pfnWorker uses pContext only, which outlives the worker. Null, with the flag back at
    // 0, when the pool gives no work.
    static PTP_WORK Start(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, CAudioFlag* piRunFlag);

    // Ends a worker and waits until it has left its callback, then closes its work object and event. An event or work
    // that was never made is passed over.
    static void Stop(CAudioFlag* piRunFlag, CAudioWorkerEvent& hEvent, PTP_WORK& pWork);

    // Waits until a worker has left its callback, closes its work object and clears the pointer. A callback that no
    // thread has begun is taken back: while a module is freed the loader keeps new threads from beginning.
    static void Close(PTP_WORK& pWork);

    // Says that the process is ending: its other threads are gone, so no stop may wait for a worker. The loader's call.
    static void SetProcessEnding() { m_bProcessEnding = true; }
    static bool IsProcessEnding() { return m_bProcessEnding; }

private:
    inline static bool m_bProcessEnding = false; // set when no other thread is left
};
