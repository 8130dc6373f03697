// What happens between blocks, and between sets.
#include "protection/dsp/protector.h"

#include "protection/dsp/base/sane_samples.h"

namespace
{
constexpr double LEAST_RATIO = 0.5; // a sensed resistance outside these is no coil's
constexpr double MOST_RATIO = 2.5;

// Cubic from 0 to 1 without a corner at either end.
double FadePart(int iFaded)
{
    const double f64Part = iFaded * (1.0 / (Protector::FADE_BLOCKS * BLOCK_LEN));
    return f64Part * f64Part * (3.0 - 2.0 * f64Part);
}
} // namespace

void Protector::Init(const KelvaneStruParam& oStruParam, bool bInProgramme, const Surroundings& oAround)
{
    oFilter.Init();
    iHeard = iNewest = 0;
    iChanged = 0;
    iChannels = 0;
    oChains[iHeard].Init(oStruParam, bInProgramme, oAround.f64BatteryPercent);
    for (double& f64Peak : f64Displacement)
        f64Peak = 0.0;
    for (CoilVoltage& oCoil : oCoils)
        oCoil.Reset();
    ClearHeat(oAround);
    Control(oChains[iHeard], KELVANE_MAX_CHANNELS);
}

void Protector::Follow(const KelvaneStruParam& oStruParam, const Surroundings& oAround)
{
    bool bRuns = false;
    for (const bool bPairRuns : Heard().bPairRuns)
        bRuns |= bPairRuns;
    iNewest = bRuns ? 1 - iHeard : iHeard;
    iChanged = 0;
    oChains[iNewest].Init(oStruParam, true, oAround.f64BatteryPercent);
    Control(oChains[iNewest], KELVANE_MAX_CHANNELS);
}

void Protector::Stop()
{
    iHeard = iNewest;
    for (Chain& oChain : oChains)
        oChain.Stop();
}

void Protector::StopPair(int iPair)
{
    oChains[iHeard].StopPair(iPair);
    if (IsChanging())
        oChains[iNewest].StopPair(iPair);
}

void Protector::ClearHeat(const Surroundings& oAround)
{
    for (int i = 0; i < KELVANE_MAX_CHANNELS; ++i)
    {
        oSpeakers[i].oAmbient.Init(oChains[iNewest].oSpeakers[i].oValues, oAround.bAmbientKnown, oAround.f64AmbientC);
        oSpeakers[i].oHeat.Reset(oSpeakers[i].oAmbient);
        oSpeakers[i].oSense = ResistanceSense{};
    }
}

void Protector::Process(int iPair, const float* const (&pIn)[2], int iBegin, int iEnd)
{
    oChains[iHeard].Process(oFilter, iPair, pIn, iBegin, iEnd);
    if (!IsChanging())
        return;
    oChains[iNewest].Process(oFilter, iPair, pIn, iBegin, iEnd);
    if (iChanged >= WARM_BLOCKS)
        Mix(iPair, iBegin, iEnd);
}

// Where both chains give the same, its bits stay.
void Protector::Mix(int iPair, int iBegin, int iEnd)
{
    const int iFaded = (iChanged - WARM_BLOCKS) * BLOCK_LEN + 1;
    for (int iChannel = 2 * iPair; iChannel < 2 * iPair + 2; ++iChannel)
    {
        const float* const pNew = oChains[iNewest].Output(iChannel);
        float* const pOut = oChains[iHeard].Output(iChannel);
        for (int i = iBegin; i < iEnd; ++i)
            if (pOut[i] != pNew[i])
                pOut[i] += (pNew[i] - pOut[i]) * static_cast<float>(FadePart(iFaded + i));
    }
}

void Protector::TakeOut(int iPair, const float* const (&pOut)[2], int iCount)
{
    float f32Sane[2][BLOCK_LEN];
    for (int i = 0; i < 2; ++i)
        CopySane(pOut[i], f32Sane[i], iCount);
    iChannels = std::max(iChannels, 2 * iPair + 2);
    oCoils[iPair].Process(oSpeakers[2 * iPair].oBackEmf, oSpeakers[2 * iPair + 1].oBackEmf, f32Sane[0], f32Sane[1],
                          iCount);
}

void Protector::Sense(int iChannel, const float* pVoltage, const float* pCurrent, int iCount)
{
    const Chain::Speaker& oValues = oChains[iNewest].oSpeakers[iChannel];
    oSpeakers[iChannel].oSense.Process(oSpeakers[iChannel].oBackEmf, pVoltage, pCurrent, iCount,
                                       oValues[KelvaneParameter::SENSE_VOLTAGE],
                                       oValues[KelvaneParameter::SENSE_CURRENT]);
}

void Protector::FinishBlock(const Surroundings& oAround, bool bCorrect)
{
    for (int i = 0; i < iChannels; ++i)
    {
        TakeHeat(i, oAround, bCorrect);
        f64Displacement[i] = Heard().Displacement(i);
    }
    FollowHeat();
    for (CoilVoltage& oCoil : oCoils)
        oCoil.FinishBlock();
    if (IsChanging() && ++iChanged == WARM_BLOCKS + FADE_BLOCKS)
        iHeard = iNewest;
    oChains[iHeard].FinishBlock(oAround.f64BatteryPercent);
    Control(oChains[iHeard], iChannels);
    if (!IsChanging())
        return;
    oChains[iNewest].FinishBlock(oAround.f64BatteryPercent);
    Control(oChains[iNewest], iChannels);
}

// By the newest set: the old one's numbers were of the same speaker.
void Protector::TakeHeat(int iChannel, const Surroundings& oAround, bool bCorrect)
{
    const Chain::Speaker& oValues = oChains[iNewest].oSpeakers[iChannel];
    const SpeakerConstants& oConstants = oValues.oConstants;
    Speaker& oSpeaker = oSpeakers[iChannel];
    const double f64Margin = oValues[KelvaneParameter::RESISTANCE_MARGIN] / 100.0;
    oSpeaker.oAmbient.Init(oValues.oValues, oAround.bAmbientKnown, oAround.f64AmbientC);
    oSpeaker.oHeat.Heat(oConstants, oSpeaker.oAmbient, f64Margin,
                        Lane(oCoils[iChannel / 2].oCoilSum, iChannel % 2) / BLOCK_LEN);
    const double f64SensedOhm = oSpeaker.oSense.ResistanceOhm();
    const double f64Ratio = f64SensedOhm / oConstants.f64ResistanceOhm;
    if (bCorrect && f64Ratio > LEAST_RATIO && f64Ratio < MOST_RATIO)
        oSpeaker.oHeat.Correct(oConstants, f64Margin, f64SensedOhm);
}

// Linked speakers take the gain of the one that needs the lowest.
void Protector::FollowHeat()
{
    const Chain& oNewest = oChains[iNewest];
    HeatDemand oDemands[KELVANE_MAX_CHANNELS];
    HeatDemand oAll;
    for (int i = 0; i < iChannels; ++i)
    {
        if (Heard().bPairRuns[i / 2] && oNewest.oSpeakers[i][KelvaneParameter::HEAT_STAGE] != 0.0)
            oDemands[i] = oSpeakers[i].oHeat.Demand(oNewest.oSpeakers[i].oConstants);
        oAll.Join(oDemands[i]);
    }
    for (int i = 0; i < iChannels; ++i)
    {
        const bool bLinked = oNewest.oSpeakers[i][KelvaneParameter::HEAT_LINK] != 0.0;
        oSpeakers[i].oHeat.Follow(oNewest.oSpeakers[i].oConstants, bLinked ? oAll : oDemands[i]);
    }
}

void Protector::Control(Chain& oChain, int iCount)
{
    for (int i = 0; i < iCount; ++i)
    {
        const HeatStage& oHeat = oSpeakers[i].oHeat;
        const SpeakerConstants& oNewest = oChains[iNewest].oSpeakers[i].oConstants;
        oChain.Control(i, oHeat.f64Gain, oHeat.oCold.f64CoilC);
        oSpeakers[i].oBackEmf = oNewest.BackEmf(oNewest.ResistanceRatio(oHeat.oLikely.f64CoilC));
    }
}
