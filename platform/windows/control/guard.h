// The one lock of what stands between this program and its platform.
#pragma once

#include <windows.h>

class CGuard
{
public:
    CGuard() { AcquireSRWLockExclusive(&m_oLock); }
    ~CGuard() { ReleaseSRWLockExclusive(&m_oLock); }
    CGuard(const CGuard&) = delete;
    CGuard& operator=(const CGuard&) = delete;

private:
    static inline SRWLOCK m_oLock = SRWLOCK_INIT;
};
