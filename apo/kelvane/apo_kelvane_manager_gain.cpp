// The manager's hardware: amplifiers treated as one, and the codec gain objects.
#include "apo/kelvane/apo_kelvane_everest.h"
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_senary.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"

#include <string>

void CKelvaneManager::InitializeIRP()
{
    const INT64 iNumber = GetAlgoCtrlParam(1);
    AUDIOLOG_INFO("Config PA Number:" + std::to_string(iNumber));
    if (iNumber != 1 && iNumber != 2)
    {
        AUDIOLOG_WARN("Not support " + std::to_string(iNumber) + " PA !");
        return;
    }
    m_pIRP0 = std::make_unique<CKelvaneIRP>(AUDIO_KELVANE_DEVICE0);
    if (iNumber == 2)
        m_pIRP1 = std::make_unique<CKelvaneIRP>(AUDIO_KELVANE_DEVICE1);
}

// One of the two gains, and its texts in the log.
struct CKelvaneManager::AmplifierGain
{
    DWORD dwStatus;
    const char* pFirst;
    const char* pSecond;
    const char* pFailedEvent;
    const char* pFailed;
    const char* pDoneEvent;
    const char* pDone;
};

DWORD CKelvaneManager::ActiveMutilPAGain()
{
    static constexpr AmplifierGain oActive = {KELVANE_STATUS_ACTIVE,
                                              "m_pIRP0->SetKelvaneStatus(KELVANE_STATUS_ACTIVE)",
                                              "m_pIRP1->SetKelvaneStatus(KELVANE_STATUS_ACTIVE)",
                                              AUDIO_EVENT_SET_GAIN_FAILED,
                                              "Set MutilPA Gain Failed! Reason:",
                                              AUDIO_EVENT_SET_GAIN_OK,
                                              "Set MutilPA Gain Success!"};
    return SetMutilPAGain(oActive);
}

DWORD CKelvaneManager::DeactiveMutilPAGain()
{
    static constexpr AmplifierGain oDeactive = {KELVANE_STATUS_DEACTIVE,
                                                "m_pIRP0->SetKelvaneStatus(KELVANE_STATUS_DEACTIVE)",
                                                "m_pIRP1->SetKelvaneStatus(KELVANE_STATUS_DEACTIVE)",
                                                AUDIO_EVENT_CANCEL_GAIN_FAILED,
                                                "Cancel MutilPA Gain Failed! Reason:",
                                                AUDIO_EVENT_CANCEL_GAIN_OK,
                                                "Cancel MutilPA Gain Success!"};
    return SetMutilPAGain(oDeactive);
}

DWORD CKelvaneManager::SetMutilPAGain(const AmplifierGain& oGain)
{
    DWORD dwResult = 0;
    if (m_pIRP0 != nullptr)
        dwResult = AudioCheckResult(m_pIRP0->SetKelvaneStatus(oGain.dwStatus), AUDIO_LOG_SITE, oGain.pFirst);
    if (dwResult == 0 && m_pIRP1 != nullptr)
        dwResult = AudioCheckResult(m_pIRP1->SetKelvaneStatus(oGain.dwStatus), AUDIO_LOG_SITE, oGain.pSecond);
    if (dwResult != 0)
        AUDIOLOG_EVENT_WARN(std::string(oGain.pFailedEvent) + oGain.pFailed + std::to_string(dwResult));
    else
        AUDIOLOG_EVENT_INFO(std::string(oGain.pDoneEvent) + oGain.pDone);
    return dwResult;
}

void CKelvaneManager::LoadSenaryGain()
{
    const bool bEnabled = GetAlgoCtrlParam(0) == 1;
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_SENARY_GAIN) +
                        (bEnabled ? "Senary Gain is enable!" : "Senary Gain is Disable!"));
    if (bEnabled)
        CSenaryGainConfig::Instance()->Initialize();
}

void CKelvaneManager::LoadEverestGain()
{
    const bool bEnabled = GetAlgoCtrlParam(0) == 1;
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_EVEREST_GAIN) +
                        (bEnabled ? "Everest Gain is enable!" : "Everest Gain is Disable!"));
    if (bEnabled)
        CEverestGainConfig::Instance()->Initialize();
}
