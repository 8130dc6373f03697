// How a worker follows a registry key: its event, and the start of its watch.
#include "audioapi/audio_api_key_watch.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

bool CAudioKeyWatch::MakeEvent(const AudioLogSite& oSite, const char* pEventText) noexcept
{
    return !AudioCheckCondition(!m_hEvent.Create(), oSite, AUDIO_NO_HANDLE, pEventText);
}

bool CAudioKeyWatch::Start(const char* pPath, const AudioLogSite& oSite, const char* pStartText) noexcept
try
{
    const DWORD dwResult = CAudioREG::RegNotifyStart(pPath, m_hKey, m_hEvent);
    if (dwResult != 0 && pStartText != nullptr)
        AudioLogFailure(oSite, dwResult, pStartText);
    return dwResult == 0;
}
catch (const std::exception&)
{
    return false; // without memory the worker ends, as it does without its key
}
