// Questions to the tuning value.
#include "apo/kelvane/tuning/apo_kelvane_tuning.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

INT64 CKelvaneTuning::GetAlgoCtrlParam(UINT64 iIndex) const
{
    return iIndex < ALGO_CTRL_COUNT ? m_iAlgoCtrlParam[iIndex] : 0;
}

const KelvaneStruParam* CKelvaneTuning::GetAlgorithmStruct(const std::string& strKey) const
{
    const auto itParam = m_mapAlgoParam.find(strKey);
    if (itParam != m_mapAlgoParam.end())
    {
        AUDIOLOG_INFO("Get Parameter from strKey=" + strKey);
        return itParam->second.get();
    }
    if (m_mapAlgoParam.empty())
    {
        AUDIOLOG_EVENT_ERROR(AUDIO_BAD_DATA, std::string(AUDIO_EVENT_PARAM_EMPTY) + "Parameter list is empty!");
        return nullptr;
    }
    const auto& [strFirstKey, pFirst] = *m_mapAlgoParam.begin();
    AUDIOLOG_EVENT_WARN(std::string(AUDIO_EVENT_PARAM_NOT_FOUND) + "Can not find Parameter from strKey=" + strKey +
                        ", Use Default first Parameter strKey=" + strFirstKey);
    return pFirst.get();
}
