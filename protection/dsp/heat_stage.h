// One speaker's heat: what the coil is at, and what gain keeps it under its limit.
#pragma once

#include "protection/dsp/coil_model.h"

// What is known of the air around the speaker. Unknown, the heat is reckoned with the hottest and the cone with the
// coldest that the set allows for.
struct Ambient
{
    double f64HotC = 60.0;
    double f64LikelyC = 25.0;
    double f64ColdC = 0.0;

    void Init(const SpeakerValues& oValues, bool bKnown, double f64AmbientC);
};

struct HeatStage
{
    CoilModel oHot;    // hottest ambient, lowest resistance: what the gain heeds
    CoilModel oLikely; // what is reported
    CoilModel oCold;   // what the cone's model heeds, for a cold coil moves further
    double f64MeanW = 0.0;
    double f64AllowedW = 0.0;
    double f64GainDb = 0.0;

    void Reset(const Ambient& oAmbient);

    // Takes a block's mean of (u - e)^2, full scale 1, into the models.
    void Heat(const SpeakerConstants& oSpeaker, const Ambient& oAmbient, double f64ResistanceMargin,
              double f64MeanSquare);

    // The gain in dB that the present heat asks for; above 0 when it asks for none.
    double Target() const;
    // One block towards the target: down as the coil demands, up slowly.
    void Follow(const SpeakerConstants& oSpeaker, double f64TargetDb);

    // Linear; 1 exactly when nothing is reduced.
    double Gain() const;

    // Shifts the models to the resistance that the sense signals show.
    void Correct(const SpeakerConstants& oSpeaker, double f64ResistanceMargin, double f64ResistanceOhm);
};
