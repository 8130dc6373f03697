// Time stamps in milliseconds, and times as text.
#pragma once

#include <windows.h>

#include <string>

// A stamp counts milliseconds since 1970 less a fixed eight hours; only differences and order of stamps mean something.
// Operations without state, from any thread. A format is of the printf family and takes one to seven of year, month,
// day, hour, minute, second, millisecond, in this order; the text has at most 63 characters.
class CAudioTIME
{
public:
    // 0 when the time is no valid one.
    static INT64 GetIntTime(const SYSTEMTIME& stTime);
    // Now, in local time.
    static INT64 GetIntTime();
    // End minus start, in milliseconds.
    static INT64 GetTimeDiff(const SYSTEMTIME& stStart, const SYSTEMTIME& stEnd);
    static INT64 FileTimeToMs(const FILETIME& stFileTime);

    // Empty, and logged, for an empty format or one of more than seven conversions, and for a text that is too long.
    static std::string GetStrTime(const SYSTEMTIME& stTime, const std::string& strFormat);
    // Now, in local time.
    static std::string GetStrTime(const std::string& strFormat);
    // As it stands, not moved to local time.
    static std::string GetStrTime(const FILETIME& stFileTime, const std::string& strFormat);
    // Seconds since 1970, moved to local time.
    static std::string GetStrTime(UINT32 iSeconds, const std::string& strFormat);
    // The text of a stamp; "0" for 0.
    static std::string MsToStrTime(INT64 iStamp, const std::string& strFormat);
};
