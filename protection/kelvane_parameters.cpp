// Reads, writes and checks parameter sets by their table.
#include "protection/kelvane_parameters.h"

#include <cmath>

namespace
{
int16_t* Words(KelvaneStruParam& oStruParam)
{
    return reinterpret_cast<int16_t*>(&oStruParam);
}

const int16_t* Words(const KelvaneStruParam& oStruParam)
{
    return reinterpret_cast<const int16_t*>(&oStruParam);
}

// Values that lie in range one by one and make no speaker, or none that can be protected, together.
struct Rule
{
    KelvaneParameter eParameter; // named in the fault
    bool (*fHolds)(const KelvaneStruParam& oStruParam, int iSpeaker);
    const char* pText;
};

double Get(const KelvaneStruParam& oStruParam, KelvaneParameter eParameter, int iSpeaker)
{
    return GetParameter(oStruParam, eParameter, iSpeaker);
}

double CoilSeconds(const KelvaneStruParam& oStruParam, int i)
{
    return Get(oStruParam, KelvaneParameter::COIL_TO_MAGNET, i) * Get(oStruParam, KelvaneParameter::COIL_HEAT, i);
}

// Rise of the coil over the magnet with a full-scale square wave, of that which the limit leaves in the hottest
// ambient.
double Overload(const KelvaneStruParam& oStruParam, int i)
{
    const double f64FullScaleV = Get(oStruParam, KelvaneParameter::FULL_SCALE, i);
    const double f64RiseK = f64FullScaleV * f64FullScaleV / Get(oStruParam, KelvaneParameter::COIL_RESISTANCE, i) *
                            Get(oStruParam, KelvaneParameter::COIL_TO_MAGNET, i);
    return f64RiseK /
           (Get(oStruParam, KelvaneParameter::COIL_LIMIT, i) - Get(oStruParam, KelvaneParameter::HOTTEST_AMBIENT, i));
}

const Rule RULES[] = {
    {KelvaneParameter::COIL_HEAT,
     [](const KelvaneStruParam& oParam, int i)
     { return CoilSeconds(oParam, i) >= 0.3 && CoilSeconds(oParam, i) <= 20; },
     "CoilToMagnet times CoilHeat, the coil's time constant, is 0.3 to 20 s"},
    {KelvaneParameter::MAGNET_HEAT,
     [](const KelvaneStruParam& oParam, int i)
     {
         return Get(oParam, KelvaneParameter::MAGNET_TO_AMBIENT, i) * Get(oParam, KelvaneParameter::MAGNET_HEAT, i) >=
                4 * CoilSeconds(oParam, i);
     },
     "MagnetToAmbient times MagnetHeat is at least 4 coil time constants"},
    {KelvaneParameter::COIL_LIMIT,
     [](const KelvaneStruParam& oParam, int i)
     {
         return Get(oParam, KelvaneParameter::COIL_LIMIT, i) >= Get(oParam, KelvaneParameter::HOTTEST_AMBIENT, i) +
                                                                    Get(oParam, KelvaneParameter::AMBIENT_MARGIN, i) +
                                                                    10;
     },
     "CoilLimit is at least 10 K over HottestAmbient plus AmbientMargin"},
    {KelvaneParameter::FULL_SCALE, [](const KelvaneStruParam& oParam, int i) { return Overload(oParam, i) <= 12; },
     "a full-scale square heats the coil over its magnet by at most 12 times what CoilLimit leaves over "
     "HottestAmbient"},
    {KelvaneParameter::DISPLACEMENT_LIMIT,
     [](const KelvaneStruParam& oParam, int i)
     {
         return Get(oParam, KelvaneParameter::DISPLACEMENT, i) * Get(oParam, KelvaneParameter::FULL_SCALE, i) <=
                20 * Get(oParam, KelvaneParameter::DISPLACEMENT_LIMIT, i);
     },
     "Displacement times FullScale is at most 20 times DisplacementLimit"},
    {KelvaneParameter::CEILING_EMPTY,
     [](const KelvaneStruParam& oParam, int)
     {
         return GetParameter(oParam, KelvaneParameter::CEILING_EMPTY) <=
                GetParameter(oParam, KelvaneParameter::CEILING_FULL);
     },
     "CeilingEmpty is at most CeilingFull"},
};

bool InRange(const KelvaneStruParam& oStruParam, const KelvaneParameterInfo& oInfo, int iSpeaker)
{
    const double f64Value = GetParameter(oStruParam, oInfo.eParameter, iSpeaker);
    return f64Value >= oInfo.f64Lowest && f64Value <= oInfo.f64Highest; // false for NaN
}
} // namespace

double GetParameter(const KelvaneStruParam& oStruParam, KelvaneParameter eParameter, int iSpeaker)
{
    const KelvaneParameterInfo& oInfo = GetParameterInfo(eParameter);
    const int iPlace = oInfo.iPlace + (oInfo.bPerSpeaker ? iSpeaker : 0);
    return oInfo.bDouble ? oStruParam.sLSMTvcCoef0[iPlace] : Words(oStruParam)[iPlace];
}

void SetParameter(KelvaneStruParam& oStruParam, KelvaneParameter eParameter, double f64Value, int iSpeaker)
{
    const KelvaneParameterInfo& oInfo = GetParameterInfo(eParameter);
    const int iPlace = oInfo.iPlace + (oInfo.bPerSpeaker ? iSpeaker : 0);
    if (oInfo.bDouble)
        oStruParam.sLSMTvcCoef0[iPlace] = f64Value;
    else
        Words(oStruParam)[iPlace] = static_cast<int16_t>(std::lround(f64Value));
}

KelvaneStruParam DefaultParameters()
{
    KelvaneStruParam oStruParam{};
    for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
        for (int i = 0; i < (oInfo.bPerSpeaker ? KELVANE_MAX_CHANNELS : 1); ++i)
            SetParameter(oStruParam, oInfo.eParameter, oInfo.f64Default, i);
    return oStruParam;
}

KelvaneParameterFault CheckParameters(const KelvaneStruParam& oStruParam)
{
    const KelvaneParameterInfo& oMode = GetParameterInfo(KelvaneParameter::MODE);
    const KelvaneParameterInfo& oSpeakers = GetParameterInfo(KelvaneParameter::SPEAKERS);
    if (!InRange(oStruParam, oMode, 0))
        return {&oMode};
    if (oStruParam.sFFModule[0] != 2)
        return {};
    if (!InRange(oStruParam, oSpeakers, 0))
        return {&oSpeakers};
    for (const KelvaneParameterInfo& oInfo : KELVANE_PARAMETERS)
        for (int i = 0; i < (oInfo.bPerSpeaker ? oStruParam.sChannelNum : 1); ++i)
            if (!InRange(oStruParam, oInfo, i))
                return {&oInfo, i};
    for (const Rule& oRule : RULES)
        for (int i = 0; i < oStruParam.sChannelNum; ++i)
            if (!oRule.fHolds(oStruParam, i))
                return {&GetParameterInfo(oRule.eParameter), i, oRule.pText};
    return {};
}
