// A tuning file as the module reads it: sensors, volume bands, control words, parameter sets.
#pragma once

#include "protection/kelvane_protection.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

constexpr size_t TUNING_CONTROL_COUNT = 8;

struct TuningSet
{
    std::string strKey;
    std::array<uint64_t, TUNING_CONTROL_COUNT> u64Control{};
    KelvaneStruParam oParam{};
};

struct TuningFile
{
    std::string strLibraryVersions; // separated by commas
    std::string strDataVersion;
    std::vector<int> vecSensors; // ids
    std::vector<int> vecHot;     // degrees Celsius, one per sensor
    std::vector<int> vecCool;
    std::vector<int> vecVolume; // percent
    std::vector<TuningSet> vecSets;
};

// The XML text. strSource is named in it as what it was built from.
std::string FormatTuning(const TuningFile& oTuning, const std::string& strSource);

// What the module would make of the file. Throws CHostError: absent, no XML, not of this kind, no sets.
TuningFile ReadTuning(const std::string& strPath);

// Null without a set of that key.
const TuningSet* FindSet(const TuningFile& oTuning, const std::string& strKey);
