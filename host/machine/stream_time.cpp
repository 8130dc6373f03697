// Seconds since a stream's start.
#include "host/machine/stream_time.h"

#include <cstdio>

namespace
{

constexpr double TICKS_PER_SECOND = 1e7;
constexpr double HALF_A_YEAR = 183 * 86400.0; // seconds

double SecondsBetween(const FILETIME& stFrom, const FILETIME& stTo)
{
    const auto Ticks = [](const FILETIME& stTime)
    { return static_cast<INT64>(static_cast<UINT64>(stTime.dwHighDateTime) << 32 | stTime.dwLowDateTime); };
    return static_cast<double>(Ticks(stTo) - Ticks(stFrom)) / TICKS_PER_SECOND;
}

} // namespace

void CStreamTime::Start()
{
    GetSystemTimeAsFileTime(&m_stUtc);
    GetLocalTime(&m_stLocal);
}

void CStreamTime::End()
{
    SYSTEMTIME stLocal{};
    GetLocalTime(&stLocal);
    FILETIME stStart{};
    FILETIME stEnd{};
    if (SystemTimeToFileTime(&m_stLocal, &stStart) && SystemTimeToFileTime(&stLocal, &stEnd))
        m_f64End = SecondsBetween(stStart, stEnd);
}

double CStreamTime::SecondsOf(const FILETIME& stUtc) const
{
    return SecondsBetween(m_stUtc, stUtc);
}

// The log leaves out the year: it is the one that brings the line near to the start.
bool CStreamTime::SecondsOf(const std::string& strLogTime, double& f64Seconds) const
{
    SYSTEMTIME stTime = m_stLocal;
    if (std::sscanf(strLogTime.c_str(), "%2hu-%2hu %2hu:%2hu:%2hu.%3hu", &stTime.wMonth, &stTime.wDay, &stTime.wHour,
                    &stTime.wMinute, &stTime.wSecond, &stTime.wMilliseconds) != 6)
        return false;
    FILETIME stStart{};
    FILETIME stLine{};
    if (!SystemTimeToFileTime(&m_stLocal, &stStart) || !SystemTimeToFileTime(&stTime, &stLine))
        return false;
    f64Seconds = SecondsBetween(stStart, stLine);
    if (f64Seconds > HALF_A_YEAR || f64Seconds < -HALF_A_YEAR)
    {
        stTime.wYear = static_cast<WORD>(stTime.wYear + (f64Seconds < 0 ? 1 : -1));
        if (!SystemTimeToFileTime(&stTime, &stLine))
            return false;
        f64Seconds = SecondsBetween(stStart, stLine);
    }
    return true;
}
