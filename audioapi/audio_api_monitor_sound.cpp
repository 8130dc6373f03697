// The sound-effect settings, and the modes that are one number each.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"

namespace
{
constexpr DWORD ORDINARY_MICROPHONE_MODES = 4; // modes from this on aren't remembered as the last one
} // namespace

// Before the watch, so that the first refresh finds nothing changed.
bool CAudioMonitor::LoadZvSound()
{
    CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_STATUS, m_oStatus.m_iZvSoundStatus);
    CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_SPEAKER_MODE, m_oStatus.m_iSpeakerMode);
    CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_HEADPHONE_MODE, m_oStatus.m_iHeadphoneMode);
    CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_SHARE_STATUS, m_oStatus.m_iShareVoiceStatus);
    CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_MICROPHONE_MODE, m_oStatus.m_iMicrophoneMode);
    return true;
}

// A value that can't be read counts as 0.
void CAudioMonitor::RefreshZvSound()
{
    DWORD dwZvSoundValue = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_STATUS, dwZvSoundValue));
    StoreChange(AUDIO_LOG_SITE, m_oStatus.m_iZvSoundStatus, dwZvSoundValue, "Support ZvSound Status ");

    DWORD dwSpeakerMode = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_SPEAKER_MODE, dwSpeakerMode));
    StoreChange(AUDIO_LOG_SITE, m_oStatus.m_iSpeakerMode, dwSpeakerMode, "ZvSound Speaker mode ");

    DWORD dwHeadphoneMode = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_HEADPHONE_MODE, dwHeadphoneMode));
    StoreChange(AUDIO_LOG_SITE, m_oStatus.m_iHeadphoneMode, dwHeadphoneMode, "ZvSound Headphone mode ");

    DWORD dwShareValue = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_SHARE_STATUS, dwShareValue));
    StoreChange(AUDIO_LOG_SITE, m_oStatus.m_iShareVoiceStatus, dwShareValue, "ZvSound Share Voice Status ");

    DWORD dwMicrophoneValue = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_ZVSOUND_PATH, AUDIO_ZVSOUND_MICROPHONE_MODE, dwMicrophoneValue));
    const int iOldMicrophoneMode = m_oStatus.m_iMicrophoneMode;
    const DWORD dwOldMicrophoneMode = static_cast<DWORD>(iOldMicrophoneMode);
    if (dwOldMicrophoneMode != dwMicrophoneValue && dwOldMicrophoneMode < ORDINARY_MICROPHONE_MODES)
        m_oStatus.m_iLastMicrophoneMode = iOldMicrophoneMode;
    StoreChange(AUDIO_LOG_SITE, m_oStatus.m_iMicrophoneMode, dwMicrophoneValue, "ZvSound Micophone Status ");
}

// One number each; what can't be read leaves the field as it was.
void CAudioMonitor::RefreshHeadSetType()
{
    DWORD dwValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(LYRANA_HEADSET_TYPE_PATH, LYRANA_HEADSET_TYPE, dwValue)) == 0)
        StoreNumber(AUDIO_LOG_SITE, m_oStatus.m_iHeadSetType, dwValue, "Headset Type ");
}

void CAudioMonitor::RefreshHeadSetMode()
{
    DWORD dwValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(LYRANA_HEADSET_MODE_PATH, LYRANA_HEADSET_MODE, dwValue)) == 0)
        StoreNumber(AUDIO_LOG_SITE, m_oStatus.m_iHeadSetMode, dwValue, "Headset mode ");
}

void CAudioMonitor::RefreshLyranaMode()
{
    DWORD dwValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(LYRANA_MODE_PATH, LYRANA_APO_MODE, dwValue)) == 0)
        StoreNumber(AUDIO_LOG_SITE, m_oStatus.m_iLyranaMode, dwValue, "Lyrana mode ");
}

void CAudioMonitor::RefreshSilentSpace()
{
    DWORD dwValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(VQE_SILENT_SPACE_PATH, VQE_SILENT_SPACE_STATUS, dwValue)) == 0)
        StoreNumber(AUDIO_LOG_SITE, m_oStatus.m_iSilentSpace, dwValue, "Silent Space Status ");
}

void CAudioMonitor::RefreshZvSmartAudioMode()
{
    DWORD dwValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(ZV_SMART_AUDIO_MODE_LOCAL_PATH, SMART_AUDIO_MODE, dwValue)) == 0)
        StoreNumber(AUDIO_LOG_SITE, m_oStatus.m_iZvSmartAudioMode, dwValue, "ZVSmartAudio mode ");
}
