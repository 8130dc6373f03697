// A tuning file for a person.
#pragma once

#include "host/tuning/tuning_file.h"

// The first set whole, of every other one what differs from it, by the names of tuning sources; what the library's
// table doesn't name, by place and number.
std::string FormatSets(const TuningFile& oTuning);
