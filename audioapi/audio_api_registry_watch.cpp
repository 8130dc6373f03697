// Watches of registry subtrees, and the registration of a processing object's class.
#include "audioapi/audio_api_registry.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_worker_event.h"

#include <baseaudioprocessingobject.h>

#include <utility>

namespace
{
constexpr DWORD dwFilter =
    REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_ATTRIBUTES | REG_NOTIFY_CHANGE_LAST_SET | REG_NOTIFY_CHANGE_SECURITY;

struct ClassPaths
{
    std::string strClass;
    std::string strServer;
};

ClassPaths MakeClassPaths(REFCLSID stGuid)
{
    const std::string strClass = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\" + CAudioSTR::GuidToString(stGuid);
    return {strClass, strClass + "\\InprocServer32"};
}

// Writes the key's default value, into a new key if need be.
void WriteDefaultValue(const std::string& strPath, const std::string& strValue)
{
    if (!CAudioREG::RegPathExists(strPath))
        CAudioREG::CreateRegKey(strPath);
    CAudioREG::WriteRegValue(strPath, "", strValue);
}
} // namespace

DWORD CAudioREG::OpenRegWatch(const std::string& strPath, HKEY& hKey, HANDLE& pEventHandle)
{
    DWORD dwResult = OpenRegKey(strPath, KEY_NOTIFY, hKey);
    if (dwResult == 0)
    {
        if (pEventHandle == nullptr)
            pEventHandle = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        if (AUDIO_MISSING(pEventHandle, 6))
            dwResult = 6;
        else
            dwResult =
                static_cast<DWORD>(AUDIO_CHECK(RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, pEventHandle, TRUE)));
    }
    if (dwResult != 0)
        AUDIOLOG_ERROR(dwResult, "Fail to Regist Notify Change KeyPath:" + strPath);
    else
        AUDIOLOG_INFO("Success to Regist Notify Change KeyPath:" + strPath);
    return dwResult;
}

DWORD CAudioREG::RegNotifyStart(const std::string& strPath, HKEY& hKey, HANDLE& pEventHandle)
{
    const DWORD dwResult = OpenRegWatch(strPath, hKey, pEventHandle);
    if (dwResult != 0)
        RegNotifyClose(hKey, pEventHandle);
    return dwResult;
}

DWORD CAudioREG::RegNotifyStart(const std::string& strPath, HKEY& hKey, CAudioWorkerEvent& hEvent)
{
    HANDLE hHandle = hEvent;
    const bool bNewEvent = hHandle == nullptr;
    const DWORD dwResult = OpenRegWatch(strPath, hKey, hHandle);
    if (bNewEvent && hHandle != nullptr)
        hEvent.Publish(hHandle);
    if (dwResult != 0 && hKey != nullptr)
        RegCloseKey(std::exchange(hKey, nullptr));
    return dwResult;
}

void CAudioREG::RegNotifyReset(HKEY hKey, HANDLE hEvent)
{
    if (AUDIO_MISSING(hKey, 6) || AUDIO_MISSING(hEvent, 6))
        return;
    ResetEvent(hEvent);
    AUDIO_CHECK(RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, hEvent, TRUE));
}

void CAudioREG::RegNotifyClose(HKEY& hKey, HANDLE& hEvent)
{
    if (hEvent != nullptr)
        CloseHandle(std::exchange(hEvent, nullptr));
    if (hKey != nullptr)
        RegCloseKey(std::exchange(hKey, nullptr));
}

HRESULT CAudioREG::RegisterAudioAPO(const APO_REG_PROPERTIES* pAPOReg, const std::string& strClassName,
                                    const std::string& strModuleName)
{
    if (AUDIO_MISSING(pAPOReg, 13))
        return 13;
    const HRESULT hrResult = RegisterAPO(pAPOReg);
    if (FAILED(hrResult))
    {
        UnregisterAPO(pAPOReg->clsid);
        return hrResult;
    }
    const ClassPaths oPaths = MakeClassPaths(pAPOReg->clsid);
    WriteDefaultValue(oPaths.strClass, strClassName);
    WriteDefaultValue(oPaths.strServer, strModuleName);
    WriteRegValue(oPaths.strServer, "ThreadingMode", std::string("Both"));
    return hrResult;
}

HRESULT CAudioREG::UnregisterAudioAPO(REFCLSID sApoGUID)
{
    const ClassPaths oPaths = MakeClassPaths(sApoGUID);
    if (RegPathExists(oPaths.strServer))
        DeleteRegKey(oPaths.strServer);
    if (RegPathExists(oPaths.strClass))
        DeleteRegKey(oPaths.strClass);
    return AUDIO_CHECK(UnregisterAPO(sApoGUID));
}
