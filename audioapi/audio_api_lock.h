// A critical section as an object; std::lock_guard<CAudioLock> holds it for a scope.
#pragma once

#include <windows.h>

class CAudioLock
{
public:
    CAudioLock() { InitializeCriticalSection(&m_csLock); }
    ~CAudioLock() { DeleteCriticalSection(&m_csLock); }
    CAudioLock(const CAudioLock&) = delete;
    CAudioLock& operator=(const CAudioLock&) = delete;

    void lock() { EnterCriticalSection(&m_csLock); }
    void unlock() { LeaveCriticalSection(&m_csLock); }

private:
    CRITICAL_SECTION m_csLock;
};
