// The status record: what the monitor knows of the system, and how a refresh stores it.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_lock.h"

#include <windows.h>

#include <string>

struct AudioLogSite;

// An endpoint's id, a text that its watcher writes and any thread reads.
class CAudioEndpointText
{
public:
    std::string Copy() const;
    // Stores a new text with a line of the place oSite, passes over an equal one. The watcher.
    void Store(const AudioLogSite& oSite, const std::string& strValue, const char* pLabel);

private:
    mutable CAudioLock m_oLock; // guards the text
    std::string m_strText;
};

// What is known of the system. One watcher writes each field, any thread reads it; a combination of fields is not
// atomic.
struct CAudioStatus
{
    CAudioInt m_iKelvaneBypass{0};
    CAudioInt m_iLyranaBypass{0};
    CAudioInt m_iVQEBypass{0};
    CAudioEndpointText m_strCaptureCLSID;
    CAudioEndpointText m_strRenderCLSID;
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

// The refreshes' stores log at their callers' site. Logs old and new value, equal ones too, and stores the new one.
void StoreNumber(const AudioLogSite& oSite, CAudioInt& iField, DWORD dwValue, const char* pLabel);
// Stores a new value with a line, passes over an equal one.
void StoreChange(const AudioLogSite& oSite, CAudioInt& iField, DWORD dwValue, const char* pLabel);
