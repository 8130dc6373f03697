// Conversions between file times, calendar times and this system's seconds.
#include "time/filetime.h"

#include "base/error.h"

#include <atomic>

namespace
{
constexpr long long SECONDS_1601_TO_1970 = 11644473600LL;
constexpr long long SECONDS_PER_DAY = 86400;
constexpr long long DAYS_PER_400_YEARS = 146097;
constexpr int FIRST_YEAR = 1601;
constexpr int LAST_YEAR = 30827;

bool IsLeap(int iYear)
{
    return (iYear % 4 == 0 && iYear % 100 != 0) || iYear % 400 == 0;
}

int DaysOfMonth(int iYear, int iMonth)
{
    constexpr int aDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return aDays[iMonth - 1] + (iMonth == 2 && IsLeap(iYear) ? 1 : 0);
}

// Days from 1601-01-01, which opens a cycle of 400 years.
long long DaysToYear(int iYear)
{
    const long long iYears = iYear - FIRST_YEAR;
    return iYears * 365 + iYears / 4 - iYears / 100 + iYears / 400;
}

bool IsValid(const SYSTEMTIME& stTime)
{
    return stTime.wYear >= FIRST_YEAR && stTime.wYear <= LAST_YEAR && stTime.wMonth >= 1 && stTime.wMonth <= 12 &&
           stTime.wDay >= 1 && stTime.wDay <= DaysOfMonth(stTime.wYear, stTime.wMonth) && stTime.wHour < 24 &&
           stTime.wMinute < 60 && stTime.wSecond < 60 && stTime.wMilliseconds < 1000;
}

// Sets year, month and day from the days since 1601-01-01.
void SetDate(SYSTEMTIME& stTime, long long iDays)
{
    stTime.wDayOfWeek = static_cast<WORD>((iDays + 1) % 7); // that day was a Monday
    int iYear = FIRST_YEAR + static_cast<int>(iDays * 400 / DAYS_PER_400_YEARS);
    while (DaysToYear(iYear) > iDays)
        --iYear;
    while (DaysToYear(iYear + 1) <= iDays)
        ++iYear;
    long long iLeft = iDays - DaysToYear(iYear);
    int iMonth = 1;
    for (; iLeft >= DaysOfMonth(iYear, iMonth); ++iMonth)
        iLeft -= DaysOfMonth(iYear, iMonth);
    stTime.wYear = static_cast<WORD>(iYear);
    stTime.wMonth = static_cast<WORD>(iMonth);
    stTime.wDay = static_cast<WORD>(iLeft + 1);
}
} // namespace

long long TicksOf(const FILETIME& stFileTime)
{
    return static_cast<long long>((static_cast<ULONGLONG>(stFileTime.dwHighDateTime) << 32) | stFileTime.dwLowDateTime);
}

FILETIME FileTimeOf(long long iTicks)
{
    return {static_cast<DWORD>(static_cast<ULONGLONG>(iTicks) & 0xFFFFFFFF),
            static_cast<DWORD>(static_cast<ULONGLONG>(iTicks) >> 32)};
}

long long TicksOf(const timespec& stTime)
{
    return (stTime.tv_sec + SECONDS_1601_TO_1970) * TICKS_PER_SECOND + stTime.tv_nsec / 100;
}

// Zones change on quarters of an hour: the last quarter's offset is kept, one word of quarter and seconds ahead.
long long LocalOffset(long long iUtcTicks)
{
    static std::atomic<long long> g_iKept{-1};
    const long long iQuarter = iUtcTicks / (900 * TICKS_PER_SECOND);
    const long long iKept = g_iKept.load(std::memory_order_relaxed);
    if (iKept >= 0 && iKept >> 20 == iQuarter)
        return ((iKept & 0xFFFFF) - 2 * SECONDS_PER_DAY) * TICKS_PER_SECOND;

    const time_t iTime = SecondsOf(iUtcTicks);
    tm stLocal{};
    localtime_r(&iTime, &stLocal);
    g_iKept.store((iQuarter << 20) | (stLocal.tm_gmtoff + 2 * SECONDS_PER_DAY), std::memory_order_relaxed);
    return stLocal.tm_gmtoff * TICKS_PER_SECOND;
}

// Its own offset is that of a moment at most a zone's width away.
long long UtcOfLocal(long long iLocalTicks)
{
    const long long iGuess = iLocalTicks - LocalOffset(iLocalTicks);
    return iLocalTicks - LocalOffset(iGuess);
}

time_t SecondsOf(long long iTicks)
{
    return static_cast<time_t>(iTicks / TICKS_PER_SECOND - SECONDS_1601_TO_1970);
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime)
{
    if (!IsValid(*lpSystemTime))
        return FailWith(ERROR_INVALID_PARAMETER);
    const SYSTEMTIME& stTime = *lpSystemTime;
    long long iDays = DaysToYear(stTime.wYear) + stTime.wDay - 1;
    for (int iMonth = 1; iMonth < stTime.wMonth; ++iMonth)
        iDays += DaysOfMonth(stTime.wYear, iMonth);
    const long long iSeconds = iDays * SECONDS_PER_DAY + stTime.wHour * 3600 + stTime.wMinute * 60 + stTime.wSecond;
    *lpFileTime = FileTimeOf(iSeconds * TICKS_PER_SECOND + stTime.wMilliseconds * TICKS_PER_MILLISECOND);
    return TRUE;
}

BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime)
{
    const long long iTicks = TicksOf(*lpFileTime);
    if (iTicks < 0)
        return FailWith(ERROR_INVALID_PARAMETER);
    const long long iMilliseconds = iTicks / TICKS_PER_MILLISECOND;
    const long long iSeconds = iMilliseconds / 1000;
    const long long iOfDay = iSeconds % SECONDS_PER_DAY;
    SYSTEMTIME stTime{};
    SetDate(stTime, iSeconds / SECONDS_PER_DAY);
    stTime.wHour = static_cast<WORD>(iOfDay / 3600);
    stTime.wMinute = static_cast<WORD>(iOfDay / 60 % 60);
    stTime.wSecond = static_cast<WORD>(iOfDay % 60);
    stTime.wMilliseconds = static_cast<WORD>(iMilliseconds % 1000);
    *lpSystemTime = stTime;
    return TRUE;
}

// As on the platform, today's offset counts, whatever held at that time.
BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, LPFILETIME lpLocalFileTime)
{
    const long long iTicks = TicksOf(*lpFileTime);
    if (iTicks < 0)
        return FailWith(ERROR_INVALID_PARAMETER);
    FILETIME stNow{};
    GetSystemTimeAsFileTime(&stNow);
    *lpLocalFileTime = FileTimeOf(iTicks + LocalOffset(TicksOf(stNow)));
    return TRUE;
}
