// The machine's clock: this system's, moved and stopped as told.
#include "time/clock.h"

#include "platform/control/machine_native.h"
#include "time/filetime.h"

#include <atomic>
#include <mutex>

namespace
{
// Readers take one word without a lock: the clock's distance from this system's, or the moment it stands at.
std::mutex g_oSetMutex;
std::atomic<long long> g_iAheadTicks{0};
std::atomic<long long> g_iFrozenTicks{-1};

long long RealTicks()
{
    timespec stNow{};
    clock_gettime(CLOCK_REALTIME, &stNow);
    return TicksOf(stNow);
}

long long NowTicks()
{
    const long long iFrozen = g_iFrozenTicks;
    return iFrozen >= 0 ? iFrozen : RealTicks() + g_iAheadTicks;
}

void SetTicks(long long iTicks)
{
    if (g_iFrozenTicks >= 0)
        g_iFrozenTicks = iTicks;
    g_iAheadTicks = iTicks - RealTicks();
}
} // namespace

void machine::SetClock(const SYSTEMTIME& stLocalTime)
{
    const std::lock_guard<std::mutex> oLock(g_oSetMutex);
    FILETIME stFileTime{};
    if (SystemTimeToFileTime(&stLocalTime, &stFileTime))
        SetTicks(UtcOfLocal(TicksOf(stFileTime)));
}

void machine::AdvanceClock(long long iMilliseconds)
{
    const std::lock_guard<std::mutex> oLock(g_oSetMutex);
    const long long iTicks = iMilliseconds * TICKS_PER_MILLISECOND;
    if (g_iFrozenTicks >= 0)
        g_iFrozenTicks += iTicks;
    g_iAheadTicks += iTicks;
}

void machine::FreezeClock()
{
    const std::lock_guard<std::mutex> oLock(g_oSetMutex);
    g_iFrozenTicks = NowTicks();
}

void machine::RunClock()
{
    const std::lock_guard<std::mutex> oLock(g_oSetMutex);
    if (g_iFrozenTicks < 0)
        return;
    g_iAheadTicks = g_iFrozenTicks - RealTicks();
    g_iFrozenTicks = -1;
}

void ResetClock()
{
    const std::lock_guard<std::mutex> oLock(g_oSetMutex);
    g_iFrozenTicks = -1;
    g_iAheadTicks = 0;
}

void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime)
{
    *lpSystemTimeAsFileTime = FileTimeOf(NowTicks());
}

void GetLocalTime(LPSYSTEMTIME lpSystemTime)
{
    const long long iNow = NowTicks();
    const FILETIME stLocal = FileTimeOf(iNow + LocalOffset(iNow));
    FileTimeToSystemTime(&stLocal, lpSystemTime);
}
