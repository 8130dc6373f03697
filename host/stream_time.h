// Moments of the machine's clock as seconds since a stream's start.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct TimedText
{
    double f64Seconds = 0; // since the stream's start; below 0 before it
    std::string strText;
};

struct TimedNumber
{
    double f64Seconds = 0;
    int iValue = 0;
};

class CStreamTime
{
public:
    // The start is now, on the machine's clock.
    void Start();

    double SecondsOf(const FILETIME& stUtc) const;
    // Of a local time as the module's log writes it, "MM-DD hh:mm:ss.mmm"; false for any other text.
    bool SecondsOf(const std::string& strLogTime, double& f64Seconds) const;

private:
    FILETIME m_stUtc{};
    SYSTEMTIME m_stLocal{};
};
