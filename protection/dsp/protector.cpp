// What happens between blocks.
#include "protection/dsp/protector.h"

namespace
{
constexpr int MOVE_BLOCKS = 8;        // 40 ms from set to set
constexpr double CEILING_STEP = 0.02; // of full scale, a block
constexpr double NO_CEILING = 64.0;   // above anything that can come
constexpr double LEAST_RATIO = 0.5;   // a sensed resistance outside these is no coil's
constexpr double MOST_RATIO = 2.5;

void SetLane(Lanes& oLanes, int iLane, double f64Value)
{
    oLanes = iLane == 0 ? _mm_move_sd(oLanes, _mm_set_sd(f64Value)) : _mm_unpacklo_pd(oLanes, _mm_set_sd(f64Value));
}
} // namespace

void Protector::Init(const KelvaneStruParam& oStruParam, const Surroundings& oAround)
{
    oFilter.Init();
    iChannels = 0;
    SetUp(oStruParam, true);
    for (Speaker& oSpeaker : oSpeakers)
    {
        oSpeaker.oSense = ResistanceSense{};
        oSpeaker.f64Displacement = 0.0;
    }
    ClearHeat(oAround);
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        oSpeakers[i].f64Ceiling = SupplyCeiling(i, oAround);
        Control(i);
    }
    Stop();
}

void Protector::Stop()
{
    for (bool& bRuns : bPairRuns)
        bRuns = false;
    for (ChannelPair& oPair : oPairs)
        oPair.oCoil.Reset();
}

void Protector::Follow(const KelvaneStruParam& oStruParam)
{
    SetUp(oStruParam, false);
}

// A channel behind the last speaker is protected as that one.
void Protector::SetUp(const KelvaneStruParam& oStruParam, bool bAtOnce)
{
    const double f64Part = bAtOnce ? 1.0 : static_cast<double>(iMoved) / MOVE_BLOCKS;
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        Speaker& oSpeaker = oSpeakers[i];
        const SpeakerValues oValues = GetSpeakerValues(oStruParam, std::min(i, oStruParam.sChannelNum - 1));
        oSpeaker.oFrom = bAtOnce ? oValues : Between(oSpeaker.oFrom, oSpeaker.oTo, f64Part);
        oSpeaker.oTo = oValues;
        if (bAtOnce)
            oSpeaker.oConstants.Init(oValues);
    }
    iMoved = bAtOnce ? MOVE_BLOCKS : 0;
    iDeepAhead = static_cast<int>(GetParameter(oStruParam, KelvaneParameter::DEEP_LOOK_AHEAD));
    iUpperAhead = static_cast<int>(GetParameter(oStruParam, KelvaneParameter::UPPER_LOOK_AHEAD));
}

void Protector::ClearHeat(const Surroundings& oAround)
{
    for (Speaker& oSpeaker : oSpeakers)
    {
        oSpeaker.oAmbient.Init(oSpeaker.oTo, oAround.bAmbientKnown, oAround.f64AmbientC);
        oSpeaker.oHeat.Reset(oSpeaker.oAmbient);
    }
}

void Protector::Process(int iPair, const float* const (&pIn)[2], int iBegin, int iEnd)
{
    if (!bPairRuns[iPair])
        oPairs[iPair].Init(oControls[iPair], iDeepAhead, iUpperAhead);
    bPairRuns[iPair] = true;
    iChannels = std::max(iChannels, 2 * iPair + 2);
    oPairs[iPair].Process(oFilter, oControls[iPair], pIn, iBegin, iEnd);
}

void Protector::Bypassed(int iPair, const float* const (&pOut)[2], int iCount)
{
    iChannels = std::max(iChannels, 2 * iPair + 2);
    oPairs[iPair].oCoil.Process(oControls[iPair].oBackEmf, pOut[0], pOut[1], iCount);
}

void Protector::Sense(int iChannel, const float* pVoltage, const float* pCurrent, int iCount)
{
    Speaker& oSpeaker = oSpeakers[iChannel];
    oSpeaker.oSense.Process(oControls[iChannel / 2].oBackEmf[iChannel % 2], pVoltage, pCurrent, iCount,
                            oSpeaker[KelvaneParameter::SENSE_VOLTAGE], oSpeaker[KelvaneParameter::SENSE_CURRENT]);
}

void Protector::FinishBlock(const Surroundings& oAround, bool bCorrect)
{
    const bool bMoves = iMoved < MOVE_BLOCKS;
    if (bMoves)
        Move();
    for (int i = 0; i < iChannels; ++i)
    {
        Speaker& oSpeaker = oSpeakers[i];
        const double f64Margin = oSpeaker[KelvaneParameter::RESISTANCE_MARGIN] / 100.0;
        oSpeaker.oAmbient.Init(oSpeaker.oTo, oAround.bAmbientKnown, oAround.f64AmbientC);
        oSpeaker.oHeat.Heat(oSpeaker.oConstants, oSpeaker.oAmbient, f64Margin,
                            Lane(oPairs[i / 2].oCoil.oCoilSum, i % 2) / BLOCK_LEN);
        const double f64Ratio = oSpeaker.oSense.ResistanceOhm() / oSpeaker.oConstants.f64ResistanceOhm;
        if (bCorrect && f64Ratio > LEAST_RATIO && f64Ratio < MOST_RATIO)
            oSpeaker.oHeat.Correct(oSpeaker.oConstants, f64Margin, oSpeaker.oSense.ResistanceOhm());
        oSpeaker.f64Ceiling += std::clamp(SupplyCeiling(i, oAround) - oSpeaker.f64Ceiling, -CEILING_STEP, CEILING_STEP);
    }
    FollowHeat();
    for (int i = 0; i < PAIRS; ++i)
    {
        ChannelPair& oPair = oPairs[i];
        oPair.oCoil.oCoilSum = oPair.oCoil.oLevelSum = Both(0.0);
        if (!bPairRuns[i])
            continue;
        for (int iLane = 0; iLane < 2; ++iLane)
            oSpeakers[2 * i + iLane].f64Displacement =
                Lane(_mm_div_pd(oPair.oPeakLeft, oControls[i].oCone.oEnd.oLimit), iLane) *
                (1.0 - oSpeakers[2 * i + iLane].oConstants.f64Margin);
        oPair.FinishBlock(oControls[i]);
        oControls[i].oCone.bMoves = bMoves;
        oControls[i].oCone.oBegin = oControls[i].oCone.oEnd;
        oPair.oDeep.FollowLookAhead(iDeepAhead);
        oPair.oUpper.FollowLookAhead(iUpperAhead);
        oPair.oPeakLeft = Both(0.0);
    }
    for (int i = 0; i < iChannels; ++i)
        Control(i);
}

void Protector::Move()
{
    ++iMoved;
    for (Speaker& oSpeaker : oSpeakers)
        oSpeaker.oConstants.Init(Between(oSpeaker.oFrom, oSpeaker.oTo, static_cast<double>(iMoved) / MOVE_BLOCKS));
}

// Linked speakers take the gain of the one that needs the lowest.
void Protector::FollowHeat()
{
    HeatDemand oDemands[KELVANE_MAX_CHANNELS];
    HeatDemand oAll;
    for (int i = 0; i < iChannels; ++i)
    {
        if (bPairRuns[i / 2] && oSpeakers[i][KelvaneParameter::HEAT_STAGE] != 0.0)
            oDemands[i] = oSpeakers[i].oHeat.Demand(oSpeakers[i].oConstants);
        oAll.Join(oDemands[i]);
    }
    for (int i = 0; i < iChannels; ++i)
    {
        const bool bLinked = oSpeakers[i][KelvaneParameter::HEAT_LINK] != 0.0;
        oSpeakers[i].oHeat.Follow(oSpeakers[i].oConstants, bLinked ? oAll : oDemands[i]);
    }
}

void Protector::Control(int iChannel)
{
    const Speaker& oSpeaker = oSpeakers[iChannel];
    const SpeakerConstants& oConstants = oSpeaker.oConstants;
    const double f64Part = static_cast<double>(iMoved) / MOVE_BLOCKS;
    const auto Now = [&](KelvaneParameter eParameter)
    { return oSpeaker.oFrom[eParameter] + (oSpeaker.oTo[eParameter] - oSpeaker.oFrom[eParameter]) * f64Part; };
    PairControl& oControl = oControls[iChannel / 2];
    const int iLane = iChannel % 2;
    const ConeCoefs oCone = oConstants.Cone(oConstants.ResistanceRatio(oSpeaker.oHeat.oCold.f64CoilC));
    ConeLanes& oEnd = oControl.oCone.oEnd;
    SetLane(oEnd.oA1, iLane, oCone.f64A1);
    SetLane(oEnd.oA2, iLane, oCone.f64A2);
    SetLane(oEnd.oB, iLane, oCone.f64B);
    SetLane(oEnd.oPerB, iLane, 1.0 / oCone.f64B);
    SetLane(oEnd.oLimit, iLane, oCone.f64Limit);
    oControl.oBackEmf[iLane] = oConstants.BackEmf(oConstants.ResistanceRatio(oSpeaker.oHeat.oLikely.f64CoilC));
    oControl.f64Gain[iLane] = Now(KelvaneParameter::DRIVE) / 100.0 * oSpeaker.oHeat.f64Gain;
    oControl.f64Engaged = Now(KelvaneParameter::EXCURSION_STAGE);
    const double f64Off = 1.0 - Now(KelvaneParameter::CEILING_STAGE);
    oControl.f64Ceiling[iLane] = oSpeaker.f64Ceiling + f64Off * (NO_CEILING - oSpeaker.f64Ceiling);
}

double Protector::SupplyCeiling(int iChannel, const Surroundings& oAround) const
{
    const Speaker& oSpeaker = oSpeakers[iChannel];
    const double f64Full = oSpeaker[KelvaneParameter::CEILING_FULL] / 100.0;
    const double f64Empty = oSpeaker[KelvaneParameter::CEILING_EMPTY] / 100.0;
    const double f64Knee = oSpeaker[KelvaneParameter::BATTERY_KNEE];
    if (oAround.f64BatteryPercent >= f64Knee)
        return f64Full;
    return f64Empty + (f64Full - f64Empty) * oAround.f64BatteryPercent / f64Knee;
}
