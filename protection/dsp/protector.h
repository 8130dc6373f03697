// All channels of a stream: sets that follow each other, and the heat of what goes out.
#pragma once

#include "protection/dsp/chain.h"
#include "protection/dsp/heat/coil_model.h"
#include "protection/dsp/heat/heat_stage.h"
#include "protection/dsp/heat/resistance_sense.h"

// What the outside tells, as it stands at a block's end.
struct Surroundings
{
    bool bAmbientKnown = false;
    double f64AmbientC = 25.0;
    double f64BatteryPercent = 100.0; // 100 on mains and when nothing is known
};

// A new set gets a chain of its own. While the one before is still heard, the new one sees at least a period of the
// deepest bass and finds its gains; then it fades in. So whatever differs between two sets, nothing steps.
struct Protector
{
    static constexpr int PAIRS = Chain::PAIRS;
    static constexpr int WARM_BLOCKS = 10; // 50 ms: a period of 20 Hz
    static constexpr int FADE_BLOCKS = 8;  // 40 ms

    // What stays when sets change.
    struct Speaker
    {
        HeatStage oHeat;
        Ambient oAmbient;
        ResistanceSense oSense;
        BackEmfCoefs oBackEmf;
    };

    PeakFilter oFilter;
    Chain oChains[2];
    int iHeard = 0;   // of the chains
    int iNewest = 0;  // of the chains; another one than is heard while a change is under way
    int iChanged = 0; // blocks of the change that are done
    Speaker oSpeakers[KELVANE_MAX_CHANNELS];
    CoilVoltage oCoils[PAIRS];
    double f64Displacement[KELVANE_MAX_CHANNELS]; // peak of the last block, of the limit without margin
    int iChannels;                                // that have been seen, whole pairs

    // A fresh start with a set that was checked.
    void Init(const KelvaneStruParam& oStruParam, bool bInProgramme, const Surroundings& oAround);
    // Changes to another set. Between blocks; no change is under way.
    void Follow(const KelvaneStruParam& oStruParam, const Surroundings& oAround);
    bool IsChanging() const { return iNewest != iHeard; }
    // Models at ambient temperature, gain at 0 dB.
    void ClearHeat(const Surroundings& oAround);

    const Chain& Heard() const { return oChains[iHeard]; }
    // A pair's signals from position iBegin to iEnd of the block; what comes out stands in Heard().Output.
    void Process(int iPair, const float* const (&pIn)[2], int iBegin, int iEnd);
    // What in the end goes to the speakers heats them, by whatever way it went.
    void TakeOut(int iPair, const float* const (&pOut)[2], int iCount);
    void Sense(int iChannel, const float* pVoltage, const float* pCurrent, int iCount);

    // Heat, gains and coefficients for the next block. bCorrect takes over what the sense signals show.
    void FinishBlock(const Surroundings& oAround, bool bCorrect);
    // No channel is protected any more: the history is void, and a change is through.
    void Stop();
    // The same for a pair alone.
    void StopPair(int iPair);

private:
    void Mix(int iPair, int iBegin, int iEnd);
    void TakeHeat(int iChannel, const Surroundings& oAround, bool bCorrect);
    void FollowHeat();
    void Control(Chain& oChain, int iCount);
};
