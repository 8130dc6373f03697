// The monitor: mirrors system state into a record that the stream polls, and is the way in to the start and stop of the
// module's workers.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_latch.h"
#include "audioapi/audio_api_singleton.h"
#include "audioapi/audio_api_status.h"
#include "audioapi/audio_api_worker.h"

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

class CAudioKeyWatch;

class CAudioMonitor : public CAudioSingleton<CAudioMonitor>
{
public:
    static constexpr int MONITOR_COUNT = 14;

    // Starts the watcher of each number whose flag isn't 0; flags behind MONITOR_COUNT are ignored. Waits for none of
    // them: the record holds its start values until a watcher's first refresh. Once, on the loading thread.
    void Initialize(const std::vector<INT32>& oList);
    // Starts one watcher; an index of no watcher, or of one that was started before, does nothing. Not from two threads
    // at once.
    void StartMonitor(int iIndex);

    // Returns when each watcher that was started has read its key once or has ended, or after 250 ms, with a WARN line.
    // The record then holds the registry's values. Waits once in the monitor's life: for the thread of a first lock.
    void WaitForFirstRead();

    // Signals the event by which another program follows the processor's status, on machines whose processor isn't an
    // AMD one. Reads the registry: for a stream that is late already. Any thread.
    static void SetGetCPUStatusEvent();

    // The start and the stop of a worker, as CAudioWorker's.
    static PTP_WORK CreateMonitorThread(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, CAudioFlag* piRunFlag)
    {
        return CAudioWorker::Start(pfnWorker, pContext, piRunFlag);
    }
    static void StopMonitorThread(CAudioFlag* piRunFlag, CAudioWorkerEvent& hEvent, PTP_WORK& pWork)
    {
        CAudioWorker::Stop(piRunFlag, hEvent, pWork);
    }

    // One load of a field each, of the texts a copy. Any thread.
    int GetKelvaneBypass() const { return m_oStatus.m_iKelvaneBypass; }
    int GetLyranaBypass() const { return m_oStatus.m_iLyranaBypass; }
    int GetVQEBypass() const { return m_oStatus.m_iVQEBypass; }
    std::string GetCaptureCLSID() const { return m_oStatus.m_strCaptureCLSID.Copy(); }
    std::string GetRenderCLSID() const { return m_oStatus.m_strRenderCLSID.Copy(); }
    int GetCaptureMode() const { return m_oStatus.m_iCaptureMode; }
    int GetRenderMode() const { return m_oStatus.m_iRenderMode; }
    int GetMultiRender() const { return m_oStatus.m_iMultiRender; }
    int GetSpeakerVolume() const { return m_oStatus.m_iSpeakerVolume; }
    float GetSpeakerVolumeDB() const { return m_oStatus.m_fSpeakerVolumeDB; }
    int GetSpeakerMute() const { return m_oStatus.m_iSpeakerMute; }
    int GetMicrophoneVolume() const { return m_oStatus.m_iMicrophoneVolume; }
    float GetMicrophoneVolumeDB() const { return m_oStatus.m_fMicrophoneVolumeDB; }
    int GetMicrophoneMute() const { return m_oStatus.m_iMicrophoneMute; }
    int GetExternalMICStatus() const { return m_oStatus.m_iExternalMICStatus; }
    int GetHeadSetRender() const { return m_oStatus.m_iHeadSetRender; }
    int GetHeadSetCapture() const { return m_oStatus.m_iHeadSetCapture; }
    int GetHeadSetStatus() const { return m_oStatus.m_iHeadSetStatus; }
    int GetHeadSetType() const { return m_oStatus.m_iHeadSetType; }
    int GetHeadSetMode() const { return m_oStatus.m_iHeadSetMode; }
    int GetSpeakerMode() const { return m_oStatus.m_iSpeakerMode; }
    int GetHeadphoneMode() const { return m_oStatus.m_iHeadphoneMode; }
    int GetMicrophoneMode() const { return m_oStatus.m_iMicrophoneMode; }
    int GetLastMicrophoneMode() const { return m_oStatus.m_iLastMicrophoneMode; }
    int GetShareVoiceStatus() const { return m_oStatus.m_iShareVoiceStatus; }
    int GetZvSoundStatus() const { return m_oStatus.m_iZvSoundStatus; }
    int GetLyranaMode() const { return m_oStatus.m_iLyranaMode; }
    int GetSilentSpace() const { return m_oStatus.m_iSilentSpace; }
    int GetZvSmartAudioMode() const { return m_oStatus.m_iZvSmartAudioMode; }

    // The record for those who write it: the watchers, and tests in their place.
    CAudioStatus& StatusRecord() { return m_oStatus; }

private:
    friend class CAudioSingleton<CAudioMonitor>;
    CAudioMonitor() = default;
    // Stops the watchers.
    ~CAudioMonitor();

    // The watchers' numbers: places in the list that starts them.
    enum WatcherIndex : int
    {
        APP_MODE,
        REALTEK_HEADSET,
        SPEAKER_VOLUME,
        REGISTRY_BYPASS,
        DEVICE_CLSID,
        HEADSET_TYPE,
        HEADSET_MODE,
        LYRANA_MODE,
        AUDIO_HEADSET,
        SILENT_SPACE,
        MICROPHONE_VOLUME,
        EXTERNAL_MIC,
        ZV_SOUND,
        ZV_SMART_AUDIO,
    };
    static constexpr DWORD FIRST_READ_MS = 250;

    struct WatcherRow;
    static const WatcherRow WATCHER_TABLE[MONITOR_COUNT];
    template <int... iRow> static constexpr bool IsTableInOrder(std::integer_sequence<int, iRow...>);

    // What a watcher owns while it works.
    struct WatcherState
    {
        CAudioWorkerEvent hEvent;
        PTP_WORK pWork = nullptr;
        CAudioFlag iRun{0};
    };

    // The workers: each follows one registry key until it is stopped. pContext is the monitor.
    template <WatcherIndex iIndex> static void CALLBACK ProcessWatcher(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
    {
        ProcessWatcherThread(static_cast<CAudioMonitor*>(pContext), iIndex);
    }
    static constexpr PTP_WORK_CALLBACK ProcessAPPModeWorkerThread = ProcessWatcher<APP_MODE>;
    static constexpr PTP_WORK_CALLBACK ProcessRealtekHeadSetWorkerThread = ProcessWatcher<REALTEK_HEADSET>;
    static constexpr PTP_WORK_CALLBACK ProcessSpeakerVolumeWorkerThread = ProcessWatcher<SPEAKER_VOLUME>;
    static constexpr PTP_WORK_CALLBACK ProcessRegistryBypassWorkerThread = ProcessWatcher<REGISTRY_BYPASS>;
    static constexpr PTP_WORK_CALLBACK ProcessDeviceCLSIDWorkerThread = ProcessWatcher<DEVICE_CLSID>;
    static constexpr PTP_WORK_CALLBACK ProcessHeadSetTypeWorkerThread = ProcessWatcher<HEADSET_TYPE>;
    static constexpr PTP_WORK_CALLBACK ProcessHeadSetModeWorkerThread = ProcessWatcher<HEADSET_MODE>;
    static constexpr PTP_WORK_CALLBACK ProcessLyranaModeWorkerThread = ProcessWatcher<LYRANA_MODE>;
    static constexpr PTP_WORK_CALLBACK ProcessAudioHeadSetWorkerThread = ProcessWatcher<AUDIO_HEADSET>;
    static constexpr PTP_WORK_CALLBACK ProcessSilentSpaceWorkerThread = ProcessWatcher<SILENT_SPACE>;
    static constexpr PTP_WORK_CALLBACK ProcessMicrophoneVolumeWorkerThread = ProcessWatcher<MICROPHONE_VOLUME>;
    static constexpr PTP_WORK_CALLBACK ProcessExternalMICWorkerThread = ProcessWatcher<EXTERNAL_MIC>;
    static constexpr PTP_WORK_CALLBACK ProcessZVSoundWorkerThread = ProcessWatcher<ZV_SOUND>;
    static constexpr PTP_WORK_CALLBACK ProcessZvSmartAudioWorkerThread = ProcessWatcher<ZV_SMART_AUDIO>;
    static void ProcessWatcherThread(CAudioMonitor* pThis, WatcherIndex iIndex) noexcept;
    bool StartWatch(const WatcherRow& oRow, CAudioKeyWatch& oWatch) noexcept;

    // What watchers do before they watch: false ends the watcher.
    bool LoadZvSound();
    bool IsAudioHeadSetNeeded();
    bool FindExternalMIC();

    // Read a watcher's values into the record. A value that can't be read is logged.
    void RefreshAPPMode();
    void RefreshRealtekHeadSetStatus();
    void RefreshSpeakerVolum();
    void RefreshBypassStatus();
    void RefreshDeviceCLSID();
    void RefreshHeadSetType();
    void RefreshHeadSetMode();
    void RefreshLyranaMode();
    void RefreshAudioHeadSetStatus();
    void RefreshSilentSpace();
    void RefreshMicrophoneVolum();
    void RefreshExternalMICStatus();
    void RefreshZvSound();
    void RefreshZvSmartAudioMode();

    CAudioStatus m_oStatus;
    CAudioLatch m_oFirstRead;                // the watchers that haven't read yet
    CAudioFlag m_iFirstReadOver{0};          // a lock has waited for them
    std::string m_strExternalMICPath;        // found by its watcher, which alone reads it
    WatcherState m_oWatchers[MONITOR_COUNT]; // by watcher number, as the table
};
