// The equations of cone, back-EMF and heat as coefficients.
#include "protection/dsp/speaker_constants.h"

#include "protection/dsp/base/lanes.h"
#include "protection/dsp/base/own_math.h"

#include <algorithm>

namespace
{
constexpr double MEAN_SEC = 0.1;
constexpr double FALL_SEC = 0.15;
constexpr double EASY_OVERLOAD = 6.0;
constexpr double MODEL_ERROR = 0.4; // of a displacement by the matched poles, at most, by (w0 T)^2
} // namespace

SpeakerValues GetSpeakerValues(const KelvaneStruParam& oStruParam, int iSpeaker)
{
    SpeakerValues oValues;
    for (int i = 0; i < KELVANE_PARAMETER_COUNT; ++i)
        oValues.f64Values[i] = GetParameter(oStruParam, KELVANE_PARAMETERS[i].eParameter, iSpeaker);
    return oValues;
}

void SpeakerConstants::Init(const SpeakerValues& oValues)
{
    f64RadPerSample = 6.283185307179586 * oValues[KelvaneParameter::RESONANCE] / SAMPLE_RATE_HZ;
    f64TanHalf = OwnSin(0.5 * f64RadPerSample) / OwnCos(0.5 * f64RadPerSample);
    f64PerMechanicalQ = 1.0 / oValues[KelvaneParameter::MECHANICAL_Q];
    f64ElectricalQ = oValues[KelvaneParameter::ELECTRICAL_Q];
    f64FullScaleV = oValues[KelvaneParameter::FULL_SCALE];
    f64Margin = oValues[KelvaneParameter::DISPLACEMENT_MARGIN] / 100.0;
    f64Limit = oValues[KelvaneParameter::DISPLACEMENT_LIMIT] * (1.0 - f64Margin) *
               (1.0 - MODEL_ERROR * f64RadPerSample * f64RadPerSample) /
               (oValues[KelvaneParameter::DISPLACEMENT] * f64FullScaleV);
    f64ResistanceOhm = oValues[KelvaneParameter::COIL_RESISTANCE];
    f64RisePerK = oValues[KelvaneParameter::RESISTANCE_RISE];
    f64CoilLimitC = oValues[KelvaneParameter::COIL_LIMIT];
    f64CoilKPerW = oValues[KelvaneParameter::COIL_TO_MAGNET];
    f64CoilJPerK = oValues[KelvaneParameter::COIL_HEAT];
    const double f64CoilSec = f64CoilKPerW * f64CoilJPerK;
    // The rise that a full-scale square brings, by what the limit leaves. A fast or overloaded coil is followed faster.
    const double f64Overload = f64FullScaleV * f64FullScaleV / f64ResistanceOhm * f64CoilKPerW /
                               (f64CoilLimitC - oValues[KelvaneParameter::HOTTEST_AMBIENT]);
    const double f64PaceSec = std::min(f64CoilSec, 1.0) * std::min(1.0, EASY_OVERLOAD / f64Overload);
    f64CoilStep = 1.0 - OwnExp(-BLOCK_SEC / f64CoilSec);
    f64MeanStep = 1.0 - OwnExp(-BLOCK_SEC / (MEAN_SEC * f64PaceSec));
    f64FallStep = 1.0 - OwnExp(-BLOCK_SEC / (FALL_SEC * f64PaceSec));
    f64MagnetKPerW = oValues[KelvaneParameter::MAGNET_TO_AMBIENT];
    f64MagnetJPerK = oValues[KelvaneParameter::MAGNET_HEAT];
}

// X/U = S(T) w0^2 / (s^2 + s w0/Qt + w0^2) with matched poles; S(T) = S25 R25/R(T) stands in the limit.
ConeCoefs SpeakerConstants::Cone(double f64ResistanceRatio) const
{
    const double f64PerQ = f64PerMechanicalQ + 1.0 / (f64ElectricalQ * f64ResistanceRatio);
    const double f64Damping = 0.5 * f64RadPerSample * f64PerQ;
    const double f64Square = f64RadPerSample * f64RadPerSample - f64Damping * f64Damping;
    const double f64Decay = OwnExp(-f64Damping);
    ConeCoefs oCoefs;
    oCoefs.f64A1 = -2.0 * f64Decay * (f64Square >= 0.0 ? OwnCos(std::sqrt(f64Square)) : OwnCosh(std::sqrt(-f64Square)));
    oCoefs.f64A2 = f64Decay * f64Decay;
    oCoefs.f64B = 1.0 + oCoefs.f64A1 + oCoefs.f64A2;
    oCoefs.f64Limit = f64Limit * f64ResistanceRatio;
    return oCoefs;
}

// E/U = s (w0/Qes(T)) / (s^2 + s w0/Qt + w0^2), bilinear, exact at the resonance.
BackEmfCoefs SpeakerConstants::BackEmf(double f64ResistanceRatio) const
{
    const double f64PerElectricalQ = 1.0 / (f64ElectricalQ * f64ResistanceRatio);
    const double f64Damping = f64TanHalf * (f64PerMechanicalQ + f64PerElectricalQ);
    const double f64Square = f64TanHalf * f64TanHalf;
    const double f64Scale = 1.0 / (1.0 + f64Damping + f64Square);
    BackEmfCoefs oCoefs;
    oCoefs.f64B = f64Scale * f64TanHalf * f64PerElectricalQ;
    oCoefs.f64A1 = 2.0 * (f64Square - 1.0) * f64Scale;
    oCoefs.f64A2 = (1.0 - f64Damping + f64Square) * f64Scale;
    return oCoefs;
}
