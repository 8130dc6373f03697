// Moments of the machine's clock as seconds since a stream's start, and its end.
#pragma once

#include <windows.h>

#include <limits>
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
    // The last period is over; what follows is the way down.
    void End();

    double SecondsOf(const FILETIME& stUtc) const;
    // Of a local time as the module's log writes it, "MM-DD hh:mm:ss.mmm"; false for any other text.
    bool SecondsOf(const std::string& strLogTime, double& f64Seconds) const;
    // Whether that is behind the end. Log and end have whole milliseconds: the same one counts as behind.
    bool IsBehindEnd(double f64Seconds) const { return f64Seconds >= m_f64End; }

private:
    FILETIME m_stUtc{};
    SYSTEMTIME m_stLocal{};
    double m_f64End = std::numeric_limits<double>::infinity(); // seconds since the start
};
