// The watchers: one table says what each follows, one loop follows it.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_key_watch.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <exception>

struct CAudioMonitor::WatcherRow
{
    WatcherIndex iIndex;
    PTP_WORK_CALLBACK pfnWorker;
    const char* pPath;      // null: m_strExternalMICPath, which pfnPrepare finds
    const char* pEventText; // for the log, when there is no event
    const char* pStartText; // likewise, when there is no watch; null: the registry layer's line is enough
    void (CAudioMonitor::*pfnRefresh)();
    // Run before the event is made, and between event and watch; null: nothing to do. False ends the worker.
    bool (CAudioMonitor::*pfnPrepare)();
    bool (CAudioMonitor::*pfnIsNeeded)();
};

// By watcher number.
constexpr CAudioMonitor::WatcherRow CAudioMonitor::WATCHER_TABLE[MONITOR_COUNT] = {
    {APP_MODE, ProcessAPPModeWorkerThread, AUDIO_MODE_PATH, "pThis->m_hModeEvent",
     "CAudioREG::RegNotifyStart(AUDIO_MODE_PATH, hKey, pThis->m_hModeEvent)", &CAudioMonitor::RefreshAPPMode, nullptr,
     nullptr},
    {REALTEK_HEADSET, ProcessRealtekHeadSetWorkerThread, AUDIO_REALTEK_HEADSET_PATH, "pThis->m_hRtkEvent", nullptr,
     &CAudioMonitor::RefreshRealtekHeadSetStatus, nullptr, nullptr},
    {SPEAKER_VOLUME, ProcessSpeakerVolumeWorkerThread, AUDIO_SPEAKER_VOLUME_PATH, "pThis->m_hSPKVolEvent",
     "CAudioREG::RegNotifyStart(AUDIO_SPEAKER_VOLUME_PATH, hKey, pThis->m_hSPKVolEvent)",
     &CAudioMonitor::RefreshSpeakerVolum, nullptr, nullptr},
    {REGISTRY_BYPASS, ProcessRegistryBypassWorkerThread, AUDIO_BYPASS_PATH, "pThis->m_hBypassEvent", nullptr,
     &CAudioMonitor::RefreshBypassStatus, nullptr, nullptr},
    {DEVICE_CLSID, ProcessDeviceCLSIDWorkerThread, DEVICE_CLSID_PATH, "pThis->m_hCLSIDEvent",
     "CAudioREG::RegNotifyStart(DEVICE_CLSID_PATH, hKey, pThis->m_hCLSIDEvent)", &CAudioMonitor::RefreshDeviceCLSID,
     nullptr, nullptr},
    {HEADSET_TYPE, ProcessHeadSetTypeWorkerThread, LYRANA_HEADSET_TYPE_PATH, "pThis->m_hHeadSetTypeEvent",
     "CAudioREG::RegNotifyStart(LYRANA_HEADSET_TYPE_PATH, hKey, pThis->m_hHeadSetTypeEvent)",
     &CAudioMonitor::RefreshHeadSetType, nullptr, nullptr},
    {HEADSET_MODE, ProcessHeadSetModeWorkerThread, LYRANA_HEADSET_MODE_PATH, "pThis->m_hHeadSetModeEvent",
     "CAudioREG::RegNotifyStart(LYRANA_HEADSET_MODE_PATH, hKey, pThis->m_hHeadSetModeEvent)",
     &CAudioMonitor::RefreshHeadSetMode, nullptr, nullptr},
    {LYRANA_MODE, ProcessLyranaModeWorkerThread, LYRANA_MODE_PATH, "pThis->m_hLyranaModeEvent",
     "CAudioREG::RegNotifyStart(LYRANA_MODE_PATH, hKey, pThis->m_hLyranaModeEvent)", &CAudioMonitor::RefreshLyranaMode,
     nullptr, nullptr},
    {AUDIO_HEADSET, ProcessAudioHeadSetWorkerThread, AUDIO_HEADSET_PATH, "pThis->m_hHeadSetEvent",
     "CAudioREG::RegNotifyStart(AUDIO_HEADSET_PATH, hKey, pThis->m_hHeadSetEvent)",
     &CAudioMonitor::RefreshAudioHeadSetStatus, nullptr, &CAudioMonitor::IsAudioHeadSetNeeded},
    {SILENT_SPACE, ProcessSilentSpaceWorkerThread, VQE_SILENT_SPACE_PATH, "pThis->m_hSilentSpaceEvent",
     "CAudioREG::RegNotifyStart(VQE_SILENT_SPACE_PATH, hKey, pThis->m_hSilentSpaceEvent)",
     &CAudioMonitor::RefreshSilentSpace, nullptr, nullptr},
    {MICROPHONE_VOLUME, ProcessMicrophoneVolumeWorkerThread, AUDIO_MICROPHONE_VOLUME_PATH, "pThis->m_hMICVolEvent",
     "CAudioREG::RegNotifyStart(AUDIO_MICROPHONE_VOLUME_PATH, hKey, pThis->m_hMICVolEvent)",
     &CAudioMonitor::RefreshMicrophoneVolum, nullptr, nullptr},
    {EXTERNAL_MIC, ProcessExternalMICWorkerThread, nullptr, "pThis->m_hExternalMICEvent", nullptr,
     &CAudioMonitor::RefreshExternalMICStatus, &CAudioMonitor::FindExternalMIC, nullptr},
    {ZV_SOUND, ProcessZVSoundWorkerThread, AUDIO_ZVSOUND_PATH, "pThis->m_hZVSoundEvent",
     "CAudioREG::RegNotifyStart(AUDIO_ZVSOUND_PATH, hKey, pThis->m_hZVSoundEvent)", &CAudioMonitor::RefreshZvSound,
     &CAudioMonitor::LoadZvSound, nullptr},
    {ZV_SMART_AUDIO, ProcessZvSmartAudioWorkerThread, ZV_SMART_AUDIO_MODE_LOCAL_PATH, "pThis->m_hZvSmartAudioModeEvent",
     "CAudioREG::RegNotifyStart(ZV_SMART_AUDIO_MODE_LOCAL_PATH, hKey, pThis->m_hZvSmartAudioModeEvent)",
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
    static_assert(IsTableInOrder(std::make_integer_sequence<int, MONITOR_COUNT>()));
    if (iIndex < 0 || iIndex >= MONITOR_COUNT || m_oWatchers[iIndex].pWork != nullptr)
        return;
    WatcherState& oState = m_oWatchers[iIndex];
    m_oFirstRead.Add();
    oState.pWork = CreateMonitorThread(WATCHER_TABLE[iIndex].pfnWorker, this, &oState.iRun);
    if (oState.pWork == nullptr)
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
    constexpr auto fnEachStands = []
    {
        unsigned uStanding = 0; // a bit each
        for (const WatcherIndex i : STOP_ORDER)
            uStanding |= 1U << i;
        return uStanding == (1U << MONITOR_COUNT) - 1;
    };
    static_assert(fnEachStands(), "one that isn't stopped would run on without its monitor");
    for (const WatcherIndex i : STOP_ORDER)
        StopMonitorThread(&m_oWatchers[i].iRun, m_oWatchers[i].hEvent, m_oWatchers[i].pWork);
}

void CAudioMonitor::ProcessWatcherThread(CAudioMonitor* pThis, WatcherIndex iIndex) noexcept
{
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER))
        return;
    const WatcherRow& oRow = WATCHER_TABLE[iIndex];
    WatcherState& oState = pThis->m_oWatchers[iIndex];
    const auto fnRefresh = [&] { (pThis->*oRow.pfnRefresh)(); };
    CAudioKeyWatch oWatch(oState.hEvent);
    const bool bWatched = pThis->StartWatch(oRow, oWatch);
    if (bWatched)
        CAudioKeyWatch::ReadValues(fnRefresh);
    pThis->m_oFirstRead.Done();
    if (bWatched)
        oWatch.Follow(oState.iRun, fnRefresh);
}

// False when this watcher has nothing to follow.
bool CAudioMonitor::StartWatch(const WatcherRow& oRow, CAudioKeyWatch& oWatch) noexcept
try
{
    if (oRow.pfnPrepare != nullptr && !(this->*oRow.pfnPrepare)())
        return false;
    if (!oWatch.MakeEvent(AUDIO_LOG_SITE, oRow.pEventText))
        return false;
    if (oRow.pfnIsNeeded != nullptr && !(this->*oRow.pfnIsNeeded)())
        return false;
    const char* const pPath = oRow.pPath != nullptr ? oRow.pPath : m_strExternalMICPath.c_str();
    return oWatch.Start(pPath, AUDIO_LOG_SITE, oRow.pStartText);
}
catch (const std::exception&)
{
    return false; // no exception leaves a worker; without memory at its start the watcher ends
}
