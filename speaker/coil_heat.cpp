// The constants of one thermal step.
#include "speaker/coil_heat.h"

void CoilHeat::Init(const SpeakerParams& oParams, double f64StepSec)
{
    constexpr double DATA_SHEET_C = 25.0;
    m_f64ToMagnetJPerK = f64StepSec / oParams.f64CoilToMagnetKPerW;
    m_f64ToAmbientJPerK = f64StepSec / oParams.f64MagnetToAmbientKPerW;
    m_f64CoilKPerJ = 1.0 / oParams.f64CoilHeatJPerK;
    m_f64MagnetKPerJ = 1.0 / oParams.f64MagnetHeatJPerK;
    m_f64OhmPerK = oParams.f64CoilResistanceOhm * oParams.f64ResistanceRisePerK;
    m_f64ZeroOhm = oParams.f64CoilResistanceOhm - m_f64OhmPerK * DATA_SHEET_C;
    m_f64AmbientC = oParams.f64AmbientC;
    Reset(oParams.f64AmbientC, oParams.f64AmbientC);
}

void CoilHeat::Reset(double f64CoilC, double f64MagnetC)
{
    m_f64CoilC = f64CoilC;
    m_f64MagnetC = f64MagnetC;
    m_f64ResistanceOhm = m_f64ZeroOhm + m_f64OhmPerK * f64CoilC;
}
