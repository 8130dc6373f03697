// The endpoints' volumes, as the audio control software publishes them.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"

namespace
{
// What was read of one side; 0 and empty stand for what could not be.
struct VolumeValues
{
    DWORD dwMuteValue = 0;
    DWORD dwVolumeValue = 0; // percent
    std::string strValue;    // dB
};

void LogNumberChange(const AudioLogSite& oSite, const char* pLabel, int iOld, DWORD dwNew)
{
    const DWORD dwOld = static_cast<DWORD>(iOld);
    if (dwNew != dwOld)
        AUDIO_LOG_AT(oSite, AUDIO_LEVEL_INFO, 0,
                     pLabel + std::to_string(dwOld) + ") change to (" + std::to_string(dwNew) + ")");
}

// As texts: a writer that formats its number otherwise than we do changes it with each refresh.
void LogDecibelChange(const AudioLogSite& oSite, const char* pLabel, float fOld, const std::string& strNew)
{
    const std::string strOld = CAudioSTR::FloatToString(fOld);
    if (strNew != strOld)
        AUDIO_LOG_AT(oSite, AUDIO_LEVEL_INFO, 0, pLabel + strOld + ") change to (" + strNew + ")");
}

void StoreVolume(const VolumeValues& oValues, CAudioInt& iMute, CAudioInt& iVolume, CAudioRelaxed<float>& fVolumeDB)
{
    iMute = static_cast<int>(oValues.dwMuteValue);
    iVolume = static_cast<int>(oValues.dwVolumeValue);
    fVolumeDB = CAudioSTR::ToFloat(oValues.strValue);
}
} // namespace

void CAudioMonitor::RefreshSpeakerVolum()
{
    VolumeValues oValues;
    auto& [dwMuteValue, dwVolumeValue, strValue] = oValues;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_MUTE, dwMuteValue));
    LogNumberChange(AUDIO_LOG_SITE, "Speaker Mute status(", m_oStatus.m_iSpeakerMute, dwMuteValue);
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_NUM, dwVolumeValue));
    LogNumberChange(AUDIO_LOG_SITE, "Speaker Percent Volume(", m_oStatus.m_iSpeakerVolume, dwVolumeValue);
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_SPEAKER_VOLUME_PATH, AUDIO_VOLUME_DB, strValue));
    LogDecibelChange(AUDIO_LOG_SITE, "Speaker DB Volume (", m_oStatus.m_fSpeakerVolumeDB, strValue);
    StoreVolume(oValues, m_oStatus.m_iSpeakerMute, m_oStatus.m_iSpeakerVolume, m_oStatus.m_fSpeakerVolumeDB);
}

// A muted microphone has volume 0, without a line about it.
void CAudioMonitor::RefreshMicrophoneVolum()
{
    VolumeValues oValues;
    auto& [dwMuteValue, dwVolumeValue, strValue] = oValues;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_MICROPHONE_VOLUME_PATH, AUDIO_VOLUME_MUTE, dwMuteValue));
    LogNumberChange(AUDIO_LOG_SITE, "Microphone Mute status(", m_oStatus.m_iMicrophoneMute, dwMuteValue);
    if (dwMuteValue == 0)
    {
        AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_MICROPHONE_VOLUME_PATH, AUDIO_VOLUME_NUM, dwVolumeValue));
        LogNumberChange(AUDIO_LOG_SITE, "Microphone Percent Volume(", m_oStatus.m_iMicrophoneVolume, dwVolumeValue);
        AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_MICROPHONE_VOLUME_PATH, AUDIO_VOLUME_DB, strValue));
        LogDecibelChange(AUDIO_LOG_SITE, "Microphone DB Volume (", m_oStatus.m_fMicrophoneVolumeDB, strValue);
    }
    StoreVolume(oValues, m_oStatus.m_iMicrophoneMute, m_oStatus.m_iMicrophoneVolume, m_oStatus.m_fMicrophoneVolumeDB);
}
