// What a loudspeaker and its amplifier are, in the units of a data sheet, and the mechanics that follow from it.
#pragma once

#include <string>

enum class SpeakerError
{
    NONE = 0,
    PARAMETER,    // a value outside its range
    SAMPLE_RATE,  // outside 8000 to 192000 Hz
    OVERSAMPLING, // outside 1 to 16
    STEP,         // too coarse for the cone or the heat: more oversampling would do
    TEMPERATURE,  // a starting temperature outside its range
    CHANNELS,     // outside 1 to 8
};

// A code for the program, a text for the person. Converts to true when there is nothing wrong.
struct SpeakerResult
{
    SpeakerError eError = SpeakerError::NONE;
    std::string strText;

    explicit operator bool() const { return eError == SpeakerError::NONE; }
};

// One driver on one amplifier. Small signal values, measured with the coil at 25 C. The defaults are a 2 W laptop
// speaker.
struct SpeakerParams
{
    double f64CoilResistanceOhm = 6.0;      // at 25 C
    double f64ResistanceRisePerK = 0.00393; // of the coil's metal; copper
    double f64ResonanceHz = 800.0;          // in its box
    double f64MechanicalQ = 4.0;            // of suspension and air alone
    double f64ElectricalQ = 2.0;            // of the short-circuited coil at 25 C alone
    double f64DisplacementMmPerV = 0.148;   // at DC and 25 C
    double f64FullScaleV = 6.0;             // the amplifier's output at a sample of 1
    double f64CoilToMagnetKPerW = 40.0;     // thermal resistance
    double f64CoilHeatJPerK = 0.025;        // heat capacity
    double f64MagnetToAmbientKPerW = 45.0;  // thermal resistance
    double f64MagnetHeatJPerK = 4.0;        // heat capacity
    double f64AmbientC = 25.0;
};

// What destroys it.
struct SpeakerLimits
{
    double f64DisplacementMm = 0.4; // to either side
    double f64CoilC = 105.0;
};

// The constants of the force balance, in SI units.
struct SpeakerMechanics
{
    double f64MassKg = 0.0;
    double f64StiffnessNPerM = 0.0;
    double f64ForceFactorNPerA = 0.0; // Bl; the same number in V s/m makes the back-EMF
    double f64DampingNSPerM = 0.0;    // mechanical, without the coil's
};

// Each value within its range, else the name, the value and the range of the first that isn't.
SpeakerResult CheckParams(const SpeakerParams& oParams);
SpeakerResult CheckLimits(const SpeakerLimits& oLimits);

// oParams has to be in range.
SpeakerMechanics DeriveMechanics(const SpeakerParams& oParams);

// Units of one type differ. Each gives the data sheet of a driver in which one physical constant alone is f64Ratio
// times oParams', so that it still moves and heats as a real one does: a softer suspension lowers the resonance and
// goes further.
SpeakerParams ScaleStiffness(const SpeakerParams& oParams, double f64Ratio);
SpeakerParams ScaleMass(const SpeakerParams& oParams, double f64Ratio);
SpeakerParams ScaleResistance(const SpeakerParams& oParams, double f64Ratio);
SpeakerParams ScaleForceFactor(const SpeakerParams& oParams, double f64Ratio);
