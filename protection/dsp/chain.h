// The stages of all channels under one set of parameters.
#pragma once

#include "protection/dsp/channel_pair.h"
#include "protection/dsp/speaker_constants.h"

// A change of the set is a change from one chain to another: within a chain no parameter moves.
struct Chain
{
    static constexpr int PAIRS = KELVANE_MAX_CHANNELS / 2;

    struct Speaker
    {
        SpeakerValues oValues;
        SpeakerConstants oConstants;
        double f64Ceiling; // that the supply allows, of full scale

        double operator[](KelvaneParameter eParameter) const { return oValues[eParameter]; }
    };

    Speaker oSpeakers[KELVANE_MAX_CHANNELS];
    PairControl oControls[PAIRS];
    ChannelPair oPairs[PAIRS];
    bool bPairRuns[PAIRS];
    bool bJoins; // the pairs begin in the middle of a programme
    int iDeepAhead;
    int iUpperAhead;

    // A set that was checked. No pair runs yet; Control for each channel comes next.
    void Init(const KelvaneStruParam& oStruParam, bool bInProgramme, double f64BatteryPercent);
    // The pairs' history is void.
    void Stop();
    void StopPair(int iPair);

    // A pair's signals from position iBegin to iEnd of the block. A pair that hasn't run begins.
    void Process(const PeakFilter& oFilter, int iPair, const float* const (&pIn)[2], int iBegin, int iEnd);
    float* Output(int iChannel) { return oPairs[iChannel / 2].oCeilings[iChannel % 2].f32Out; }
    const float* Output(int iChannel) const { return oPairs[iChannel / 2].oCeilings[iChannel % 2].f32Out; }
    // Peak of the block, of the displacement limit without margin.
    double Displacement(int iChannel) const;

    // Ends the block; then Control for each channel says what holds in the next one.
    void FinishBlock(double f64BatteryPercent);
    void Control(int iChannel, double f64HeatGain, double f64ColdCoilC);

private:
    double SupplyCeiling(int iChannel, double f64BatteryPercent) const;
};
