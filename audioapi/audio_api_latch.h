// Waiting until what was begun is done.
#pragma once

#include "audioapi/audio_api_handle.h"
#include "audioapi/audio_api_lock.h"

#include <windows.h>

#include <mutex>

// Any thread. Each Add is answered by one Done.
class CAudioLatch
{
public:
    CAudioLatch() = default;
    CAudioLatch(const CAudioLatch&) = delete;
    CAudioLatch& operator=(const CAudioLatch&) = delete;

    void Add()
    {
        const std::lock_guard<CAudioLock> oGuard(m_oLock);
        ++m_iCount;
        if (m_oDone == nullptr)
            m_oDone.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        else
            ResetEvent(m_oDone.get());
    }

    void Done()
    {
        const std::lock_guard<CAudioLock> oGuard(m_oLock);
        if (--m_iCount == 0 && m_oDone != nullptr)
            SetEvent(m_oDone.get());
    }

    // Whether nothing is left to be done, at once or within the time.
    bool Wait(DWORD dwMilliseconds)
    {
        HANDLE hDone = nullptr;
        {
            const std::lock_guard<CAudioLock> oGuard(m_oLock);
            if (m_iCount == 0)
                return true;
            hDone = m_oDone.get();
        }
        return hDone != nullptr && WaitForSingleObject(hDone, dwMilliseconds) == WAIT_OBJECT_0;
    }

private:
    CAudioLock m_oLock; // guards both, which go together
    int m_iCount = 0;
    CAudioHandle m_oDone; // manual reset; made once, null when the platform gave none
};
