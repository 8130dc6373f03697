// The library's parameters by the names that tuning sources use: small letters, the unit at the end.
#pragma once

#include "protection/kelvane_parameters.h"

#include <string>

// "coil_resistance_ohm", "displacement_mm_per_v", "mode".
std::string SourceName(const KelvaneParameterInfo& oInfo);

// Null for a name that no parameter has.
const KelvaneParameterInfo* FindParameter(const std::string& strSourceName);

// The fewest digits that give the number back; a point in every locale.
std::string FormatNumber(double f64Value);
