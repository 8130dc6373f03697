// Time-outs and sleeps: shortened as a test told, and counted when they are over.
#include "threads/timeout.h"

#include "platform/control/machine_native.h"

#include <atomic>

static std::atomic<DWORD> g_dwParts{1};
static thread_local size_t t_iExpired = 0; // milliseconds

long long TimeoutNanoseconds(DWORD dwMilliseconds)
{
    return dwMilliseconds * 1000000LL / g_dwParts;
}

void CountExpiredTimeout(DWORD dwMilliseconds)
{
    t_iExpired += dwMilliseconds;
}

void machine::DivideTimeouts(DWORD dwParts)
{
    g_dwParts = dwParts;
}

size_t machine::ExpiredMilliseconds()
{
    return t_iExpired;
}
