// How a refresh stores what it has read: with a line about old and new.
#include "audioapi/audio_api_status.h"

#include "audioapi/audio_api_log.h"

#include <mutex>

std::string CAudioEndpointText::Copy() const
{
    const std::lock_guard<CAudioLock> oGuard(m_oLock);
    return m_strText;
}

void CAudioEndpointText::Store(const AudioLogSite& oSite, const std::string& strValue, const char* pLabel)
{
    if (m_strText == strValue)
        return;
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_INFO, 0, pLabel + m_strText + " change to " + strValue);
    const std::lock_guard<CAudioLock> oGuard(m_oLock);
    m_strText = strValue;
}

void StoreNumber(const AudioLogSite& oSite, CAudioInt& iField, DWORD dwValue, const char* pLabel)
{
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_INFO, 0,
                 pLabel + std::to_string(static_cast<DWORD>(iField)) + " change to " + std::to_string(dwValue));
    iField = static_cast<int>(dwValue);
}

void StoreChange(const AudioLogSite& oSite, CAudioInt& iField, DWORD dwValue, const char* pLabel)
{
    if (static_cast<DWORD>(iField) != dwValue)
        StoreNumber(oSite, iField, dwValue, pLabel);
}
