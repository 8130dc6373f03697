// The numbers that a tuning source may hold: their names, and what is allowed for each.
#pragma once

#include "protection/kelvane_parameters.h"

#include <optional>
#include <string>

struct SourceRange
{
    double f64Lowest = 0;
    double f64Highest = 0;
    bool bWhole = true; // whole numbers alone
};

inline constexpr SourceRange SENSOR_ID{0, 255};
inline constexpr SourceRange CELSIUS{-255, 255};
inline constexpr SourceRange PERCENT{0, 100};
inline constexpr SourceRange SWITCH{0, 1};

// A control word of every set.
struct ControlRow
{
    const char* pName;
    size_t uWord;
    SourceRange oRange;
};
inline constexpr ControlRow CONTROL_ROWS[] = {
    {"codec_gain", 0, SWITCH},        {"amplifiers", 1, {1, 2}},         {"temperature_offset_c", 2, {0, 100}},
    {"sets_by_heat", 3, SWITCH},      {"report_temperature", 5, SWITCH}, {"four_channel_order", 6, {0, 2}},
    {"library_sensor", 7, SENSOR_ID},
};

SourceRange RangeOf(const KelvaneParameterInfo& oInfo);

// "allowed is 0 to 2, whole numbers".
std::string Allowed(const SourceRange& oRange);
// The same of a number by its name, behind "; "; empty for a name that no number has.
std::string AllowedFor(const std::string& strName);
// What a misspelt name may have meant, and what is allowed for that, behind "; "; empty if nothing is near.
std::string NearestTo(const std::string& strName);
