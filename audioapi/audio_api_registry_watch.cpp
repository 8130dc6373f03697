// Watches of registry subtrees.
#include "audioapi/audio_api_registry.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_worker_event.h"

#include <utility>

namespace
{
constexpr DWORD dwFilter =
    REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_ATTRIBUTES | REG_NOTIFY_CHANGE_LAST_SET | REG_NOTIFY_CHANGE_SECURITY;
} // namespace

DWORD CAudioREG::RegNotifyStart(const std::string& strPath, HKEY& hKey, CAudioWorkerEvent& pEventHandle)
{
    DWORD dwResult = OpenRegKey(strPath, KEY_NOTIFY, hKey);
    if (dwResult == 0)
    {
        if (pEventHandle == nullptr)
            pEventHandle.Create();
        if (AUDIO_MISSING(pEventHandle, AUDIO_NO_HANDLE))
            dwResult = AUDIO_NO_HANDLE;
        else
            dwResult =
                static_cast<DWORD>(AUDIO_CHECK(RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, pEventHandle, TRUE)));
    }
    if (dwResult == 0)
    {
        AUDIOLOG_INFO("Success to Regist Notify Change KeyPath:" + strPath);
        return 0;
    }
    AUDIOLOG_ERROR(dwResult, "Fail to Regist Notify Change KeyPath:" + strPath);
    RegNotifyClose(hKey, pEventHandle);
    return dwResult;
}

void CAudioREG::RegNotifyReset(HKEY hKey, HANDLE hEvent)
{
    if (AUDIO_MISSING(hKey, AUDIO_NO_HANDLE) || AUDIO_MISSING(hEvent, AUDIO_NO_HANDLE))
        return;
    ResetEvent(hEvent);
    AUDIO_CHECK(RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, hEvent, TRUE));
}

void CAudioREG::RegNotifyClose(HKEY& hKey, CAudioWorkerEvent& hEvent)
{
    hEvent.Close();
    if (hKey != nullptr)
        RegCloseKey(std::exchange(hKey, nullptr));
}
