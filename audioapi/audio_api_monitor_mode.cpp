// What the audio control software publishes: modes, bypass switches, default endpoints.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"

namespace
{
// StoreNumber with a switch below AUDIO_BYPASS_PATH that may be missing, which costs no ERROR line.
void RefreshOptionalSwitch(const AudioLogSite& oSite, CAudioInt& iField, const char* pName, const char* pLabel)
{
    DWORD dwValue = 0;
    if (CAudioREG::RegKeyExists(std::string(AUDIO_BYPASS_PATH) + "\\" + pName) &&
        CAudioREG::ReadRegValue(AUDIO_BYPASS_PATH, pName, dwValue) == 0)
        StoreNumber(oSite, iField, dwValue, pLabel);
}
} // namespace

// The text "0" as a side's time turns that side's mode off.
void CAudioMonitor::RefreshAPPMode()
{
    std::string strValue;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_MODE_PATH, APO_SMART_MODE, strValue)) != 0)
        return;
    AUDIOLOG_INFO("APO mode change to " + strValue);
    const int iAudioMode = CAudioSTR::ToInt(CAudioSTR::GetKeyValue(strValue, AUDIO_MODE_NAME, ","));
    const std::string strPreTime = CAudioSTR::GetKeyValue(strValue, APO_PRE_TIME, ",");
    const std::string strPostTime = CAudioSTR::GetKeyValue(strValue, APO_POST_TIME, ",");

    DWORD dwMultiRenderValue = 0;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(AUDIO_MODE_PATH, APO_MULTI_RENDER, dwMultiRenderValue)) != 0)
        return;
    StoreNumber(AUDIO_LOG_SITE, m_oStatus.m_iMultiRender, dwMultiRenderValue, "multiRender: ");

    const int iCaptureMode = strPreTime == "0" ? 0 : iAudioMode;
    const int iRenderMode = strPostTime == "0" ? 2 : iAudioMode;
    m_oStatus.m_iCaptureMode = iCaptureMode;
    m_oStatus.m_iRenderMode = iRenderMode;
    AUDIOLOG_INFO("APO mode CaptureMode:" + std::to_string(iCaptureMode) +
                  ",RenderMode:" + std::to_string(iRenderMode));
}

void CAudioMonitor::RefreshBypassStatus()
{
    DWORD dwValue = 0;
    if (CAudioREG::ReadRegValue(AUDIO_BYPASS_PATH, AUDIO_KELVANE_STATUS, dwValue) == 0)
        StoreNumber(AUDIO_LOG_SITE, m_oStatus.m_iKelvaneBypass, dwValue, "Kelvane Bypass Status ");
    RefreshOptionalSwitch(AUDIO_LOG_SITE, m_oStatus.m_iLyranaBypass, LYRANA_STATUS, "Lyrana Bypass Status ");
    RefreshOptionalSwitch(AUDIO_LOG_SITE, m_oStatus.m_iVQEBypass, AUDIO_VQE_STATUS, "VQE Bypass Status ");
}

void CAudioMonitor::RefreshDeviceCLSID()
{
    std::string strCaptureValue;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(DEVICE_CLSID_PATH, AUDIO_CAPTURE_CLSID, strCaptureValue)) != 0)
        return;
    m_oStatus.m_strCaptureCLSID.Store(AUDIO_LOG_SITE, strCaptureValue, "Default Capture Endpoint CLSID ");

    std::string strRenderValue;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(DEVICE_CLSID_PATH, AUDIO_RENDER_CLSID, strRenderValue)) != 0)
        return;
    m_oStatus.m_strRenderCLSID.Store(AUDIO_LOG_SITE, strRenderValue, "Default Render Endpoint CLSID ");
}
