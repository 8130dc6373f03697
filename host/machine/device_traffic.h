// What the machine's devices were sent during a run, in their own terms and by the stream's time.
#pragma once

#include "host/machine/stream_time.h"

#include <map>

struct DeviceTraffic
{
    std::string strName;
    std::vector<TimedText> vecEvents; // "open", "active", "gain low", "close", ...
};

struct ControllerTraffic
{
    std::vector<TimedNumber> vecReports;           // tenths of a degree
    std::vector<double> vecCancels;                // seconds
    std::map<int, std::vector<double>> mapQueries; // by sensor, seconds
    std::vector<TimedText> vecOther;               // words of no known form
    bool IsEmpty() const { return vecReports.empty() && vecCancels.empty() && mapQueries.empty() && vecOther.empty(); }
};

struct MachineTraffic
{
    std::vector<DeviceTraffic> vecDevices; // in the order in which they were first reached
    ControllerTraffic oController;
};

// What was sent since the process began. Any thread.
MachineTraffic ReadTraffic(const CStreamTime& oTime);
