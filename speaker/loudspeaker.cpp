// Puts reconstruction, cone and heat together.
#include "speaker/loudspeaker.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace
{
// Of the cone's fastest motion in a step: beyond, the method is neither exact nor sure to be stable.
constexpr double MAX_STEP_RADIANS = 0.5;
// Of the quickest thermal time constant in a step.
constexpr double MAX_STEP_OF_HEAT = 1e-3;

SpeakerResult Refuse(SpeakerError eError, const char* pFormat, double f64Value, double f64Low, double f64High)
{
    char strText[160];
    snprintf(strText, sizeof strText, pFormat, f64Value, f64Low, f64High);
    return {eError, strText};
}

// The step against the free cone, the larger of its resonance and its damping, and against the heat's exchange.
SpeakerResult CheckStep(const SpeakerParams& oParams, const SpeakerMechanics& oMechanics, double f64StepSec)
{
    const double f64ForceFactor = oMechanics.f64ForceFactorNPerA;
    const double f64DragPerSec =
        (oMechanics.f64DampingNSPerM + f64ForceFactor * f64ForceFactor / oParams.f64CoilResistanceOhm) /
        oMechanics.f64MassKg;
    const double f64OmegaPerSec = std::sqrt(oMechanics.f64StiffnessNPerM / oMechanics.f64MassKg);
    const double f64Radians = std::max(f64OmegaPerSec, f64DragPerSec) * f64StepSec;
    if (f64Radians > MAX_STEP_RADIANS)
        return Refuse(SpeakerError::STEP, "the cone turns %g rad in a step, allowed is %g to %g", f64Radians, 0.0,
                      MAX_STEP_RADIANS);
    const double f64CoilPerSec = 1.0 / (oParams.f64CoilToMagnetKPerW * oParams.f64CoilHeatJPerK);
    const double f64MagnetPerSec =
        (1.0 / oParams.f64CoilToMagnetKPerW + 1.0 / oParams.f64MagnetToAmbientKPerW) / oParams.f64MagnetHeatJPerK;
    const double f64OfHeat = (f64CoilPerSec + f64MagnetPerSec) * f64StepSec;
    if (f64OfHeat > MAX_STEP_OF_HEAT)
        return Refuse(SpeakerError::STEP, "a step is %g of a thermal time constant, allowed is %g to %g", f64OfHeat,
                      0.0, MAX_STEP_OF_HEAT);
    return {};
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
    if (SpeakerResult oResult = CheckStep(oParams, oMechanics, f64StepSec); !oResult)
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

// The steps from one sample to the next.
void CLoudspeaker::ProcessInterval(const double* pf64Curve)
{
    for (int i = 0; i < m_iOversampling; ++i, pf64Curve += 2)
    {
        const SpeakerEnergy oEnergy =
            m_oCone.Process(pf64Curve[0], pf64Curve[1], pf64Curve[2], m_oHeat.ResistanceOhm());
        m_oHeat.Process(oEnergy.f64CoilHeatJ);
        m_oEnergy += oEnergy;
        m_f64PeakM = std::max(m_f64PeakM, std::fabs(m_oCone.DisplacementM()));
        m_f64HottestC = std::max(m_f64HottestC, m_oHeat.CoilC());
    }
    m_oCone.Settle();
}
