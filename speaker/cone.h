// The moving part: the force balance of cone and coil, stepped by the fourth-order Runge-Kutta method.
#pragma once

#include "speaker/speaker_params.h"

// What went where in one step, or summed over many, in joules.
struct SpeakerEnergy
{
    double f64ElectricalJ = 0.0; // from the amplifier: u i
    double f64CoilHeatJ = 0.0;   // i^2 R
    double f64FrictionJ = 0.0;   // Rms v^2: suspension, air and sound

    SpeakerEnergy& operator+=(const SpeakerEnergy& oOther)
    {
        f64ElectricalJ += oOther.f64ElectricalJ;
        f64CoilHeatJ += oOther.f64CoilHeatJ;
        f64FrictionJ += oOther.f64FrictionJ;
        return *this;
    }
};

struct Cone
{
    void Init(const SpeakerMechanics& oMechanics, double f64StepSec);
    void Reset();

    // One step under the voltages at its start, its middle and its end. The resistance (ohm) holds for the step.
    SpeakerEnergy Process(double f64StartV, double f64MiddleV, double f64EndV, double f64ResistanceOhm);

    // i = (u - Bl v) / R
    double CurrentA(double f64Volt, double f64ConductanceS) const
    {
        return (f64Volt - m_oMechanics.f64ForceFactorNPerA * m_f64VelocityMPerS) * f64ConductanceS;
    }
    double DisplacementM() const { return m_f64DisplacementM; }
    // In the spring and in the mass: k x^2 / 2 + m v^2 / 2.
    double StoredJ() const;
    // Ends a decay that nothing could see before its numbers get too small for the processor to be quick with.
    void Settle();

private:
    SpeakerMechanics m_oMechanics;
    double m_f64StepSec = 0.0;
    double m_f64PerMass = 0.0;       // 1/kg
    double m_f64OmegaSquared = 0.0;  // k/m
    double m_f64DisplacementM = 0.0; // out is positive
    double m_f64VelocityMPerS = 0.0;
};
