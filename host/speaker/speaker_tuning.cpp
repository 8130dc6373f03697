// From tuning files to simulated speakers.
#include "host/speaker/speaker_tuning.h"

#include "host/audio_file.h"
#include "host/host_error.h"
#include "host/tuning/parameter_names.h"
#include "host/tuning/tuning_file.h"

#include <algorithm>

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

void CheckAlike(const TuningSet& oSet, int iChannels)
{
    const int iSpeakers = std::clamp<int>(std::min<int>(oSet.oParam.sChannelNum, iChannels), 1, KELVANE_MAX_CHANNELS);
    for (const ParameterRow& oRow : PARAMETER_ROWS)
        for (int i = 1; i < iSpeakers; ++i)
            if (GetParameter(oSet.oParam, oRow.eParameter, i) != GetParameter(oSet.oParam, oRow.eParameter, 0))
                throw CHostError("set " + oSet.strKey + ": the speakers differ in " +
                                 SourceName(GetParameterInfo(oRow.eParameter)) + "; only equal ones can be simulated");
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
    CheckAlike(*pSet, oOptions.iChannels);
    oComparison.strTuning = strFile;
    oComparison.strSet = pSet->strKey;
    SpeakerSetup oSetup;
    for (const ParameterRow& oRow : PARAMETER_ROWS)
        oSetup.oParams.*oRow.pValue = GetParameter(pSet->oParam, oRow.eParameter);
    oSetup.oParams.f64AmbientC = oOptions.f64AmbientC;
    oSetup.oLimits.f64DisplacementMm = GetParameter(pSet->oParam, KelvaneParameter::DISPLACEMENT_LIMIT);
    oSetup.oLimits.f64CoilC = GetParameter(pSet->oParam, KelvaneParameter::COIL_LIMIT);
    oSetup.f64SampleRateHz = oOptions.iRate;
    oSetup.iChannels = oOptions.iChannels;
    oSetup.iOversampling = 1; // enough for music
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
