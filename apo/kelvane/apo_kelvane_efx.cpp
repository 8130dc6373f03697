// The questions that a processing object answers from the monitor's status record, on the processing thread.
#include "apo/kelvane/apo_kelvane_efx.h"

#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"

namespace
{
// A sound mode: where the system's value and the engine's mirror of it are found.
struct SoundMode
{
    const char* pLabel;
    int (CAudioMonitor::*fSystem)() const;
    int (CBaseEngine::*fMirror)(const int&);
    int (CBaseEngine::*fSetMirror)(const int&);
};
constexpr SoundMode aSoundModes[] = {
    {"iCurrentSpeakerMode: ", &CAudioMonitor::GetSpeakerMode, &CBaseEngine::GetSpeakerMode,
     &CBaseEngine::SetSpeakerMode},
    {"iCurrentHeadPhoneMode: ", &CAudioMonitor::GetHeadphoneMode, &CBaseEngine::GetHeadphoneMode,
     &CBaseEngine::SetHeadphoneMode},
    {"iCurrentMicroPhoneMode: ", &CAudioMonitor::GetMicrophoneMode, &CBaseEngine::GetMicrophoneMode,
     &CBaseEngine::SetMicrophoneMode},
};
} // namespace

RT_CODE int CKelvaneEFX::IsNeedByPass()
{
    // The headset question also brings its mirror up to date, so it is asked on every period that reaches it.
    return !CKelvaneManager::Instance()->GetLoadDLLStatus() || !IsSupportedRate() ||
           (m_pEngine != nullptr && (m_pEngine->GetBypassStatus() == 1 || m_pEngine->GetHeadsetStatus(1) == 1)) ||
           CAudioMonitor::Instance()->GetKelvaneBypass() == 1;
}

RT_CODE int CKelvaneEFX::IsNeedUpdataPara()
{
    const CAudioMonitor* const pMonitor = CAudioMonitor::Instance();
    int bNeedUpdataPara = 0;
    const int iSpeakerVolume = pMonitor->GetSpeakerVolume();
    if (iSpeakerVolume != m_pEngine->GetSpeakerVolume(0))
    {
        m_pEngine->SetSpeakerVolume(iSpeakerVolume);
        bNeedUpdataPara = 1;
    }
    if (pMonitor->GetZvSoundStatus() != 1)
        return bNeedUpdataPara;
    for (const SoundMode& oMode : aSoundModes)
    {
        const int iNew = (pMonitor->*oMode.fSystem)();
        const int iOld = (m_pEngine.get()->*oMode.fMirror)(0);
        if (iNew == iOld)
            continue;
        AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_MODE_CHANGE) + oMode.pLabel + std::to_string(iOld) + " change to " +
                            std::to_string(iNew));
        (m_pEngine.get()->*oMode.fSetMirror)(iNew);
        bNeedUpdataPara = 1;
    }
    return bNeedUpdataPara;
}
