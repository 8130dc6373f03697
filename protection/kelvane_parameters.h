// Every parameter and state value of our protection library: its name, unit, range, default and place in the record.
// The library checks sets by this table; tools write and show them by it.
#pragma once

#include "protection/kelvane_protection.h"

// The rows of KELVANE_PARAMETERS, in its order.
enum class KelvaneParameter
{
    MODE,
    HEAT_STAGE,
    EXCURSION_STAGE,
    CEILING_STAGE,
    HEAT_LINK,
    SPEAKERS,
    DEEP_LOOK_AHEAD,
    UPPER_LOOK_AHEAD,
    BATTERY_KNEE,
    CEILING_FULL,
    CEILING_EMPTY,
    DRIVE,
    COIL_RESISTANCE,
    RESISTANCE_RISE,
    RESONANCE,
    MECHANICAL_Q,
    ELECTRICAL_Q,
    DISPLACEMENT,
    DISPLACEMENT_LIMIT,
    DISPLACEMENT_MARGIN,
    FULL_SCALE,
    COIL_TO_MAGNET,
    COIL_HEAT,
    MAGNET_TO_AMBIENT,
    MAGNET_HEAT,
    COIL_LIMIT,
    RESISTANCE_MARGIN,
    COLDEST_AMBIENT,
    HOTTEST_AMBIENT,
    AMBIENT_MARGIN,
    SENSE_VOLTAGE,
    SENSE_CURRENT,
    COUNT
};

// A word per speaker stands at iPlace + speaker, a double per speaker at iPlace + speaker too.
struct KelvaneParameterInfo
{
    KelvaneParameter eParameter;
    const char* pName;
    const char* pUnit;
    double f64Lowest;
    double f64Highest;
    double f64Default;
    bool bDouble;     // in sLSMTvcCoef0; else in the short region, whole numbers of the unit
    bool bPerSpeaker; // KELVANE_MAX_CHANNELS of it
    int iPlace;       // word or double, from 0
    const char* pSentence;
};

// A new one finds 0 at its place in the files that are out: its range includes 0, or they have to be built anew.
// clang-format off
inline constexpr KelvaneParameterInfo KELVANE_PARAMETERS[] = {
    {KelvaneParameter::MODE, "Mode", "", 0, 2, 2, false, false, 1, "0: the signal passes bit for bit. 1: each channel times its Drive, nothing else. 2: protection."},
    {KelvaneParameter::HEAT_STAGE, "HeatStage", "", 0, 1, 1, false, false, 2, "1: the coil is kept under CoilLimit."},
    {KelvaneParameter::EXCURSION_STAGE, "ExcursionStage", "", 0, 1, 1, false, false, 3, "1: the cone is kept within DisplacementLimit."},
    {KelvaneParameter::CEILING_STAGE, "CeilingStage", "", 0, 1, 1, false, false, 4, "1: no peak goes over the ceiling."},
    {KelvaneParameter::HEAT_LINK, "HeatLink", "", 0, 1, 1, false, false, 5, "1: all speakers get the heat gain of the hottest, which keeps the stereo image."},
    {KelvaneParameter::SPEAKERS, "Speakers", "", 1, 8, 2, false, false, 17, "Speakers that the set describes; a channel behind them is protected as the last one."},
    {KelvaneParameter::DEEP_LOOK_AHEAD, "DeepLookAhead", "samples", 16, 32, 32, false, false, 20, "Split of the deep band: 16100 Hz / samples. Below it bass goes first."},
    {KelvaneParameter::UPPER_LOOK_AHEAD, "UpperLookAhead", "samples", 4, 16, 16, false, false, 21, "Split of the upper band: 16100 Hz / samples. Below it goes what the deep band leaves."},
    {KelvaneParameter::BATTERY_KNEE, "BatteryKnee", "%", 0, 100, 30, false, false, 22, "Charge under which the ceiling falls, while not on mains."},
    {KelvaneParameter::CEILING_FULL, "CeilingFull", "%", 10, 100, 100, false, false, 23, "Ceiling on mains or above BatteryKnee, of full scale."},
    {KelvaneParameter::CEILING_EMPTY, "CeilingEmpty", "%", 10, 100, 50, false, false, 24, "Ceiling with the battery empty; in between by the charge."},
    {KelvaneParameter::DRIVE, "Drive", "%", 0, 400, 100, false, true, 3517, "Gain before everything else; 100 leaves the signal as it is."},
    {KelvaneParameter::COIL_RESISTANCE, "CoilResistance", "ohm", 1, 64, 6, true, true, 0, "Of the coil at 25 C."},
    {KelvaneParameter::RESISTANCE_RISE, "ResistanceRise", "1/K", 0.001, 0.006, 0.00393, true, true, 8, "Of the coil's metal; copper 0.00393."},
    {KelvaneParameter::RESONANCE, "Resonance", "Hz", 100, 2000, 800, true, true, 16, "In its box."},
    {KelvaneParameter::MECHANICAL_Q, "MechanicalQ", "", 0.5, 20, 4, true, true, 24, "Of suspension and air alone."},
    {KelvaneParameter::ELECTRICAL_Q, "ElectricalQ", "", 0.3, 20, 2, true, true, 32, "Of the short-circuited coil at 25 C alone."},
    {KelvaneParameter::DISPLACEMENT, "Displacement", "mm/V", 0.001, 5, 0.148, true, true, 40, "Of the cone at DC and 25 C."},
    {KelvaneParameter::DISPLACEMENT_LIMIT, "DisplacementLimit", "mm", 0.05, 10, 0.4, true, true, 48, "To either side."},
    {KelvaneParameter::DISPLACEMENT_MARGIN, "DisplacementMargin", "%", 0, 50, 20, true, true, 56, "Of DisplacementLimit, kept free for units that differ from these numbers."},
    {KelvaneParameter::FULL_SCALE, "FullScale", "V", 0.5, 40, 6, true, true, 64, "The amplifier's peak output at a sample of 1."},
    {KelvaneParameter::COIL_TO_MAGNET, "CoilToMagnet", "K/W", 2, 200, 40, true, true, 72, "Thermal resistance."},
    {KelvaneParameter::COIL_HEAT, "CoilHeat", "J/K", 0.002, 5, 0.025, true, true, 80, "Heat capacity."},
    {KelvaneParameter::MAGNET_TO_AMBIENT, "MagnetToAmbient", "K/W", 2, 200, 45, true, true, 88, "Thermal resistance."},
    {KelvaneParameter::MAGNET_HEAT, "MagnetHeat", "J/K", 0.1, 500, 4, true, true, 96, "Heat capacity."},
    {KelvaneParameter::COIL_LIMIT, "CoilLimit", "C", 70, 200, 105, true, true, 104, "The coil's highest temperature."},
    {KelvaneParameter::RESISTANCE_MARGIN, "ResistanceMargin", "%", 0, 20, 5, true, true, 112, "By which a unit's CoilResistance may be lower; more heat for the same voltage."},
    {KelvaneParameter::COLDEST_AMBIENT, "ColdestAmbient", "C", -40, 25, 0, true, true, 120, "Assumed for the cone while no temperature is known: a cold coil moves further."},
    {KelvaneParameter::HOTTEST_AMBIENT, "HottestAmbient", "C", 25, 90, 60, true, true, 128, "Assumed for the heat while no temperature is known."},
    {KelvaneParameter::AMBIENT_MARGIN, "AmbientMargin", "K", 0, 30, 10, true, true, 136, "By which the known temperature may be wrong, to both sides."},
    {KelvaneParameter::SENSE_VOLTAGE, "SenseVoltage", "V", 0.5, 100, 10, true, true, 144, "Of a voltage sense sample of 1."},
    {KelvaneParameter::SENSE_CURRENT, "SenseCurrent", "A", 0.05, 50, 2, true, true, 152, "Of a current sense sample of 1."},
};
// clang-format on
inline constexpr int KELVANE_PARAMETER_COUNT = static_cast<int>(KelvaneParameter::COUNT);
static_assert(sizeof(KELVANE_PARAMETERS) / sizeof(KELVANE_PARAMETERS[0]) == KELVANE_PARAMETER_COUNT);

constexpr const KelvaneParameterInfo& GetParameterInfo(KelvaneParameter eParameter)
{
    return KELVANE_PARAMETERS[static_cast<int>(eParameter)];
}

constexpr bool ParametersStandInOrder()
{
    for (int i = 0; i < KELVANE_PARAMETER_COUNT; ++i)
        if (static_cast<int>(KELVANE_PARAMETERS[i].eParameter) != i)
            return false;
    return true;
}
static_assert(ParametersStandInOrder());

constexpr bool ParametersStandApart()
{
    for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
        for (const KelvaneParameterInfo& oOther : KELVANE_PARAMETERS)
            if (oInfo.eParameter != oOther.eParameter && oInfo.bDouble == oOther.bDouble &&
                oOther.iPlace >= oInfo.iPlace &&
                oOther.iPlace < oInfo.iPlace + (oInfo.bPerSpeaker ? KELVANE_MAX_CHANNELS : 1))
                return false;
    return true;
}
static_assert(ParametersStandApart());

// In the parameter's unit. iSpeaker counts for those that each speaker has.
double GetParameter(const KelvaneStruParam& oStruParam, KelvaneParameter eParameter, int iSpeaker = 0);
void SetParameter(KelvaneStruParam& oStruParam, KelvaneParameter eParameter, double f64Value, int iSpeaker = 0);

// A zeroed record with every parameter at its default, for all speakers.
KelvaneStruParam DefaultParameters();

// What is wrong with a set, first fault first: a value out of range, or values that make no speaker together. Null:
// none. Modes 0 and 1 read nothing else of the set but Drive, so nothing else is looked at.
struct KelvaneParameterFault
{
    const KelvaneParameterInfo* pInfo = nullptr;
    int iSpeaker = 0;
    const char* pRule = nullptr; // the rule that is broken, when the value alone is in range
};
KelvaneParameterFault CheckParameters(const KelvaneStruParam& oStruParam);

// What AudioKelvaneGetParams reports in words named for it; the value is the word / divisor.
struct KelvaneStateInfo
{
    const char* pName;
    const char* pUnit;
    bool bPerSpeaker;
    int iWord;
    int iDivisor;
    const char* pSentence;
};

enum class KelvaneState
{
    COIL_RESISTANCE,
    COIL_TEMPERATURE,
    AMBIENT,
    LEVEL,
    HEAT_GAIN,
    EXCURSION_GAIN,
    CEILING,
    CEILING_GAIN,
    COIL_POWER,
    ALLOWED_POWER,
    MAGNET_TEMPERATURE,
    DISPLACEMENT,
    COUNT
};

// clang-format off
inline constexpr KelvaneStateInfo KELVANE_STATES[] = {
    {"CoilResistance", "ohm", true, 2814, 100, "sLSMRe: of the coil, now."},
    {"CoilTemperature", "C", true, 2854, 100, "sLSMCoilTemp: of the coil, by the model; the temperature last given, while there is no model."},
    {"Ambient", "C", false, 2894, 1, "sLSMMonitorTemp: the temperature last given."},
    {"Level", "%", true, 3405, 1, "sPOWPrms: RMS of the last frame out, of full scale."},
    {"HeatGain", "", true, 3639, 100, "sTEPCurrentGain: of the heat stage; in modes 0 and 1 the gain in effect."},
    {"ExcursionGain", "", true, 4160, 100, "sANDCurrentGain: what the excursion stage leaves of the deep band; in modes 0 and 1 the gain in effect."},
    {"Ceiling", "", false, 4892, 100, "sBCNCurrentGain: the ceiling that the supply allows, of full scale."},
    {"CeilingGain", "", true, 5053, 10000, "sIPWCurrentGain: of the last limiter; in modes 0 and 1 the gain in effect."},
    {"CoilPower", "W", true, 5061, 1000, "sIPWPCurrent: heat put into the coil, mean of 0.1 s."},
    {"AllowedPower", "W", true, 5069, 1000, "sIPWPctmax: heat that the coil may get now."},
    {"MagnetTemperature", "C", true, 5077, 100, "Of the magnet, by the model."},
    {"Displacement", "%", true, 5085, 10, "Peak of the last 5 ms, of DisplacementLimit, by the model."},
};
// clang-format on
inline constexpr int KELVANE_STATE_COUNT = static_cast<int>(KelvaneState::COUNT);
static_assert(sizeof(KELVANE_STATES) / sizeof(KELVANE_STATES[0]) == KELVANE_STATE_COUNT);
