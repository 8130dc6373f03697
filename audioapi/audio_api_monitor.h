// The monitor: mirrors system state into a record that the stream polls, and starts and stops every worker of the
// module.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_singleton.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <memory>
#include <string>

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
    std::string m_strExternalMICPath;
};

class CAudioMonitor : public CAudioSingleton<CAudioMonitor>
{
public:
    // Starts a worker: one long callback on the process's default pool. Sets *piRunFlag to 1; the worker leaves its
    // callback when the flag is 0. pfnWorker uses pContext only, which outlives the worker. Null, with the flag back at
    // 0, when the pool gives no work. The owner keeps the work object.
    static PTP_WORK CreateMonitorThread(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, CAudioFlag* piRunFlag);

    // Ends a worker and waits until it has left its callback, then closes its work object and event. An event or work
    // that was never made is passed over.
    static void StopMonitorThread(CAudioFlag* piRunFlag, CAudioWorkerEvent& hEvent, PTP_WORK& pWork);

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
    ~CAudioMonitor() = default;

    CAudioStatus m_oStatus;
};
