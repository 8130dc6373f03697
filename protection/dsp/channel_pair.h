// Two channels from end to end: drive and heat gain, deep band, upper band, ceiling.
#pragma once

#include "protection/dsp/excursion/cone_model.h"
#include "protection/dsp/excursion/excursion_band.h"
#include "protection/dsp/limiter/ceiling.h"

// What holds for a block.
struct PairControl
{
    ConeLanes oCone;
    Lanes oLimit = Both(1.0);       // of the displacement
    Lanes oFullTravel = Both(1.0);  // the same without its margin
    double f64Gain[2] = {1.0, 1.0}; // at the block's end
    double f64Ceiling[2] = {1.0, 1.0};
};

struct ChannelPair
{
    static constexpr int EXCURSION_DELAY = DeepBand::DELAY + UpperBand::DELAY;
    static constexpr int DELAY = EXCURSION_DELAY + Ceiling::DELAY; // samples from in to out

    History<OfSamples, EXCURSION_DELAY> oVoltage[2]; // after the gains
    History<OfLanes, UpperBand::DELAY> oDeepRemoved;
    History<OfLanes, 2> oRemoved; // by both bands
    ConeModel oConeModel;
    ConeLanes oConeBefore; // of the block before
    double f64GainBefore[2];
    DeepBand oDeep;
    UpperBand oUpper;
    Ceiling oCeilings[2];
    Lanes oPeakLeft; // largest displacement of the block

    // Begins behind silence. bJoins: in the middle of a programme, which then rises from nothing in the first block.
    void Init(const PairControl& oControl, bool bJoins, int iDeepAhead, int iUpperAhead);

    // Positions iBegin to iEnd of a block; pIn begins at iBegin. Null channels count as silent. What comes out stands
    // in oCeilings' f32Out.
    void Process(const PeakFilter& oFilter, const PairControl& oControl, const float* const (&pIn)[2], int iBegin,
                 int iEnd);
    void FinishBlock(const PairControl& oControl);

    // What is left of a channel's deep band now.
    double DeepGain(int iChannel) const { return 1.0 - Lane(oDeep.oReduction[0], iChannel); }

private:
    void TakeIn(const float* pIn, int iChannel, double f64Gain, int iBegin, int iEnd);
    void TakeFromVoltage(const PairControl& oControl, int iBegin, int iEnd);
    void Subtract(const ConeLanes& oCone, int iBegin, int iEnd);
};
