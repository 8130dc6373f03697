// A tuning file's readable source: the speaker once, and for each set what differs.
#pragma once

#include "host/tuning/tuning_file.h"

// Throws CHostError with everything that is wrong, a line each: file, line, name, allowed range.
TuningFile ReadTuningSource(const std::string& strPath);
