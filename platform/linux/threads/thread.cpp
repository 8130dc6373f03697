// Threads: identity, sleep, priority.
#include "base/failure.h"
#include "threads/timeout.h"

#include <windows.h>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace
{
struct CPriorityNice
{
    int iPriority;
    int iNice;
};
constexpr CPriorityNice g_aPriorities[] = {
    {THREAD_PRIORITY_NORMAL, 0}, {THREAD_PRIORITY_HIGHEST, -10}, {THREAD_PRIORITY_TIME_CRITICAL, -15}};

bool AskForRealTime()
{
    sched_param stParameter{};
    stParameter.sched_priority = sched_get_priority_min(SCHED_RR);
    return pthread_setschedparam(pthread_self(), SCHED_RR, &stParameter) == 0;
}

thread_local int t_iPriority = THREAD_PRIORITY_NORMAL;

HANDLE ThisThread()
{
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2));
}
} // namespace

HANDLE GetCurrentThread()
{
    return ThisThread();
}

DWORD GetCurrentThreadId()
{
    static thread_local const DWORD t_dwThread = static_cast<DWORD>(syscall(SYS_gettid));
    return t_dwThread;
}

DWORD GetCurrentProcessId()
{
    return static_cast<DWORD>(getpid());
}

void Sleep(DWORD dwMilliseconds)
{
    CountCallThatMayWait();
    if (dwMilliseconds == 0)
    {
        sched_yield();
        return;
    }
    const long long iNanoseconds = TimeoutNanoseconds(dwMilliseconds);
    timespec stLeft{static_cast<time_t>(iNanoseconds / 1000000000), static_cast<long>(iNanoseconds % 1000000000)};
    while (nanosleep(&stLeft, &stLeft) != 0 && errno == EINTR)
        continue;
    CountExpiredTimeout(dwMilliseconds);
}

// The pseudo handle of the calling thread is the only thread handle there is.
BOOL SetThreadPriority(HANDLE hThread, int nPriority)
{
    if (hThread != ThisThread())
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    for (const CPriorityNice& stEntry : g_aPriorities)
    {
        if (stEntry.iPriority != nPriority)
            continue;
        t_iPriority = nPriority;
        if (nPriority == THREAD_PRIORITY_TIME_CRITICAL && AskForRealTime())
            return TRUE;
        const sched_param stOrdinary{};
        pthread_setschedparam(pthread_self(), SCHED_OTHER, &stOrdinary);
        setpriority(PRIO_PROCESS, GetCurrentThreadId(), stEntry.iNice);
        return TRUE;
    }
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

int GetThreadPriority(HANDLE hThread)
{
    if (hThread == ThisThread())
        return t_iPriority;
    SetLastError(ERROR_INVALID_HANDLE);
    return THREAD_PRIORITY_ERROR_RETURN;
}
