// The watchers: one table says what each follows, one loop follows it.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_worker_loop.h"

#include <algorithm>
#include <exception>
#include <mutex>

struct CAudioMonitor::Watcher
{
    WatcherIndex iIndex;
    PTP_WORK_CALLBACK pfnWorker;
    CAudioWorkerEvent CAudioMonitor::*phEvent;
    const char* pEventName; // for the log
    // Opens the key and arms the watch; 0 or the error code.
    DWORD (*pfnNotifyStart)(CAudioMonitor* pThis, HKEY& hKey);
    const char* pStartText; // for the log; null: the line that the registry layer has for it is enough
    void (CAudioMonitor::*pfnRefresh)();
    // Run before the event is made, and between event and watch; null: nothing to do. False ends the worker.
    bool (CAudioMonitor::*pfnPrepare)();
    bool (CAudioMonitor::*pfnIsNeeded)();
};

// These need the expression's text. The event member with its name; the call that arms the watch, with or without a
// line of its own.
#define WATCHER_EVENT(hEvent) &CAudioMonitor::hEvent, "pThis->" #hEvent
#define LOGGED_START(call) [](CAudioMonitor* pThis, HKEY& hKey) { return call; }, #call
#define PLAIN_START(call) [](CAudioMonitor* pThis, HKEY& hKey) { return call; }, nullptr

// By watcher number.
constexpr CAudioMonitor::Watcher CAudioMonitor::WATCHER_TABLE[MONITOR_COUNT] = {
    {APP_MODE, ProcessAPPModeWorkerThread, WATCHER_EVENT(m_hModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_MODE_PATH, hKey, pThis->m_hModeEvent)),
     &CAudioMonitor::RefreshAPPMode, nullptr, nullptr},
    {REALTEK_HEADSET, ProcessRealtekHeadSetWorkerThread, WATCHER_EVENT(m_hRtkEvent),
     PLAIN_START(CAudioREG::RegNotifyStart(AUDIO_REALTEK_HEADSET_PATH, hKey, pThis->m_hRtkEvent)),
     &CAudioMonitor::RefreshRealtekHeadSetStatus, nullptr, nullptr},
    {SPEAKER_VOLUME, ProcessSpeakerVolumeWorkerThread, WATCHER_EVENT(m_hSPKVolEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_SPEAKER_VOLUME_PATH, hKey, pThis->m_hSPKVolEvent)),
     &CAudioMonitor::RefreshSpeakerVolum, nullptr, nullptr},
    {REGISTRY_BYPASS, ProcessRegistryBypassWorkerThread, WATCHER_EVENT(m_hBypassEvent),
     PLAIN_START(CAudioREG::RegNotifyStart(AUDIO_BYPASS_PATH, hKey, pThis->m_hBypassEvent)),
     &CAudioMonitor::RefreshBypassStatus, nullptr, nullptr},
    {DEVICE_CLSID, ProcessDeviceCLSIDWorkerThread, WATCHER_EVENT(m_hCLSIDEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(DEVICE_CLSID_PATH, hKey, pThis->m_hCLSIDEvent)),
     &CAudioMonitor::RefreshDeviceCLSID, nullptr, nullptr},
    {HEADSET_TYPE, ProcessHeadSetTypeWorkerThread, WATCHER_EVENT(m_hHeadSetTypeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(LYRANA_HEADSET_TYPE_PATH, hKey, pThis->m_hHeadSetTypeEvent)),
     &CAudioMonitor::RefreshHeadSetType, nullptr, nullptr},
    {HEADSET_MODE, ProcessHeadSetModeWorkerThread, WATCHER_EVENT(m_hHeadSetModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(LYRANA_HEADSET_MODE_PATH, hKey, pThis->m_hHeadSetModeEvent)),
     &CAudioMonitor::RefreshHeadSetMode, nullptr, nullptr},
    {LYRANA_MODE, ProcessLyranaModeWorkerThread, WATCHER_EVENT(m_hLyranaModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(LYRANA_MODE_PATH, hKey, pThis->m_hLyranaModeEvent)),
     &CAudioMonitor::RefreshLyranaMode, nullptr, nullptr},
    {AUDIO_HEADSET, ProcessAudioHeadSetWorkerThread, WATCHER_EVENT(m_hHeadSetEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_HEADSET_PATH, hKey, pThis->m_hHeadSetEvent)),
     &CAudioMonitor::RefreshAudioHeadSetStatus, nullptr, &CAudioMonitor::IsAudioHeadSetNeeded},
    {SILENT_SPACE, ProcessSilentSpaceWorkerThread, WATCHER_EVENT(m_hSilentSpaceEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(VQE_SILENT_SPACE_PATH, hKey, pThis->m_hSilentSpaceEvent)),
     &CAudioMonitor::RefreshSilentSpace, nullptr, nullptr},
    {MICROPHONE_VOLUME, ProcessMicrophoneVolumeWorkerThread, WATCHER_EVENT(m_hMICVolEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_MICROPHONE_VOLUME_PATH, hKey, pThis->m_hMICVolEvent)),
     &CAudioMonitor::RefreshMicrophoneVolum, nullptr, nullptr},
    {EXTERNAL_MIC, ProcessExternalMICWorkerThread, WATCHER_EVENT(m_hExternalMICEvent),
     PLAIN_START(CAudioREG::RegNotifyStart(pThis->m_strExternalMICPath, hKey, pThis->m_hExternalMICEvent)),
     &CAudioMonitor::RefreshExternalMICStatus, &CAudioMonitor::FindExternalMIC, nullptr},
    {ZV_SOUND, ProcessZVSoundWorkerThread, WATCHER_EVENT(m_hZVSoundEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_ZVSOUND_PATH, hKey, pThis->m_hZVSoundEvent)),
     &CAudioMonitor::RefreshZvSound, &CAudioMonitor::LoadZvSound, nullptr},
    {ZV_SMART_AUDIO, ProcessZvSmartAudioWorkerThread, WATCHER_EVENT(m_hZvSmartAudioModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(ZV_SMART_AUDIO_MODE_LOCAL_PATH, hKey, pThis->m_hZvSmartAudioModeEvent)),
     &CAudioMonitor::RefreshZvSmartAudioMode, nullptr, nullptr},
};

// Each row stands at its number and starts the worker that uses it.
template <int... iRow> constexpr bool CAudioMonitor::IsTableInOrder(std::integer_sequence<int, iRow...>)
{
    return ((WATCHER_TABLE[iRow].iIndex == iRow &&
             WATCHER_TABLE[iRow].pfnWorker == ProcessWatcher<static_cast<WatcherIndex>(iRow)>)&&...);
}

void CAudioMonitor::Initialize(const std::vector<INT32>& oList)
{
    const int iCount = static_cast<int>(std::min<size_t>(oList.size(), MONITOR_COUNT));
    for (int i = 0; i < iCount; ++i)
    {
        if (oList[static_cast<size_t>(i)] != 0)
            StartMonitor(i);
    }
}

void CAudioMonitor::StartMonitor(int iIndex)
{
    if (iIndex < 0 || iIndex >= MONITOR_COUNT || m_pMonitorWork[iIndex] != nullptr)
        return;
    static_assert(IsTableInOrder(std::make_integer_sequence<int, MONITOR_COUNT>()));
    m_oFirstRead.Add();
    m_pMonitorWork[iIndex] = CreateMonitorThread(WATCHER_TABLE[iIndex].pfnWorker, this, &m_iMonitorRun[iIndex]);
    if (m_pMonitorWork[iIndex] == nullptr)
        m_oFirstRead.Done();
}

void CAudioMonitor::WaitForFirstRead()
{
    if (m_iFirstReadOver != 0)
        return;
    if (!m_oFirstRead.Wait(FIRST_READ_MS))
        AUDIOLOG_WARN("Not every watcher has read its key yet!");
    m_iFirstReadOver = 1;
}

CAudioMonitor::~CAudioMonitor()
{
    static constexpr WatcherIndex STOP_ORDER[MONITOR_COUNT] = {
        REGISTRY_BYPASS, APP_MODE,        HEADSET_MODE,  ZV_SOUND,     LYRANA_MODE,  SILENT_SPACE,   ZV_SMART_AUDIO,
        DEVICE_CLSID,    REALTEK_HEADSET, AUDIO_HEADSET, HEADSET_TYPE, EXTERNAL_MIC, SPEAKER_VOLUME, MICROPHONE_VOLUME};
    for (const WatcherIndex i : STOP_ORDER)
        StopMonitorThread(&m_iMonitorRun[i], this->*WATCHER_TABLE[i].phEvent, m_pMonitorWork[i]);
}

void CAudioMonitor::ProcessWatcherThread(CAudioMonitor* pThis, int iIndex) noexcept
{
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER))
        return;
    const Watcher& oWatcher = WATCHER_TABLE[iIndex];
    HKEY hKey = nullptr;
    bool bWatched = false;
    try
    {
        bWatched = pThis->StartWatch(oWatcher, hKey);
    }
    catch (const std::exception&)
    {
        // No exception leaves a worker; without memory at its start the watcher ends, as it does without its key.
    }
    if (bWatched)
        pThis->RefreshRecord(oWatcher);
    pThis->m_oFirstRead.Done();
    if (bWatched)
        pThis->FollowKey(oWatcher, hKey);
    CAudioREG::RegNotifyClose(hKey, pThis->*oWatcher.phEvent);
}

// False when this watcher has nothing to follow.
bool CAudioMonitor::StartWatch(const Watcher& oWatcher, HKEY& hKey)
{
    if (oWatcher.pfnPrepare != nullptr && !(this->*oWatcher.pfnPrepare)())
        return false;
    if (AudioCheckCondition(!(this->*oWatcher.phEvent).Create(), AUDIO_LOG_SITE, AUDIO_NO_HANDLE, oWatcher.pEventName))
        return false;
    if (oWatcher.pfnIsNeeded != nullptr && !(this->*oWatcher.pfnIsNeeded)())
        return false;
    const DWORD dwResult = oWatcher.pfnNotifyStart(this, hKey);
    if (dwResult != 0 && oWatcher.pStartText != nullptr)
        AudioLogFailure(AUDIO_LOG_SITE, dwResult, oWatcher.pStartText);
    return dwResult == 0;
}

// Until the stop. The watch is armed before each reading, the first one too: a change that comes while the values are
// read wakes the watcher again.
void CAudioMonitor::FollowKey(const Watcher& oWatcher, HKEY hKey)
{
    const CAudioWorkerEvent& hEvent = this->*oWatcher.phEvent;
    RunWorkerLoop(m_iMonitorRun[oWatcher.iIndex], hEvent,
                  [&]
                  {
                      CAudioREG::RegNotifyReset(hKey, hEvent);
                      RefreshRecord(oWatcher);
                  });
}

void CAudioMonitor::RefreshRecord(const Watcher& oWatcher) noexcept
{
    try
    {
        (this->*oWatcher.pfnRefresh)();
    }
    catch (const std::exception&)
    {
        // Without memory the record stays as it is until the next change.
    }
}

std::string CAudioMonitor::CopyText(const std::string& strField) const
{
    const std::lock_guard<CAudioLock> oGuard(m_oStatus.m_oCLSIDLock);
    return strField;
}

void CAudioMonitor::StoreNumber(const AudioLogSite& oSite, CAudioInt& iField, DWORD dwValue, const char* pLabel)
{
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_INFO, 0,
                 pLabel + std::to_string(static_cast<DWORD>(iField)) + " change to " + std::to_string(dwValue));
    iField = static_cast<int>(dwValue);
}

void CAudioMonitor::StoreChange(const AudioLogSite& oSite, CAudioInt& iField, DWORD dwValue, const char* pLabel)
{
    if (static_cast<DWORD>(iField) != dwValue)
        StoreNumber(oSite, iField, dwValue, pLabel);
}

// Logs a difference only.
void CAudioMonitor::StoreEndpoint(const AudioLogSite& oSite, std::string& strField, const std::string& strValue,
                                  const char* pLabel)
{
    if (strField == strValue)
        return;
    AUDIO_LOG_AT(oSite, AUDIO_LEVEL_INFO, 0, pLabel + strField + " change to " + strValue);
    const std::lock_guard<CAudioLock> oGuard(m_oStatus.m_oCLSIDLock);
    strField = strValue;
}
