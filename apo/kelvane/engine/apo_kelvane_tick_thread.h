// A worker on the slow clock: it counts every tick of 10 ms of audio, however many came before it woke.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <atomic>

// What the log calls a worker's event and work, and the event when the worker itself misses it.
struct CKelvaneTickNames
{
    const char* pEvent;
    const char* pWorker;
    const char* pThisEvent;
};

class CKelvaneTickThread
{
public:
    explicit CKelvaneTickThread(const CKelvaneTickNames& oNames) : m_oNames(oNames) {}

    // Starts pfnWorker, which calls Follow. What can't be had is logged at oSite, and there is no worker.
    void Create(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, const AudioLogSite& oSite);
    // The thread that runs the algorithm.
    void Tick();
    // Has the worker leave Follow at its next look; Stop waits until it has left.
    void EndRun() { m_bRun = 0; }
    void Stop();

    // On the worker, until it is stopped: fnTick() for each tick.
    template <class TickFunction> void Follow(const AudioLogSite& oSite, TickFunction fnTick)
    {
        while (m_bRun == 1)
        {
            if (AudioCheckCondition(m_hEvent == nullptr, oSite, AUDIO_NO_HANDLE, m_oNames.pThisEvent))
                return;
            if (WaitForSingleObject(m_hEvent, INFINITE) != WAIT_OBJECT_0)
            {
                Sleep(1);
                continue;
            }
            // Before the ticks are taken, so that the next one wakes the worker again.
            ResetEvent(m_hEvent);
            for (int i = m_iTicks.exchange(0); i > 0 && m_bRun == 1; --i)
                fnTick();
        }
    }

private:
    const CKelvaneTickNames& m_oNames;
    CAudioWorkerEvent m_hEvent;   // set at each tick
    std::atomic<int> m_iTicks{0}; // that the worker hasn't taken yet
    CAudioFlag m_bRun = 0;        // 1 while the worker is to run
    PTP_WORK m_pWorker = nullptr;
};
