// The two thermal stages: heat goes from the coil to the magnet and from there to the air.
#pragma once

#include "speaker/speaker_params.h"

struct CoilHeat
{
    void Init(const SpeakerParams& oParams, double f64StepSec);
    void Reset(double f64CoilC, double f64MagnetC);

    // Cc Tc' = P - (Tc - Tm)/Rtc and Cm Tm' = (Tc - Tm)/Rtc - (Tm - Ta)/Rtm, one step further with the heat that the
    // coil got in it. The slowest part by far: a step is at most some thousandth of a time constant, and Euler's method
    // will do.
    void Process(double f64HeatJ)
    {
        m_f64ResistanceOhm = m_f64ZeroOhm + m_f64OhmPerK * m_f64CoilC;
        const double f64ToMagnetJ = (m_f64CoilC - m_f64MagnetC) * m_f64ToMagnetJPerK;
        const double f64ToAmbientJ = (m_f64MagnetC - m_f64AmbientC) * m_f64ToAmbientJPerK;
        m_f64CoilC += (f64HeatJ - f64ToMagnetJ) * m_f64CoilKPerJ;
        m_f64MagnetC += (f64ToMagnetJ - f64ToAmbientJ) * m_f64MagnetKPerJ;
    }

    double CoilC() const { return m_f64CoilC; }
    double MagnetC() const { return m_f64MagnetC; }
    // R = R25 (1 + a (Tc - 25)), of the coil one step ago: so the cone needn't wait for the heat of the step before.
    double ResistanceOhm() const { return m_f64ResistanceOhm; }

private:
    double m_f64ToMagnetJPerK = 0.0;  // in a step
    double m_f64ToAmbientJPerK = 0.0; // in a step
    double m_f64CoilKPerJ = 0.0;
    double m_f64MagnetKPerJ = 0.0;
    double m_f64ZeroOhm = 0.0; // at 0 C
    double m_f64OhmPerK = 0.0;
    double m_f64AmbientC = 25.0;
    double m_f64CoilC = 25.0;
    double m_f64MagnetC = 25.0;
    double m_f64ResistanceOhm = 0.0;
};
