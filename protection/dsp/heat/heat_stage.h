// One speaker's heat: what the coil is at, and what gain keeps it under its limit.
#pragma once

#include "protection/dsp/heat/coil_model.h"

// What is known of the air around the speaker. Unknown, the heat is reckoned with the hottest and the cone with the
// coldest that the set allows for.
struct Ambient
{
    double f64HotC = 60.0;
    double f64LikelyC = 25.0;
    double f64ColdC = 0.0;

    void Init(const SpeakerValues& oValues, bool bKnown, double f64AmbientC);
};

// What a speaker's heat asks of the gain, in dB.
struct HeatDemand
{
    static constexpr double NOTHING_DB = 60.0; // above any gain

    double f64TargetDb = NOTHING_DB;
    double f64SafeDb = NOTHING_DB; // up to here the gain may rise, and still come back in time
    bool bUrgent = false;          // a slow fall would come too late
    bool bSilent = true;

    // Of two speakers with one gain.
    void Join(const HeatDemand& oOther);
};

struct HeatStage
{
    CoilModel oHot;    // hottest ambient, lowest resistance: what the gain heeds
    CoilModel oLikely; // what is reported
    CoilModel oCold;   // what the cone's model heeds, for a cold coil moves further
    double f64MeanW = 0.0;
    double f64AllowedW = 0.0;
    double f64GainDb = 0.0;
    double f64Gain = 1.0;     // the same, linear; 1 exactly when nothing is reduced
    double f64SteadyW = 0.0;  // that would hold the coil just under its limit
    double f64LoudestW = 0.0; // of late, had the gain been 0 dB
    double f64RecoverDb = 0.0;
    int iLoudestBlocks = 0; // that it is still remembered
    bool bFreeFall = false;

    void Reset(const Ambient& oAmbient);

    // Takes a block's mean of (u - e)^2, full scale 1, into the models.
    void Heat(const SpeakerConstants& oSpeaker, const Ambient& oAmbient, double f64ResistanceMargin,
              double f64MeanSquare);

    HeatDemand Demand(const SpeakerConstants& oSpeaker) const;
    // One block towards what is demanded: down as the coil needs it, up slowly.
    void Follow(const SpeakerConstants& oSpeaker, const HeatDemand& oDemand);

    // Shifts the models to the resistance that the sense signals show.
    void Correct(const SpeakerConstants& oSpeaker, double f64ResistanceMargin, double f64ResistanceOhm);

private:
    void Remember();
    bool IsSlowEnough(const SpeakerConstants& oSpeaker) const;
};
