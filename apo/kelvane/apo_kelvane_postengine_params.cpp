// The choice of the library's parameter set: volume band and sound mode.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace
{
constexpr size_t iVolumeLimitCount = 6; // entries that a list of volume limits needs

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

const char* CKelvanePostEngine::GetEffectParamsID(const int& iHeatState)
{
    const int iVolume = GetSpeakerVolume(1);
    const int iSpeakerMode = GetSpeakerMode(1);
    const int iMicrophoneMode = GetMicrophoneMode(1);
    const std::vector<INT32>& vecVolumeRange = CKelvaneManager::Instance()->m_vecVolumeRange;
    if (vecVolumeRange.size() < iVolumeLimitCount)
        return "";
    if (iSpeakerMode == 4 || iMicrophoneMode == 4)
        return AUDIO_SOUND_MODE_EFFECT_ID0;
    if (IsSecondSoundMode(iMicrophoneMode) || IsSecondSoundMode(iSpeakerMode))
        return AUDIO_SOUND_MODE_EFFECT_ID1;
    const VolumeBandKey& oBand = FindBand(iVolume, vecVolumeRange);
    return iHeatState == 1 ? oBand.pHeated : oBand.pNormal;
}

int CKelvanePostEngine::RefreshAlgorithmParams()
{
    return SetAudioVolumeEffectParamsID();
}

int CKelvanePostEngine::SetAudioVolumeEffectParamsID()
{
    const char* const pNewID = GetEffectParamsID(0);
    const char* const pOldID = m_strParamID;
    if (std::strcmp(pNewID, pOldID) == 0)
        return 0;
    AUDIOLOG_DEBUG("Refresh Algorithm Params from " + std::string(pOldID) + " to " + pNewID);
    m_strParamID = pNewID;
    const KelvaneStruParam* const pStruParam = CKelvaneManager::Instance()->GetAlgorithmStruct(pNewID);
    if (pStruParam != nullptr)
        AUDIO_CHECK(m_fAudioKelvaneSetPara(m_pRunBuf, m_pScratchBuf, pStruParam));
    return 0;
}
