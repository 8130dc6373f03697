// What the host can find out about a run beside its samples: the module's log, and why the module bypasses.
#pragma once

#include "host/report/play_result.h"

#include <filesystem>
#include <string>
#include <vector>

// Reads the log files that this process' module has written since tSince, a time of this host. Call when the module is
// down.
ModuleLog ReadModuleLog(std::filesystem::file_time_type tSince, const CStreamTime& oTime);

// The tuning file and the parameter set that the module took, as far as its log has told by now; empty if it hasn't.
struct TuningGiven
{
    std::string strFile; // a path of the platform's
    std::string strSet;
};
TuningGiven FindTuningGiven(std::filesystem::file_time_type tSince);

// The reasons to bypass that hold now: rate, protection library, registry values. Call while the module is loaded.
std::vector<std::string> FindBypassReasons(int iRate);
