// The watchers: one table says what each follows, one loop follows it.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"

#include <algorithm>
#include <exception>

struct CAudioMonitor::Watcher
{
    PTP_WORK_CALLBACK pfnWorker;
    CAudioWorkerEvent CAudioMonitor::*phEvent;
    const char* pEventName; // for the log
    // Opens the key and arms the watch; 0 or the error code.
    DWORD (*pfnNotifyStart)(CAudioMonitor* pThis, HKEY& hKey);
    void (CAudioMonitor::*pfnRefresh)();
    // Run before the event is made, and between event and watch; null: nothing to do. False ends the worker.
    bool (CAudioMonitor::*pfnPrepare)();
    bool (CAudioMonitor::*pfnIsNeeded)();
};

// These need the expression's text. The event member with its name; the call that arms the watch, logged when it fails
// or left to the line that the registry layer has for it.
#define WATCHER_EVENT(hEvent) &CAudioMonitor::hEvent, "pThis->" #hEvent
#define LOGGED_START(call) [](CAudioMonitor* pThis, HKEY& hKey) { return AUDIO_CHECK(call); }
#define PLAIN_START(call) [](CAudioMonitor* pThis, HKEY& hKey) { return call; }

// By watcher number.
const CAudioMonitor::Watcher CAudioMonitor::WATCHER_TABLE[MONITOR_COUNT] = {
    {ProcessAPPModeWorkerThread, WATCHER_EVENT(m_hModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_MODE_PATH, hKey, pThis->m_hModeEvent)),
     &CAudioMonitor::RefreshAPPMode, nullptr, nullptr},
    {ProcessRealtekHeadSetWorkerThread, WATCHER_EVENT(m_hRtkEvent),
     PLAIN_START(CAudioREG::RegNotifyStart(AUDIO_REALTEK_HEADSET_PATH, hKey, pThis->m_hRtkEvent)),
     &CAudioMonitor::RefreshRealtekHeadSetStatus, nullptr, nullptr},
    {ProcessSpeakerVolumeWorkerThread, WATCHER_EVENT(m_hSPKVolEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_SPEAKER_VOLUME_PATH, hKey, pThis->m_hSPKVolEvent)),
     &CAudioMonitor::RefreshSpeakerVolum, nullptr, nullptr},
    {ProcessRegistryBypassWorkerThread, WATCHER_EVENT(m_hBypassEvent),
     PLAIN_START(CAudioREG::RegNotifyStart(AUDIO_BYPASS_PATH, hKey, pThis->m_hBypassEvent)),
     &CAudioMonitor::RefreshBypassStatus, nullptr, nullptr},
    {ProcessDeviceCLSIDWorkerThread, WATCHER_EVENT(m_hCLSIDEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(DEVICE_CLSID_PATH, hKey, pThis->m_hCLSIDEvent)),
     &CAudioMonitor::RefreshDeviceCLSID, nullptr, nullptr},
    {ProcessHeadSetTypeWorkerThread, WATCHER_EVENT(m_hHeadSetTypeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(LYRANA_HEADSET_TYPE_PATH, hKey, pThis->m_hHeadSetTypeEvent)),
     &CAudioMonitor::RefreshHeadSetType, nullptr, nullptr},
    {ProcessHeadSetModeWorkerThread, WATCHER_EVENT(m_hHeadSetModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(LYRANA_HEADSET_MODE_PATH, hKey, pThis->m_hHeadSetModeEvent)),
     &CAudioMonitor::RefreshHeadSetMode, nullptr, nullptr},
    {ProcessLyranaModeWorkerThread, WATCHER_EVENT(m_hLyranaModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(LYRANA_MODE_PATH, hKey, pThis->m_hLyranaModeEvent)),
     &CAudioMonitor::RefreshLyranaMode, nullptr, nullptr},
    {ProcessAudioHeadSetWorkerThread, WATCHER_EVENT(m_hHeadSetEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_HEADSET_PATH, hKey, pThis->m_hHeadSetEvent)),
     &CAudioMonitor::RefreshAudioHeadSetStatus, nullptr, &CAudioMonitor::IsAudioHeadSetNeeded},
    {ProcessSilentSpaceWorkerThread, WATCHER_EVENT(m_hSilentSpaceEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(VQE_SILENT_SPACE_PATH, hKey, pThis->m_hSilentSpaceEvent)),
     &CAudioMonitor::RefreshSilentSpace, nullptr, nullptr},
    {ProcessMicrophoneVolumeWorkerThread, WATCHER_EVENT(m_hMICVolEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_MICROPHONE_VOLUME_PATH, hKey, pThis->m_hMICVolEvent)),
     &CAudioMonitor::RefreshMicrophoneVolum, nullptr, nullptr},
    {ProcessExternalMICWorkerThread, WATCHER_EVENT(m_hExternalMICEvent),
     PLAIN_START(CAudioREG::RegNotifyStart(pThis->m_strExternalMICPath, hKey, pThis->m_hExternalMICEvent)),
     &CAudioMonitor::RefreshExternalMICStatus, &CAudioMonitor::FindExternalMIC, nullptr},
    {ProcessZVSoundWorkerThread, WATCHER_EVENT(m_hZVSoundEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(AUDIO_ZVSOUND_PATH, hKey, pThis->m_hZVSoundEvent)),
     &CAudioMonitor::RefreshZvSound, &CAudioMonitor::LoadZvSound, nullptr},
    {ProcessZvSmartAudioWorkerThread, WATCHER_EVENT(m_hZvSmartAudioModeEvent),
     LOGGED_START(CAudioREG::RegNotifyStart(ZV_SMART_AUDIO_MODE_LOCAL_PATH, hKey, pThis->m_hZvSmartAudioModeEvent)),
     &CAudioMonitor::RefreshZvSmartAudioMode, nullptr, nullptr},
};

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
    m_pMonitorWork[iIndex] = CreateMonitorThread(WATCHER_TABLE[iIndex].pfnWorker, this, &m_iMonitorRun[iIndex]);
}

CAudioMonitor::~CAudioMonitor()
{
    static constexpr int STOP_ORDER[MONITOR_COUNT] = {3, 0, 6, 12, 7, 9, 13, 4, 1, 8, 5, 11, 2, 10};
    for (const int i : STOP_ORDER)
        StopMonitorThread(&m_iMonitorRun[i], this->*WATCHER_TABLE[i].phEvent, m_pMonitorWork[i]);
}

void CAudioMonitor::ProcessWatcherThread(CAudioMonitor* pThis, int iIndex) noexcept
{
    if (AUDIO_MISSING(pThis, 87))
        return;
    const Watcher& oWatcher = WATCHER_TABLE[iIndex];
    HKEY hKey = nullptr;
    try
    {
        if (pThis->StartWatch(oWatcher, hKey))
            pThis->FollowKey(oWatcher, hKey, pThis->m_iMonitorRun[iIndex]);
    }
    catch (const std::exception&)
    {
        // No exception leaves a worker; without memory at its start the watcher ends, as it does without its key.
    }
    if (hKey != nullptr)
        RegCloseKey(hKey);
}

// False when this watcher has nothing to follow.
bool CAudioMonitor::StartWatch(const Watcher& oWatcher, HKEY& hKey)
{
    if (oWatcher.pfnPrepare != nullptr && !(this->*oWatcher.pfnPrepare)())
        return false;
    (this->*oWatcher.phEvent).Create();
    if (IsEventMissing(oWatcher))
        return false;
    if (oWatcher.pfnIsNeeded != nullptr && !(this->*oWatcher.pfnIsNeeded)())
        return false;
    return oWatcher.pfnNotifyStart(this, hKey) == 0;
}

// Until the stop, which closes the event. The watch is armed before the first refresh, so a change during it isn't
// missed; one between a later refresh and the arming behind it is seen with the next.
void CAudioMonitor::FollowKey(const Watcher& oWatcher, HKEY hKey, const CAudioFlag& iRunFlag)
{
    const CAudioWorkerEvent& hEvent = this->*oWatcher.phEvent;
    RefreshRecord(oWatcher);
    while (iRunFlag == 1)
    {
        if (IsEventMissing(oWatcher))
            return;
        if (WaitForSingleObject(hEvent, INFINITE) != WAIT_OBJECT_0)
        {
            Sleep(1);
            continue;
        }
        if (iRunFlag == 0)
            return;
        RefreshRecord(oWatcher);
        CAudioREG::RegNotifyReset(hKey, hEvent);
    }
}

bool CAudioMonitor::IsEventMissing(const Watcher& oWatcher) const
{
    return AudioCheckCondition(this->*oWatcher.phEvent == nullptr, AUDIO_LOG_SITE, 6, oWatcher.pEventName);
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
