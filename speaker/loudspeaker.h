// One channel's amplifier and loudspeaker: samples go in, the cone moves, the coil gets hot.
#pragma once

#include "speaker/coil_heat.h"
#include "speaker/cone.h"
#include "speaker/reconstruction.h"

#include <cstddef>
#include <cstdint>

// Where Process writes, a value per sample, the state at the sample that came CLoudspeaker::DELAY samples before. Null:
// not wanted.
struct SpeakerTrace
{
    double* pf64DisplacementMm = nullptr;
    double* pf64CoilC = nullptr;
    double* pf64CurrentA = nullptr;
};

// Linear but for the heat, which changes the resistance from step to step. The amplifier gives f64FullScaleV times the
// band-limited curve through the samples, without a limit, so peaks between samples count. The coil has no inductance.
// One thread at a time. No heap after Init.
class CLoudspeaker
{
public:
    static constexpr size_t DELAY = CReconstruction::DELAY; // samples; the curve at a sample depends on those behind it

    // iOversampling steps per sample. Leaves a fresh speaker: at rest, all of it at ambient temperature. On failure the
    // speaker is as it was.
    SpeakerResult Init(const SpeakerParams& oParams, double f64SampleRateHz, int iOversampling = 4);

    // At rest, at ambient or at the given temperatures (-40 to 400 C); peak, hottest coil and energy begin again.
    void Reset();
    SpeakerResult Reset(double f64CoilC, double f64MagnetC);

    // A gain of the amplifier, from the next sample on. 1 after Init.
    void SetGain(double f64Gain) { m_f64Gain = f64Gain; }

    // uCount samples, uStride floats apart; full scale is 1. One that isn't finite counts as 0 and is counted.
    void Process(const float* pf32Samples, size_t uCount, const SpeakerTrace& oTrace = {}, size_t uStride = 1);
    // DELAY samples of silence: what went in before has then had its whole effect.
    void Drain();

    // Since Init or Reset, looked at in every step.
    double PeakDisplacementMm() const { return m_f64PeakM * 1e3; }
    double HottestCoilC() const { return m_f64HottestC; }
    const SpeakerEnergy& Energy() const { return m_oEnergy; }
    uint64_t NonFiniteCount() const { return m_u64NonFinite; }

    // Now.
    double DisplacementMm() const { return m_oCone.DisplacementM() * 1e3; }
    double CoilC() const { return m_oHeat.CoilC(); }
    double MagnetC() const { return m_oHeat.MagnetC(); }
    double ResistanceOhm() const { return m_oHeat.ResistanceOhm(); }
    double StoredJ() const { return m_oCone.StoredJ(); }

private:
    void ProcessInterval(const double* pf64Curve);

    SpeakerParams m_oParams;
    int m_iOversampling = 0;
    double m_f64Gain = 1.0;
    CReconstruction m_oReconstruction;
    Cone m_oCone;
    CoilHeat m_oHeat;
    double m_f64PeakM = 0.0;
    double m_f64HottestC = 0.0;
    SpeakerEnergy m_oEnergy;
    uint64_t m_u64NonFinite = 0;
};
