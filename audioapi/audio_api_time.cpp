// Time stamps in milliseconds, and times as text.
#include "audioapi/audio_api_time.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <cstdint>
#include <cstdio>

namespace
{
// File times count 100 ns.
constexpr UINT64 FILE_TIME_OF_1970 = 116444736000000000;
constexpr UINT64 FILE_TIME_PER_SECOND = 10000000;
constexpr INT64 FILE_TIME_PER_MS = 10000;
constexpr UINT64 NO_FILE_TIME = UINT64_MAX;      // refused by the platform
constexpr INT64 STAMP_SHIFT = 28800000;          // ms that every stamp lacks
constexpr UINT64 STAMP_OF_1601 = 11644502400000; // ms from the file time's zero to a stamp of 0

FILETIME MakeFileTime(UINT64 iValue)
{
    FILETIME stFileTime;
    stFileTime.dwLowDateTime = static_cast<DWORD>(iValue & 0xFFFFFFFF);
    stFileTime.dwHighDateTime = static_cast<DWORD>(iValue >> 32);
    return stFileTime;
}
} // namespace

INT64 CAudioTIME::FileTimeToMs(const FILETIME& stFileTime)
{
    const UINT64 iValue = static_cast<UINT64>(stFileTime.dwHighDateTime) << 32 | stFileTime.dwLowDateTime;
    return static_cast<INT64>(iValue - FILE_TIME_OF_1970) / FILE_TIME_PER_MS - STAMP_SHIFT;
}

INT64 CAudioTIME::GetIntTime(const SYSTEMTIME& stTime)
{
    FILETIME stFileTime{};
    if (!SystemTimeToFileTime(&stTime, &stFileTime))
    {
        AUDIOLOG_ERROR(AudioLastError(), "SystemTime To FileTime failed!");
        return 0;
    }
    return FileTimeToMs(stFileTime);
}

INT64 CAudioTIME::GetIntTime()
{
    SYSTEMTIME stTime{};
    GetLocalTime(&stTime);
    return GetIntTime(stTime);
}

INT64 CAudioTIME::GetTimeDiff(const SYSTEMTIME& stStart, const SYSTEMTIME& stEnd)
{
    return GetIntTime(stEnd) - GetIntTime(stStart);
}

std::string CAudioTIME::GetStrTime(const SYSTEMTIME& stTime, const std::string& strFormat)
{
    const size_t iFieldCount = CAudioSTR::Split(strFormat, "%").size();
    if (iFieldCount < 1 || iFieldCount > 7)
    {
        AUDIOLOG_WARN("Invaild time format!");
        return {};
    }
    // All seven go to the formatter, which leaves alone those behind the last conversion.
    char strTime[64];
    const int iLen = std::snprintf(strTime, sizeof(strTime), strFormat.c_str(), stTime.wYear, stTime.wMonth,
                                   stTime.wDay, stTime.wHour, stTime.wMinute, stTime.wSecond, stTime.wMilliseconds);
    if (iLen < 0 || iLen >= static_cast<int>(sizeof(strTime)))
    {
        AUDIOLOG_ERROR(AUDIO_BAD_DATA, "systime trun to string time failed!");
        return {};
    }
    return strTime;
}

std::string CAudioTIME::GetStrTime(const std::string& strFormat)
{
    SYSTEMTIME stTime{};
    GetLocalTime(&stTime);
    return GetStrTime(stTime, strFormat);
}

std::string CAudioTIME::GetStrTime(const FILETIME& stFileTime, const std::string& strFormat)
{
    SYSTEMTIME stTime{};
    if (AUDIO_CHECK_WIN(FileTimeToSystemTime(&stFileTime, &stTime)) != 0)
        return {};
    return GetStrTime(stTime, strFormat);
}

std::string CAudioTIME::GetStrTime(UINT32 iSeconds, const std::string& strFormat)
{
    const FILETIME stFileTime = MakeFileTime(FILE_TIME_OF_1970 + iSeconds * FILE_TIME_PER_SECOND);
    FILETIME stLocalTime{};
    if (AUDIO_CHECK_WIN(FileTimeToLocalFileTime(&stFileTime, &stLocalTime)) != 0)
        return {};
    return GetStrTime(stLocalTime, strFormat);
}

std::string CAudioTIME::MsToStrTime(INT64 iStamp, const std::string& strFormat)
{
    if (iStamp == 0)
        return "0";
    const UINT64 iTime = static_cast<UINT64>(iStamp) + STAMP_OF_1601;
    constexpr UINT64 LAST_TIME = INT64_MAX / FILE_TIME_PER_MS;
    return GetStrTime(MakeFileTime(iTime <= LAST_TIME ? iTime * FILE_TIME_PER_MS : NO_FILE_TIME), strFormat);
}
