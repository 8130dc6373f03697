// The manual-reset event that a worker waits on.
#pragma once

#include "audioapi/audio_api_lock.h"

#include <windows.h>

#include <atomic>
#include <mutex>

// Made by the owner before the worker's start, or by the worker itself, which may close it on its way out; the owner,
// who may be signalling it meanwhile, closes what is left. Usable as a HANDLE by the worker; null while there is no
// event.
class CAudioWorkerEvent
{
public:
    CAudioWorkerEvent() = default;
    ~CAudioWorkerEvent() { Close(); }
    CAudioWorkerEvent(const CAudioWorkerEvent&) = delete;
    CAudioWorkerEvent& operator=(const CAudioWorkerEvent&) = delete;

    // Any thread, one load.
    operator HANDLE() const { return m_hEvent.load(std::memory_order_acquire); }

    // Makes the event, not signalled. False when the platform gives none. A worker that made it tests its run flag
    // after this: a stop that came before and found no event to signal is seen then, which the lock orders.
    bool Create()
    {
        const HANDLE hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        const std::lock_guard<CAudioLock> oGuard(m_oLock);
        m_hEvent.store(hEvent, std::memory_order_release);
        return hEvent != nullptr;
    }

    // Signals the event, when there is one. For the stop, and for those who may meet it; others use SetEvent.
    void Signal()
    {
        const std::lock_guard<CAudioLock> oGuard(m_oLock);
        if (*this != nullptr)
            SetEvent(*this);
    }

    void Close()
    {
        const std::lock_guard<CAudioLock> oGuard(m_oLock);
        if (*this != nullptr)
            CloseHandle(m_hEvent.exchange(nullptr));
    }

private:
    std::atomic<HANDLE> m_hEvent{nullptr};
    CAudioLock m_oLock;
};
