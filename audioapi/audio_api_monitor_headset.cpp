// The jack: what is plugged in, as one of two drivers says, and the external microphone of a third.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"

void CAudioMonitor::RefreshRealtekHeadSetStatus()
{
    DWORD dwSpeakerValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_REALTEK_HEADSET_PATH, APO_INTERNAL_SPEAKER, dwSpeakerValue)) != 0)
        return;
    DWORD dwMicroPhoneValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_REALTEK_HEADSET_PATH, APO_EXTERNAL_MICROPHONE, dwMicroPhoneValue)) !=
        0)
        return;
    const int iHeadSet = dwSpeakerValue == 0 ? 1 : 0;
    const int iExternalMIC = dwMicroPhoneValue != 0 ? 1 : 0;
    m_oStatus.m_iHeadSetRender = iHeadSet;
    m_oStatus.m_iHeadSetCapture = iHeadSet;
    m_oStatus.m_iExternalMICStatus = iExternalMIC;
    AUDIOLOG_INFO("HeadSet Status:" + std::to_string(iHeadSet) +
                  ",ExternalMic Status: " + std::to_string(iExternalMIC));
}

// Where the Realtek driver reports the jack, nobody else does.
bool CAudioMonitor::IsAudioHeadSetNeeded()
{
    if (!CAudioREG::RegKeyExists(std::string(AUDIO_REALTEK_HEADSET_PATH) + "\\" + APO_INTERNAL_SPEAKER))
        return true;
    AUDIOLOG_WARN("Realtek InternalSpeakerOutput exist! No need listen other drivers Headset Regist item.");
    return false;
}

// A value that can't be read counts as 0.
void CAudioMonitor::RefreshAudioHeadSetStatus()
{
    DWORD dwRenderValue = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_HEADSET_PATH, AUDIO_HEADSET_RENDER, dwRenderValue));
    const int iRender = dwRenderValue != 0 ? 1 : 0;
    m_oStatus.m_iHeadSetRender = iRender;

    DWORD dwCaptureValue = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_HEADSET_PATH, AUDIO_HEADSET_CAPTURE, dwCaptureValue));
    const int iCapture = dwCaptureValue != 0 ? 1 : 0;
    m_oStatus.m_iHeadSetCapture = iCapture;

    DWORD dwHeadsetValue = 0;
    AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_HEADSET_PATH, AUDIO_HEADSET_STATUS, dwHeadsetValue));
    const int iHeadset = dwHeadsetValue != 0 ? 1 : 0;
    m_oStatus.m_iHeadSetStatus = iHeadset;

    AUDIOLOG_INFO("Audio Headset Render Status:" + std::to_string(iRender) +
                  ",Capture Status:" + std::to_string(iCapture) + ",Headset Status:" + std::to_string(iHeadset));
}

// The Senary driver's settings lie below one of the instances of the audio device class: the first that has the value.
bool CAudioMonitor::FindExternalMIC()
{
    const std::vector<std::string> vecKeyName = CAudioREG::RegEnumKeyName(AUDIO_MEDIA_CLASS_PATH);
    if (vecKeyName.empty())
    {
        AUDIOLOG_WARN(std::string("Not exist sub Key in ") + AUDIO_MEDIA_CLASS_PATH);
        return false;
    }
    for (const std::string& strKeyName : vecKeyName)
    {
        const std::string strPath =
            std::string(AUDIO_MEDIA_CLASS_PATH) + "\\" + strKeyName + "\\" + AUDIO_OEM_SETTINGS_KEY;
        if (CAudioREG::RegKeyExists(strPath + "\\" + SENARY_EXTERNAL_MIC))
        {
            m_strExternalMICPath = strPath;
            return true;
        }
    }
    return false;
}

// The value's first byte tells; 0x0A is a microphone.
void CAudioMonitor::RefreshExternalMICStatus()
{
    std::string strExternalMICValue;
    if (AUDIO_CHECK(CAudioREG::ReadRegBinary(m_strExternalMICPath, SENARY_EXTERNAL_MIC, strExternalMICValue)) != 0)
        return;
    const std::string strFirstByte = strExternalMICValue.substr(0, 2);
    AUDIOLOG_DEBUG("External MIC Binary value:" + strFirstByte);
    m_oStatus.m_iExternalMICStatus = CAudioSTR::ToUpper(strFirstByte) == "0A" ? 1 : 0;
}
