// The monitor: mirrors system state into a record that the stream polls, and starts and stops every worker of the
// module.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_singleton.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

// What is known of the system. One watcher writes each number, any thread reads it; a combination of fields is not
// atomic. The strings are read on their own watcher's thread only.
struct CAudioStatus
{
    CAudioInt m_iKelvaneBypass{0};
    CAudioInt m_iLyranaBypass{0};
    CAudioInt m_iVQEBypass{0};
    std::string m_strCaptureCLSID;
    std::string m_strRenderCLSID;
    CAudioInt m_iCaptureMode{0};
    CAudioInt m_iRenderMode{2};
    CAudioInt m_iMultiRender{0};
    CAudioInt m_iSpeakerVolume{0};                 // percent
    CAudioRelaxed<float> m_fSpeakerVolumeDB{0.0f}; // dB
    CAudioInt m_iSpeakerMute{0};
    CAudioInt m_iMicrophoneVolume{0};                 // percent
    CAudioRelaxed<float> m_fMicrophoneVolumeDB{0.0f}; // dB
    CAudioInt m_iMicrophoneMute{0};
    CAudioInt m_iExternalMICStatus{0}; // 0 or 1
    CAudioInt m_iHeadSetRender{0};     // 0 or 1
    CAudioInt m_iHeadSetCapture{0};    // 0 or 1
    CAudioInt m_iHeadSetStatus{0};     // 0 or 1
    CAudioInt m_iHeadSetType{0};
    CAudioInt m_iHeadSetMode{0};
    CAudioInt m_iSpeakerMode{0};
    CAudioInt m_iHeadphoneMode{0};
    CAudioInt m_iMicrophoneMode{0};
    CAudioInt m_iLastMicrophoneMode{0};
    CAudioInt m_iShareVoiceStatus{0};
    CAudioInt m_iZvSoundStatus{0};
    CAudioInt m_iLyranaMode{2};
    CAudioInt m_iSilentSpace{0};
    CAudioInt m_iZvSmartAudioMode{0};
};

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

    // Signals the event by which another program follows the processor's status, on machines whose processor isn't an
    // AMD one. Reads the registry: for a stream that is late already. Any thread.
    static void SetGetCPUStatusEvent();

    // Starts a worker: one long callback on the process's default pool. Sets *piRunFlag to 1; the worker leaves its
    // callback when the flag is 0. pfnWorker uses pContext only, which outlives the worker. Null, with the flag back at
    // 0, when the pool gives no work. The owner keeps the work object.
    static PTP_WORK CreateMonitorThread(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, CAudioFlag* piRunFlag);

    // Ends a worker and waits until it has left its callback, then closes its work object and event. An event or work
    // that was never made is passed over.
    static void StopMonitorThread(CAudioFlag* piRunFlag, CAudioWorkerEvent& hEvent, PTP_WORK& pWork);

    // Waits until a worker has left its callback, closes its work object and clears the pointer. A callback that no
    // thread has begun is taken back: while a module is freed the loader keeps new threads from beginning.
    static void CloseWorker(PTP_WORK& pWork);

    // Says that the process is ending: its other threads are gone, so no stop may wait for a worker. The loader's call.
    static void SetProcessEnding() { m_bProcessEnding = true; }
    static bool IsProcessEnding() { return m_bProcessEnding; }

    // One load of a field each. Any thread.
    int GetKelvaneBypass() const { return m_oStatus.m_iKelvaneBypass; }
    int GetLyranaBypass() const { return m_oStatus.m_iLyranaBypass; }
    int GetVQEBypass() const { return m_oStatus.m_iVQEBypass; }
    const std::string& GetCaptureCLSID() const { return m_oStatus.m_strCaptureCLSID; }
    const std::string& GetRenderCLSID() const { return m_oStatus.m_strRenderCLSID; }
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
    friend std::default_delete<CAudioMonitor>;
    CAudioMonitor() = default;
    // Stops the watchers.
    ~CAudioMonitor();

    struct Watcher;
    static const Watcher WATCHER_TABLE[MONITOR_COUNT];
    inline static bool m_bProcessEnding = false; // set when no other thread is left

    // The workers: each follows one registry key until it is stopped. pContext is the monitor.
    template <int iIndex> static void CALLBACK ProcessWatcher(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
    {
        ProcessWatcherThread(static_cast<CAudioMonitor*>(pContext), iIndex);
    }
    static constexpr PTP_WORK_CALLBACK ProcessAPPModeWorkerThread = ProcessWatcher<0>;
    static constexpr PTP_WORK_CALLBACK ProcessRealtekHeadSetWorkerThread = ProcessWatcher<1>;
    static constexpr PTP_WORK_CALLBACK ProcessSpeakerVolumeWorkerThread = ProcessWatcher<2>;
    static constexpr PTP_WORK_CALLBACK ProcessRegistryBypassWorkerThread = ProcessWatcher<3>;
    static constexpr PTP_WORK_CALLBACK ProcessDeviceCLSIDWorkerThread = ProcessWatcher<4>;
    static constexpr PTP_WORK_CALLBACK ProcessHeadSetTypeWorkerThread = ProcessWatcher<5>;
    static constexpr PTP_WORK_CALLBACK ProcessHeadSetModeWorkerThread = ProcessWatcher<6>;
    static constexpr PTP_WORK_CALLBACK ProcessLyranaModeWorkerThread = ProcessWatcher<7>;
    static constexpr PTP_WORK_CALLBACK ProcessAudioHeadSetWorkerThread = ProcessWatcher<8>;
    static constexpr PTP_WORK_CALLBACK ProcessSilentSpaceWorkerThread = ProcessWatcher<9>;
    static constexpr PTP_WORK_CALLBACK ProcessMicrophoneVolumeWorkerThread = ProcessWatcher<10>;
    static constexpr PTP_WORK_CALLBACK ProcessExternalMICWorkerThread = ProcessWatcher<11>;
    static constexpr PTP_WORK_CALLBACK ProcessZVSoundWorkerThread = ProcessWatcher<12>;
    static constexpr PTP_WORK_CALLBACK ProcessZvSmartAudioWorkerThread = ProcessWatcher<13>;
    static void ProcessWatcherThread(CAudioMonitor* pThis, int iIndex) noexcept;
    bool StartWatch(const Watcher& oWatcher, HKEY& hKey);
    void FollowKey(const Watcher& oWatcher, HKEY hKey, const CAudioFlag& iRunFlag);
    bool IsEventMissing(const Watcher& oWatcher) const;
    void RefreshRecord(const Watcher& oWatcher) noexcept;
    // Logs old and new value, equal ones too, and stores the new one.
    static void StoreNumber(CAudioInt& iField, DWORD dwValue, const char* pLabel);
    // Stores a new value with a line, passes over an equal one.
    static void StoreChange(CAudioInt& iField, DWORD dwValue, const char* pLabel);
    // StoreNumber with a switch below AUDIO_BYPASS_PATH that may be missing, which costs no ERROR line.
    static void RefreshOptionalSwitch(CAudioInt& iField, const char* pName, const char* pLabel);

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
    std::string m_strExternalMICPath; // found by its watcher, which alone reads it

    // Of each watcher: the event, the work, the run flag.
    CAudioWorkerEvent m_hModeEvent;
    CAudioWorkerEvent m_hRtkEvent;
    CAudioWorkerEvent m_hSPKVolEvent;
    CAudioWorkerEvent m_hBypassEvent;
    CAudioWorkerEvent m_hCLSIDEvent;
    CAudioWorkerEvent m_hHeadSetTypeEvent;
    CAudioWorkerEvent m_hHeadSetModeEvent;
    CAudioWorkerEvent m_hLyranaModeEvent;
    CAudioWorkerEvent m_hHeadSetEvent;
    CAudioWorkerEvent m_hSilentSpaceEvent;
    CAudioWorkerEvent m_hMICVolEvent;
    CAudioWorkerEvent m_hExternalMICEvent;
    CAudioWorkerEvent m_hZVSoundEvent;
    CAudioWorkerEvent m_hZvSmartAudioModeEvent;
    PTP_WORK m_pMonitorWork[MONITOR_COUNT] = {};
    CAudioFlag m_iMonitorRun[MONITOR_COUNT];
};
