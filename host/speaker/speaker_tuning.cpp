// From tuning files to simulated speakers.
#include "host/speaker/speaker_tuning.h"

#include "host/audio/audio_file.h"
#include "host/host_error.h"
#include "host/tuning/parameter_names.h"
#include "host/tuning/tuning_file.h"

#include <algorithm>
#include <iterator>

namespace
{

constexpr int PROTECT_MODE = 2; // in other modes a set describes no speaker
constexpr size_t READ_FRAMES = 4096;

struct ParameterRow
{
    KelvaneParameter eParameter;
    double SpeakerParams::*pValue;
};
constexpr ParameterRow PARAMETER_ROWS[] = {
    {KelvaneParameter::COIL_RESISTANCE, &SpeakerParams::f64CoilResistanceOhm},
    {KelvaneParameter::RESISTANCE_RISE, &SpeakerParams::f64ResistanceRisePerK},
    {KelvaneParameter::RESONANCE, &SpeakerParams::f64ResonanceHz},
    {KelvaneParameter::MECHANICAL_Q, &SpeakerParams::f64MechanicalQ},
    {KelvaneParameter::ELECTRICAL_Q, &SpeakerParams::f64ElectricalQ},
    {KelvaneParameter::DISPLACEMENT, &SpeakerParams::f64DisplacementMmPerV},
    {KelvaneParameter::FULL_SCALE, &SpeakerParams::f64FullScaleV},
    {KelvaneParameter::COIL_TO_MAGNET, &SpeakerParams::f64CoilToMagnetKPerW},
    {KelvaneParameter::COIL_HEAT, &SpeakerParams::f64CoilHeatJPerK},
    {KelvaneParameter::MAGNET_TO_AMBIENT, &SpeakerParams::f64MagnetToAmbientKPerW},
    {KelvaneParameter::MAGNET_HEAT, &SpeakerParams::f64MagnetHeatJPerK},
};

// In the order of control word 6, 1 or 2; every order undoes itself.
constexpr int FOUR_CHANNEL_ORDERS[][4] = {{2, 3, 0, 1}, {0, 2, 1, 3}};

// Which of the set's speakers a channel plays on: the module may give four channels another order, and who comes behind
// the last is as the last.
int SpeakerOf(const TuningFile& oTuning, const TuningSet& oSet, int iChannel, int iChannels)
{
    const uint64_t u64Order = oTuning.vecSets.back().u64Control[6];
    if (iChannels == 4 && u64Order >= 1 && u64Order <= std::size(FOUR_CHANNEL_ORDERS))
        iChannel = FOUR_CHANNEL_ORDERS[u64Order - 1][iChannel];
    return std::min(iChannel, oSet.oParam.sChannelNum - 1);
}

SpeakerType ReadSpeaker(const KelvaneStruParam& oParam, int iSpeaker, double f64AmbientC)
{
    SpeakerType oType;
    for (const ParameterRow& oRow : PARAMETER_ROWS)
        oType.oParams.*oRow.pValue = GetParameter(oParam, oRow.eParameter, iSpeaker);
    oType.oParams.f64AmbientC = f64AmbientC;
    oType.oLimits.f64DisplacementMm = GetParameter(oParam, KelvaneParameter::DISPLACEMENT_LIMIT, iSpeaker);
    oType.oLimits.f64CoilC = GetParameter(oParam, KelvaneParameter::COIL_LIMIT, iSpeaker);
    return oType;
}

bool IsSame(const SpeakerType& oOne, const SpeakerType& oOther)
{
    for (const ParameterRow& oRow : PARAMETER_ROWS)
        if (oOne.oParams.*oRow.pValue != oOther.oParams.*oRow.pValue)
            return false;
    return oOne.oLimits.f64DisplacementMm == oOther.oLimits.f64DisplacementMm &&
           oOne.oLimits.f64CoilC == oOther.oLimits.f64CoilC;
}

// A channel's each, but for the last ones that are as the one before them.
std::vector<SpeakerType> ReadSpeakers(const TuningFile& oTuning, const TuningSet& oSet, const PlayOptions& oOptions)
{
    std::vector<SpeakerType> vecTypes;
    for (int i = 0; i < oOptions.iChannels; ++i)
        vecTypes.push_back(
            ReadSpeaker(oSet.oParam, SpeakerOf(oTuning, oSet, i, oOptions.iChannels), oOptions.f64AmbientC));
    while (vecTypes.size() > 1 && IsSame(vecTypes.back(), vecTypes[vecTypes.size() - 2]))
        vecTypes.pop_back();
    return vecTypes;
}

} // namespace

SpeakerSetup SetupFromTuning(const std::string& strFile, const std::string& strKey, const PlayOptions& oOptions,
                             SpeakerComparison& oComparison)
{
    const TuningFile oTuning = ReadTuning(strFile);
    const TuningSet* pSet = strKey.empty() ? &oTuning.vecSets.front() : FindSet(oTuning, strKey);
    if (pSet == nullptr)
        throw CHostError(strFile + ": has no set " + strKey);
    if (pSet->oParam.sFFModule[0] != PROTECT_MODE || CheckParameters(pSet->oParam).pInfo != nullptr)
        throw CHostError(strFile + ": set " + pSet->strKey + " describes no speaker");
    SpeakerSetup oSetup;
    oSetup.vecTypes = ReadSpeakers(oTuning, *pSet, oOptions);
    oSetup.f64SampleRateHz = oOptions.iRate;
    oSetup.iChannels = oOptions.iChannels;
    oSetup.iOversampling = 1; // enough for music
    oComparison.strTuning = strFile;
    oComparison.strSet = pSet->strKey;
    oComparison.bAlike = oSetup.vecTypes.size() == 1;
    return oSetup;
}

ConstantGain FindConstantGain(const SpeakerSetup& oSetup, const PlayOptions& oOptions, int64_t i64Frames)
{
    const auto Play = [&](const SpeakerSink& oSink)
    {
        CAudioReader oReader(oOptions.strInput, {oOptions.iRate, oOptions.iChannels});
        oReader.Repeat(i64Frames);
        std::vector<float> vecFrames(READ_FRAMES * static_cast<size_t>(oOptions.iChannels));
        while (const size_t uFrames = oReader.Read(vecFrames.data(), READ_FRAMES))
            oSink(vecFrames.data(), uFrames);
    };
    ConstantGain oFound;
    if (const SpeakerResult oResult = FindConstantGain(oSetup, Play, oFound); !oResult)
        throw CHostError("the speakers can't be simulated: " + oResult.strText);
    return oFound;
}
