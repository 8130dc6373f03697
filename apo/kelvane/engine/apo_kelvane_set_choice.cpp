// The choice of the library's parameter set.
#include "apo/kelvane/engine/apo_kelvane_set_choice.h"

#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace
{
struct VolumeBandKey
{
    const char* pNormal;
    const char* pHeated;
};

// By band; the last takes every volume that no other takes.
constexpr VolumeBandKey aBandKey[] = {
    {AUDIO_VOLUME_EFFECT_ID0, AUDIO_HEAT_EFFECT_ID0}, {AUDIO_VOLUME_EFFECT_ID1, AUDIO_HEAT_EFFECT_ID1},
    {AUDIO_VOLUME_EFFECT_ID2, AUDIO_HEAT_EFFECT_ID2}, {AUDIO_VOLUME_EFFECT_ID3, AUDIO_HEAT_EFFECT_ID3},
    {AUDIO_VOLUME_EFFECT_ID4, AUDIO_HEAT_EFFECT_ID4},
};

static_assert(std::size(aBandKey) + 1 == CKelvaneTuning::VOLUME_LIMIT_COUNT);

// Band i reaches from above limit i up to limit i + 1.
const VolumeBandKey& FindBand(int iVolume, const std::vector<INT32>& vecVolumeRange)
{
    constexpr size_t iLastBand = std::size(aBandKey) - 1;
    for (size_t i = 0; i < iLastBand; ++i)
        if (vecVolumeRange[i] < iVolume && iVolume <= vecVolumeRange[i + 1])
            return aBandKey[i];
    return aBandKey[iLastBand];
}

bool IsSecondSoundMode(int iMode)
{
    return iMode >= 5 && iMode <= 7;
}
} // namespace

const char* CKelvaneSetChoice::GetEffectParamsID(const int& iHeatState)
{
    const int iVolume = m_oEngine.GetSpeakerVolume(1);
    const int iSpeakerMode = m_oEngine.GetSpeakerMode(1);
    const int iMicrophoneMode = m_oEngine.GetMicrophoneMode(1);
    const std::vector<INT32>& vecVolumeRange = CKelvaneManager::Instance()->Tuning().m_vecVolumeRange;
    if (vecVolumeRange.size() < CKelvaneTuning::VOLUME_LIMIT_COUNT)
        return "";
    if (iSpeakerMode == 4 || iMicrophoneMode == 4)
        return AUDIO_SOUND_MODE_EFFECT_ID0;
    if (IsSecondSoundMode(iMicrophoneMode) || IsSecondSoundMode(iSpeakerMode))
        return AUDIO_SOUND_MODE_EFFECT_ID1;
    const VolumeBandKey& oBand = FindBand(iVolume, vecVolumeRange);
    return iHeatState == 1 ? oBand.pHeated : oBand.pNormal;
}

int CKelvaneSetChoice::SetAudioVolumeEffectParamsID()
{
    return SetEffectParamsID(GetEffectParamsID(0));
}

int CKelvaneSetChoice::SetAudioHeatEffectParamsID()
{
    const CKelvaneTemperature::Heat eHeat = m_oTemperature.JudgeHeat();
    if (eHeat == CKelvaneTemperature::Heat::Unknown)
        return 0;
    return SetEffectParamsID(GetEffectParamsID(eHeat == CKelvaneTemperature::Heat::Hot ? 1 : 0));
}

const KelvaneStruParam* CKelvaneSetChoice::FirstSet()
{
    m_strParamID = GetEffectParamsID(0);
    return CKelvaneManager::Instance()->GetAlgorithmStruct(ParamID());
}

// The key is the new one even when the library refuses its set.
int CKelvaneSetChoice::SetEffectParamsID(const char* pNewID)
{
    const char* const pOldID = m_strParamID;
    if (std::strcmp(pNewID, pOldID) == 0)
        return 0;
    AUDIOLOG_DEBUG("Refresh Algorithm Params from " + std::string(pOldID) + " to " + pNewID);
    m_strParamID = pNewID;
    const KelvaneStruParam* const pStruParam = CKelvaneManager::Instance()->GetAlgorithmStruct(pNewID);
    if (pStruParam != nullptr)
        m_oInstance.SetPara(pStruParam);
    return 0;
}
