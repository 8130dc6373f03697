// m x'' = Bl i - Rms x' - k x with i = (u - Bl x')/R.
#include "speaker/cone.h"

#include <cmath>

void Cone::Init(const SpeakerMechanics& oMechanics, double f64StepSec)
{
    m_oMechanics = oMechanics;
    m_f64StepSec = f64StepSec;
    m_f64PerMass = 1.0 / oMechanics.f64MassKg;
    m_f64OmegaSquared = oMechanics.f64StiffnessNPerM * m_f64PerMass;
    Reset();
}

void Cone::Reset()
{
    m_f64DisplacementM = 0.0;
    m_f64VelocityMPerS = 0.0;
}

// With the current put in, the balance is x'' = (Bl/(R m)) u - ((Rms + Bl^2/R)/m) x' - (k/m) x: one chain of operations
// from stage to stage. The energies are integrals along the same four stages.
SpeakerEnergy Cone::Process(double f64StartV, double f64MiddleV, double f64EndV, double f64ResistanceOhm)
{
    const double f64ConductanceS = 1.0 / f64ResistanceOhm;
    const double f64ForceFactor = m_oMechanics.f64ForceFactorNPerA;
    const double f64Drive = f64ForceFactor * f64ConductanceS * m_f64PerMass;
    const double f64Drag =
        (m_oMechanics.f64DampingNSPerM + f64ForceFactor * f64ForceFactor * f64ConductanceS) * m_f64PerMass;
    const double f64Half = 0.5 * m_f64StepSec;
    const auto Accelerate = [&](double f64Volt, double f64X, double f64V)
    { return (f64Drive * f64Volt - m_f64OmegaSquared * f64X) - f64Drag * f64V; };

    const double f64X1 = m_f64DisplacementM;
    const double f64V1 = m_f64VelocityMPerS;
    const double f64A1 = Accelerate(f64StartV, f64X1, f64V1);
    const double f64X2 = f64X1 + f64Half * f64V1;
    const double f64V2 = f64V1 + f64Half * f64A1;
    const double f64A2 = Accelerate(f64MiddleV, f64X2, f64V2);
    const double f64X3 = f64X1 + f64Half * f64V2;
    const double f64V3 = f64V1 + f64Half * f64A2;
    const double f64A3 = Accelerate(f64MiddleV, f64X3, f64V3);
    const double f64X4 = f64X1 + m_f64StepSec * f64V3;
    const double f64V4 = f64V1 + m_f64StepSec * f64A3;
    const double f64A4 = Accelerate(f64EndV, f64X4, f64V4);

    const double f64Sixth = m_f64StepSec / 6.0;
    m_f64DisplacementM = f64X1 + f64Sixth * (f64V1 + 2.0 * (f64V2 + f64V3) + f64V4);
    m_f64VelocityMPerS = f64V1 + f64Sixth * (f64A1 + 2.0 * (f64A2 + f64A3) + f64A4);

    const double f64I1 = (f64StartV - f64ForceFactor * f64V1) * f64ConductanceS;
    const double f64I2 = (f64MiddleV - f64ForceFactor * f64V2) * f64ConductanceS;
    const double f64I3 = (f64MiddleV - f64ForceFactor * f64V3) * f64ConductanceS;
    const double f64I4 = (f64EndV - f64ForceFactor * f64V4) * f64ConductanceS;
    SpeakerEnergy oEnergy;
    oEnergy.f64ElectricalJ = f64Sixth * (f64StartV * f64I1 + 2.0 * f64MiddleV * (f64I2 + f64I3) + f64EndV * f64I4);
    oEnergy.f64CoilHeatJ =
        f64Sixth * f64ResistanceOhm * (f64I1 * f64I1 + 2.0 * (f64I2 * f64I2 + f64I3 * f64I3) + f64I4 * f64I4);
    oEnergy.f64FrictionJ = f64Sixth * m_oMechanics.f64DampingNSPerM *
                           (f64V1 * f64V1 + 2.0 * (f64V2 * f64V2 + f64V3 * f64V3) + f64V4 * f64V4);
    return oEnergy;
}

double Cone::StoredJ() const
{
    return 0.5 * (m_oMechanics.f64StiffnessNPerM * m_f64DisplacementM * m_f64DisplacementM +
                  m_oMechanics.f64MassKg * m_f64VelocityMPerS * m_f64VelocityMPerS);
}

void Cone::Settle()
{
    constexpr double NOTHING_M = 1e-30;
    constexpr double NOTHING_M_PER_S = 1e-26;
    if (std::fabs(m_f64DisplacementM) < NOTHING_M && std::fabs(m_f64VelocityMPerS) < NOTHING_M_PER_S)
        Reset();
}
