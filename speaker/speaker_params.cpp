// Ranges, and the way between the data sheet's values and the force balance's.
#include "speaker/speaker_params.h"

#include <cmath>
#include <cstdio>

namespace
{
constexpr double PI = 3.14159265358979323846;
constexpr double M_PER_MM = 1e-3;

template <typename Record> struct RangeRow
{
    const char* pName;
    double Record::*pValue;
    double f64Low;
    double f64High;
};

const RangeRow<SpeakerParams> PARAM_RANGE[] = {
    {"f64CoilResistanceOhm", &SpeakerParams::f64CoilResistanceOhm, 0.5, 100.0},
    {"f64ResistanceRisePerK", &SpeakerParams::f64ResistanceRisePerK, 0.0, 0.01},
    {"f64ResonanceHz", &SpeakerParams::f64ResonanceHz, 20.0, 5000.0},
    {"f64MechanicalQ", &SpeakerParams::f64MechanicalQ, 0.1, 100.0},
    {"f64ElectricalQ", &SpeakerParams::f64ElectricalQ, 0.1, 100.0},
    {"f64DisplacementMmPerV", &SpeakerParams::f64DisplacementMmPerV, 1e-4, 10.0},
    {"f64FullScaleV", &SpeakerParams::f64FullScaleV, 0.01, 200.0},
    {"f64CoilToMagnetKPerW", &SpeakerParams::f64CoilToMagnetKPerW, 0.1, 1000.0},
    {"f64CoilHeatJPerK", &SpeakerParams::f64CoilHeatJPerK, 1e-3, 1000.0},
    {"f64MagnetToAmbientKPerW", &SpeakerParams::f64MagnetToAmbientKPerW, 0.1, 1000.0},
    {"f64MagnetHeatJPerK", &SpeakerParams::f64MagnetHeatJPerK, 1e-3, 1e5},
    {"f64AmbientC", &SpeakerParams::f64AmbientC, -40.0, 100.0},
};

const RangeRow<SpeakerLimits> LIMIT_RANGE[] = {
    {"f64DisplacementMm", &SpeakerLimits::f64DisplacementMm, 1e-3, 50.0},
    {"f64CoilC", &SpeakerLimits::f64CoilC, 0.0, 400.0},
};

// A value that isn't a number is outside every range.
template <typename Record, size_t ROWS>
SpeakerResult CheckRanges(const Record& oRecord, const RangeRow<Record> (&oRange)[ROWS])
{
    for (const RangeRow<Record>& oRow : oRange)
    {
        const double f64Value = oRecord.*oRow.pValue;
        if (f64Value >= oRow.f64Low && f64Value <= oRow.f64High)
            continue;
        char strText[160];
        snprintf(strText, sizeof strText, "%s is %g, allowed is %g to %g", oRow.pName, f64Value, oRow.f64Low,
                 oRow.f64High);
        return {SpeakerError::PARAMETER, strText};
    }
    return {};
}
} // namespace

SpeakerResult CheckParams(const SpeakerParams& oParams)
{
    return CheckRanges(oParams, PARAM_RANGE);
}

SpeakerResult CheckLimits(const SpeakerLimits& oLimits)
{
    return CheckRanges(oLimits, LIMIT_RANGE);
}

// From w0^2 = k/m, Qes = w0 m R/Bl^2, Qms = w0 m/Rms, and x/u = Bl/(k R) at DC.
SpeakerMechanics DeriveMechanics(const SpeakerParams& oParams)
{
    const double f64Omega = 2.0 * PI * oParams.f64ResonanceHz;
    const double f64MPerV = oParams.f64DisplacementMmPerV * M_PER_MM;
    SpeakerMechanics oMechanics;
    oMechanics.f64StiffnessNPerM =
        1.0 / (f64Omega * oParams.f64ElectricalQ * oParams.f64CoilResistanceOhm * f64MPerV * f64MPerV);
    oMechanics.f64MassKg = oMechanics.f64StiffnessNPerM / (f64Omega * f64Omega);
    oMechanics.f64ForceFactorNPerA = f64MPerV * oMechanics.f64StiffnessNPerM * oParams.f64CoilResistanceOhm;
    oMechanics.f64DampingNSPerM = f64Omega * oMechanics.f64MassKg / oParams.f64MechanicalQ;
    return oMechanics;
}

SpeakerParams ScaleStiffness(const SpeakerParams& oParams, double f64Ratio)
{
    SpeakerParams oScaled = oParams;
    oScaled.f64ResonanceHz *= std::sqrt(f64Ratio);
    oScaled.f64MechanicalQ *= std::sqrt(f64Ratio);
    oScaled.f64ElectricalQ *= std::sqrt(f64Ratio);
    oScaled.f64DisplacementMmPerV /= f64Ratio;
    return oScaled;
}

SpeakerParams ScaleMass(const SpeakerParams& oParams, double f64Ratio)
{
    SpeakerParams oScaled = oParams;
    oScaled.f64ResonanceHz /= std::sqrt(f64Ratio);
    oScaled.f64MechanicalQ *= std::sqrt(f64Ratio);
    oScaled.f64ElectricalQ *= std::sqrt(f64Ratio);
    return oScaled;
}

SpeakerParams ScaleResistance(const SpeakerParams& oParams, double f64Ratio)
{
    SpeakerParams oScaled = oParams;
    oScaled.f64CoilResistanceOhm *= f64Ratio;
    oScaled.f64ElectricalQ *= f64Ratio;
    oScaled.f64DisplacementMmPerV /= f64Ratio;
    return oScaled;
}

SpeakerParams ScaleForceFactor(const SpeakerParams& oParams, double f64Ratio)
{
    SpeakerParams oScaled = oParams;
    oScaled.f64ElectricalQ /= f64Ratio * f64Ratio;
    oScaled.f64DisplacementMmPerV *= f64Ratio;
    return oScaled;
}
