// The choice of the library's parameter set: volume band, sound mode, heat.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"

#include <algorithm>
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
    if (vecVolumeRange.size() < CKelvaneManager::VOLUME_LIMIT_COUNT)
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
    return CKelvaneManager::Instance()->GetAlgoCtrlParam(3) == 1 ? SetAudioHeatEffectParamsID()
                                                                 : SetAudioVolumeEffectParamsID();
}

int CKelvanePostEngine::SetAudioVolumeEffectParamsID()
{
    return SetEffectParamsID(GetEffectParamsID(0));
}

int CKelvanePostEngine::SetAudioHeatEffectParamsID()
{
    const std::vector<CKelvaneMeanQueue>& vecMeans = m_oAverageQueue.Read();
    if (vecMeans.empty() || !vecMeans[0].IsFull())
        return 0;
    bool bHigh = true;
    bool bLow = true;
    for (int i = 0; i < static_cast<int>(vecMeans.size()); ++i)
    {
        bHigh = bHigh && JudgeHighLimit(i, vecMeans[static_cast<size_t>(i)]) == 1;
        bLow = bLow && JudgeLowLimit(i, vecMeans[static_cast<size_t>(i)]) == 1;
    }
    if (!bHigh && !bLow) // between the two limits
        return 0;
    ClearTemperatureQueue(m_oAverageQueue);
    return SetEffectParamsID(GetEffectParamsID(bHigh ? 1 : 0));
}

int CKelvanePostEngine::JudgeHighLimit(const int& i, CKelvaneMeanQueue oQueue) const
{
    const std::vector<INT32>& vecLimit = CKelvaneManager::Instance()->m_vecSensorRangeNormal;
    if (!oQueue.IsFull() || static_cast<size_t>(i) >= vecLimit.size())
        return 0;
    const INT32 iLimit = vecLimit[static_cast<size_t>(i)];
    return std::all_of(oQueue.begin(), oQueue.end(), [=](INT32 iMean) { return iMean > iLimit; }) ? 1 : 0;
}

int CKelvanePostEngine::JudgeLowLimit(const int& i, CKelvaneMeanQueue oQueue) const
{
    const std::vector<INT32>& vecLimit = CKelvaneManager::Instance()->m_vecSensorRangeLow;
    if (!oQueue.IsFull() || static_cast<size_t>(i) >= vecLimit.size())
        return 0;
    const INT32 iLimit = vecLimit[static_cast<size_t>(i)];
    const INT32* const pAbove = std::find_if(oQueue.begin(), oQueue.end(), [=](INT32 iMean) { return iMean > iLimit; });
    if (pAbove == oQueue.end())
        return 1;
    AUDIOLOG_DEBUG("iSenSorID:" + std::to_string(i) + ",Average Temperature:" + std::to_string(*pAbove) +
                   "> Low Limit:" + std::to_string(iLimit));
    return 0;
}

// The key is the new one even when the library refuses its set.
int CKelvanePostEngine::SetEffectParamsID(const char* pNewID)
{
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
