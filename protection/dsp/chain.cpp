// From a set's numbers to what the stages heed, block by block.
#include "protection/dsp/chain.h"

namespace
{
constexpr double CEILING_STEP = 0.02; // of full scale, a block
constexpr double NO_CEILING = 64.0;   // above what comes in
constexpr double NO_LIMIT = 1e6;      // above any displacement

void SetLane(Lanes& oLanes, int iLane, double f64Value)
{
    oLanes = iLane == 0 ? _mm_move_sd(oLanes, _mm_set_sd(f64Value)) : _mm_unpacklo_pd(oLanes, _mm_set_sd(f64Value));
}
} // namespace

// A channel behind the last speaker is protected as that one.
void Chain::Init(const KelvaneStruParam& oStruParam, bool bInProgramme, double f64BatteryPercent)
{
    Stop();
    bJoins = bInProgramme;
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        Speaker& oSpeaker = oSpeakers[i];
        oSpeaker.oValues = GetSpeakerValues(oStruParam, std::min(i, oStruParam.sChannelNum - 1));
        oSpeaker.oConstants.Init(oSpeaker.oValues);
        oSpeaker.f64Ceiling = SupplyCeiling(i, f64BatteryPercent);
    }
    iDeepAhead = static_cast<int>(GetParameter(oStruParam, KelvaneParameter::DEEP_LOOK_AHEAD));
    iUpperAhead = static_cast<int>(GetParameter(oStruParam, KelvaneParameter::UPPER_LOOK_AHEAD));
}

void Chain::Stop()
{
    bJoins = true;
    for (bool& bRuns : bPairRuns)
        bRuns = false;
}

void Chain::StopPair(int iPair)
{
    bJoins |= bPairRuns[iPair]; // a programme has begun, if it ran
    bPairRuns[iPair] = false;
}

void Chain::Process(const PeakFilter& oFilter, int iPair, const float* const (&pIn)[2], int iBegin, int iEnd)
{
    if (!bPairRuns[iPair])
        oPairs[iPair].Init(oControls[iPair], bJoins, iDeepAhead, iUpperAhead);
    bPairRuns[iPair] = true;
    oPairs[iPair].Process(oFilter, oControls[iPair], pIn, iBegin, iEnd);
}

double Chain::Displacement(int iChannel) const
{
    if (!bPairRuns[iChannel / 2])
        return 0.0;
    return Lane(_mm_div_pd(oPairs[iChannel / 2].oPeakLeft, oControls[iChannel / 2].oFullTravel), iChannel % 2);
}

void Chain::FinishBlock(double f64BatteryPercent)
{
    for (int i = 0; i < PAIRS; ++i)
        if (bPairRuns[i])
            oPairs[i].FinishBlock(oControls[i]);
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        double& f64Ceiling = oSpeakers[i].f64Ceiling;
        f64Ceiling += std::clamp(SupplyCeiling(i, f64BatteryPercent) - f64Ceiling, -CEILING_STEP, CEILING_STEP);
    }
}

void Chain::Control(int iChannel, double f64HeatGain, double f64ColdCoilC)
{
    const Speaker& oSpeaker = oSpeakers[iChannel];
    const SpeakerConstants& oConstants = oSpeaker.oConstants;
    PairControl& oControl = oControls[iChannel / 2];
    const int iLane = iChannel % 2;
    const ConeCoefs oCone = oConstants.Cone(oConstants.ResistanceRatio(f64ColdCoilC));
    SetLane(oControl.oCone.oA1, iLane, oCone.f64A1);
    SetLane(oControl.oCone.oA2, iLane, oCone.f64A2);
    SetLane(oControl.oCone.oB, iLane, oCone.f64B);
    SetLane(oControl.oCone.oPerB, iLane, 1.0 / oCone.f64B);
    SetLane(oControl.oLimit, iLane, oSpeaker[KelvaneParameter::EXCURSION_STAGE] != 0.0 ? oCone.f64Limit : NO_LIMIT);
    SetLane(oControl.oFullTravel, iLane, oCone.f64Limit / (1.0 - oConstants.f64Margin));
    oControl.f64Gain[iLane] = oSpeaker[KelvaneParameter::DRIVE] / 100.0 * f64HeatGain;
    oControl.f64Ceiling[iLane] = oSpeaker[KelvaneParameter::CEILING_STAGE] != 0.0 ? oSpeaker.f64Ceiling : NO_CEILING;
}

double Chain::SupplyCeiling(int iChannel, double f64BatteryPercent) const
{
    const Speaker& oSpeaker = oSpeakers[iChannel];
    const double f64Full = oSpeaker[KelvaneParameter::CEILING_FULL] / 100.0;
    const double f64Empty = oSpeaker[KelvaneParameter::CEILING_EMPTY] / 100.0;
    const double f64Knee = oSpeaker[KelvaneParameter::BATTERY_KNEE];
    if (f64BatteryPercent >= f64Knee)
        return f64Full;
    return f64Empty + (f64Full - f64Empty) * f64BatteryPercent / f64Knee;
}
