// Puts reconstruction, cone and heat together.
#include "speaker/loudspeaker.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{
// Beyond this many radians of the resonance in a step the method is neither exact nor sure to be stable.
constexpr double MAX_STEP_RADIANS = 0.25;

SpeakerResult Refuse(SpeakerError eError, const char* pFormat, double f64Value, double f64Low, double f64High)
{
    char strText[160];
    snprintf(strText, sizeof strText, pFormat, f64Value, f64Low, f64High);
    return {eError, strText};
}

// The step against the fastest motion of the free cone: the larger of resonance and damping.
SpeakerResult CheckStep(const SpeakerMechanics& oMechanics, double f64ResistanceOhm, double f64StepSec)
{
    const double f64Omega = std::sqrt(oMechanics.f64StiffnessNPerM / oMechanics.f64MassKg);
    const double f64Drag = (oMechanics.f64DampingNSPerM +
                            oMechanics.f64ForceFactorNPerA * oMechanics.f64ForceFactorNPerA / f64ResistanceOhm) /
                           oMechanics.f64MassKg;
    const double f64Radians = std::max(f64Omega, f64Drag) * f64StepSec;
    if (f64Radians <= MAX_STEP_RADIANS)
        return {};
    return Refuse(SpeakerError::OVERSAMPLING, "the cone turns %g rad in a step, allowed is %g to %g", f64Radians, 0.0,
                  MAX_STEP_RADIANS);
}
} // namespace

SpeakerResult CLoudspeaker::Init(const SpeakerParams& oParams, double f64SampleRateHz, int iOversampling)
{
    if (SpeakerResult oResult = CheckParams(oParams); !oResult)
        return oResult;
    if (!(f64SampleRateHz >= 8000.0 && f64SampleRateHz <= 192000.0))
        return Refuse(SpeakerError::SAMPLE_RATE, "sample rate is %g Hz, allowed is %g to %g", f64SampleRateHz, 8000.0,
                      192000.0);
    if (iOversampling < 1 || iOversampling > 16)
        return Refuse(SpeakerError::OVERSAMPLING, "oversampling is %g, allowed is %g to %g", iOversampling, 1.0, 16.0);
    const double f64StepSec = 1.0 / (f64SampleRateHz * iOversampling);
    const SpeakerMechanics oMechanics = DeriveMechanics(oParams);
    if (SpeakerResult oResult = CheckStep(oMechanics, oParams.f64CoilResistanceOhm, f64StepSec); !oResult)
        return oResult;

    m_oParams = oParams;
    m_iOversampling = iOversampling;
    m_f64Gain = 1.0;
    m_oReconstruction.Init(2 * iOversampling); // a step wants its middle too
    m_oCone.Init(oMechanics, f64StepSec);
    m_oHeat.Init(oParams, f64StepSec);
    Reset();
    return {};
}

void CLoudspeaker::Reset()
{
    Reset(m_oParams.f64AmbientC, m_oParams.f64AmbientC);
}

SpeakerResult CLoudspeaker::Reset(double f64CoilC, double f64MagnetC)
{
    for (const double f64StartC : {f64CoilC, f64MagnetC})
        if (!(f64StartC >= -40.0 && f64StartC <= 400.0))
            return Refuse(SpeakerError::TEMPERATURE, "a starting temperature is %g C, allowed is %g to %g", f64StartC,
                          -40.0, 400.0);
    m_oReconstruction.Reset();
    m_oCone.Reset();
    m_oHeat.Reset(f64CoilC, f64MagnetC);
    m_f64PeakM = 0.0;
    m_f64HottestC = f64CoilC;
    m_oEnergy = {};
    m_u64NonFinite = 0;
    return {};
}

void CLoudspeaker::Process(const float* pf32Samples, size_t uCount, const SpeakerTrace& oTrace, size_t uStride)
{
    for (size_t i = 0; i < uCount; ++i)
    {
        double f64Sample = static_cast<double>(pf32Samples[i * uStride]);
        if (!std::isfinite(f64Sample))
        {
            f64Sample = 0.0;
            ++m_u64NonFinite;
        }
        const double* const pf64Curve = m_oReconstruction.Push(f64Sample * m_f64Gain * m_oParams.f64FullScaleV);
        if (oTrace.pf64DisplacementMm != nullptr)
            oTrace.pf64DisplacementMm[i] = DisplacementMm();
        if (oTrace.pf64CoilC != nullptr)
            oTrace.pf64CoilC[i] = CoilC();
        if (oTrace.pf64CurrentA != nullptr)
            oTrace.pf64CurrentA[i] = m_oCone.CurrentA(pf64Curve[0], 1.0 / ResistanceOhm());
        ProcessInterval(pf64Curve);
    }
}

void CLoudspeaker::Drain()
{
    const float f32Silence[DELAY] = {};
    Process(f32Silence, DELAY);
}

// The steps from one sample to the next. Cone and heat are locals meanwhile, so that they stay in registers.
void CLoudspeaker::ProcessInterval(const double* pf64Curve)
{
    Cone oCone = m_oCone;
    CoilHeat oHeat = m_oHeat;
    for (int i = 0; i < m_iOversampling; ++i, pf64Curve += 2)
    {
        const SpeakerEnergy oEnergy = oCone.Process(pf64Curve[0], pf64Curve[1], pf64Curve[2], oHeat.ResistanceOhm());
        oHeat.Process(oEnergy.f64CoilHeatJ);
        m_oEnergy += oEnergy;
        m_f64PeakM = std::max(m_f64PeakM, std::fabs(oCone.DisplacementM()));
        m_f64HottestC = std::max(m_f64HottestC, oHeat.CoilC());
    }
    oCone.Settle();
    m_oCone = oCone;
    m_oHeat = oHeat;
}
