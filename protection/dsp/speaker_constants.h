// One speaker's physical parameters turned into what the stages compute with. All coefficients come from here.
#pragma once

#include "protection/kelvane_parameters.h"

// One speaker's view of a set, every parameter in its own unit.
struct SpeakerValues
{
    double f64Values[KELVANE_PARAMETER_COUNT];

    double operator[](KelvaneParameter eParameter) const { return f64Values[static_cast<int>(eParameter)]; }
};

SpeakerValues GetSpeakerValues(const KelvaneStruParam& oStruParam, int iSpeaker);

// x[n] = b u[n] - a1 x[n-1] - a2 x[n-2]: displacement as the voltage that would hold it at DC, and what may be of it.
struct ConeCoefs
{
    double f64A1 = 0.0;
    double f64A2 = 0.0;
    double f64B = 1.0; // 1 + a1 + a2
    double f64Limit = 1.0;
};

// e[n] = b (u[n] - u[n-2]) - a1 e[n-1] - a2 e[n-2].
struct BackEmfCoefs
{
    double f64A1 = 0.0;
    double f64A2 = 0.0;
    double f64B = 0.0;
};

struct SpeakerConstants
{
    // Electrical and mechanical.
    double f64RadPerSample = 0.1; // w0 T
    double f64TanHalf = 0.05;     // tan(w0 T / 2)
    double f64PerMechanicalQ = 0.25;
    double f64ElectricalQ = 2.0;
    double f64Limit = 1.0; // displacement limit less margin, by that of a full-scale DC at 25 C
    double f64Margin = 0.0;
    double f64ResistanceOhm = 6.0;
    double f64RisePerK = 0.00393;
    double f64FullScaleV = 6.0;
    // Thermal.
    double f64CoilKPerW = 40.0;
    double f64CoilJPerK = 0.025;
    double f64CoilStep = 0.0; // 1 - exp(-dt/(Rtc Cc)) of a block
    double f64MagnetKPerW = 45.0;
    double f64MagnetJPerK = 4.0;
    double f64CoilLimitC = 105.0;
    double f64MeanStep = 0.0; // of the mean power, a block
    double f64FallStep = 0.0; // of a falling gain

    void Init(const SpeakerValues& oValues);
    // R(T)/R25
    double ResistanceRatio(double f64CoilC) const { return 1.0 + f64RisePerK * (f64CoilC - 25.0); }
    ConeCoefs Cone(double f64ResistanceRatio) const;
    BackEmfCoefs BackEmf(double f64ResistanceRatio) const;
};
