// All channels of a stream: parameters on their way from one set to the next, heat and supply from block to block.
#pragma once

#include "protection/dsp/channel_pair.h"
#include "protection/dsp/heat_stage.h"
#include "protection/dsp/resistance_sense.h"

// What the outside tells, as it stands at a block's end.
struct Surroundings
{
    bool bAmbientKnown = false;
    double f64AmbientC = 25.0;
    double f64BatteryPercent = 100.0; // 100 on mains and when nothing is known
};

struct Protector
{
    static constexpr int PAIRS = KELVANE_MAX_CHANNELS / 2;

    struct Speaker
    {
        SpeakerValues oFrom;
        SpeakerValues oTo;
        SpeakerConstants oConstants;
        HeatStage oHeat;
        Ambient oAmbient;
        ResistanceSense oSense;
        double f64Ceiling;
        double f64Displacement; // peak of the last block, of the limit without margin

        double operator[](KelvaneParameter eParameter) const { return oTo[eParameter]; }
    };

    PeakFilter oFilter;
    ChannelPair oPairs[PAIRS];
    PairControl oControls[PAIRS];
    Speaker oSpeakers[KELVANE_MAX_CHANNELS];
    bool bPairRuns[PAIRS];
    int iDeepAhead;
    int iUpperAhead;
    int iChannels; // that have been seen, whole pairs
    int iMoved;    // blocks of the way from oFrom to oTo

    // A fresh start with a set that was checked.
    void Init(const KelvaneStruParam& oStruParam, const Surroundings& oAround);
    // Moves to another set. Between blocks.
    void Follow(const KelvaneStruParam& oStruParam);
    // Models at ambient temperature, gain at 0 dB.
    void ClearHeat(const Surroundings& oAround);

    // A pair's signals from position iBegin to iEnd of the block; a pair that hasn't run begins with silence behind it.
    void Process(int iPair, const float* const (&pIn)[2], int iBegin, int iEnd);
    const float* Output(int iChannel) const { return oPairs[iChannel / 2].oCeilings[iChannel % 2].f32Out; }
    // The same for samples that went out past the stages: they heat all the same.
    void Bypassed(int iPair, const float* const (&pOut)[2], int iCount);
    void Sense(int iChannel, const float* pVoltage, const float* pCurrent, int iCount);

    // Heat, gains and coefficients for the next block. bCorrect takes over what the sense signals show.
    void FinishBlock(const Surroundings& oAround, bool bCorrect);
    // The pairs' history is void.
    void Stop();

private:
    void SetUp(const KelvaneStruParam& oStruParam, bool bAtOnce);
    void Move();
    void FollowHeat();
    void Control(int iChannel);
    double SupplyCeiling(int iChannel, const Surroundings& oAround) const;
};
