// The coil's resistance as voltage and current sense signals show it.
#pragma once

#include "protection/dsp/speaker_constants.h"

// R = mean((v - e) i) / mean(i^2) over about a second, with the back-EMF e of the sensed voltage.
struct ResistanceSense
{
    double f64U1 = 0.0;
    double f64U2 = 0.0;
    double f64E1 = 0.0;
    double f64E2 = 0.0;
    double f64VoltAmpere = 0.0;
    double f64SquareAmpere = 0.0;

    // A frame of sense samples, times the given volts and amperes. Of what was shown such without current let a second
    // pass; null arrays forget it.
    void Process(const BackEmfCoefs& oCoefs, const float* pVoltage, const float* pCurrent, int iCount, double f64Volt,
                 double f64Ampere);

    // 0 while there is too little current to tell.
    double ResistanceOhm() const;
};
