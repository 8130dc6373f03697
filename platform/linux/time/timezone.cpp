// The time zone as of now.
#include "base/failure.h"
#include "time/filetime.h"

#include <ctime>

namespace
{
constexpr LONG SECONDS_PER_MINUTE = 60;
constexpr time_t QUARTER_YEAR = 7889400;
} // namespace

DWORD GetTimeZoneInformation(LPTIME_ZONE_INFORMATION lpTimeZoneInformation)
{
    if (IsToldToFail("GetTimeZoneInformation"))
        return TIME_ZONE_ID_INVALID;
    FILETIME stNow{};
    GetSystemTimeAsFileTime(&stNow);
    const time_t iNow = SecondsOf(TicksOf(stNow));
    tm stLocal{};
    localtime_r(&iNow, &stLocal);
    // Within a year from now standard time comes at least once; without daylight time it is now.
    tm stStandard = stLocal;
    for (time_t iTime = iNow; stStandard.tm_isdst > 0 && iTime < iNow + 4 * QUARTER_YEAR; iTime += QUARTER_YEAR)
        localtime_r(&iTime, &stStandard);
    *lpTimeZoneInformation = TIME_ZONE_INFORMATION{};
    lpTimeZoneInformation->Bias = static_cast<LONG>(-stStandard.tm_gmtoff / SECONDS_PER_MINUTE);
    return stLocal.tm_isdst > 0 ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
}
