// What a stream is at this moment: its format, the lengths that its audio is cut into, how it is driven.
#pragma once

#include "audioapi/audio_api_atomic.h"

#include <windows.h>

inline constexpr int AUDIO_PROCESS_COUNT_MAX =
    500; // the callback counter's last value, which carries the periodic lines
inline constexpr int AUDIO_KELVANE_SAMPLE_RATE = 48000; // Hz, what the algorithm takes

// The engine's record, which its sides read. The processing thread writes it, or a lock before the stream runs.
struct CBaseStream
{
    // Whether the threshold checks tell a queue's size.
    bool IsSizeLineDue() const { return m_iProcessCount == AUDIO_PROCESS_COUNT_MAX || m_bInlineMode == 1; }

    GUID m_oAudioModeGUID = {};
    CAudioInt m_iSampleRate = 0; // Hz
    CAudioInt m_iInChannelCount = 0;
    CAudioInt m_iOutChannelCount = 0;
    CAudioInt m_iAudioMode = 0;
    int m_iProcessCount = 0; // callbacks, 0 to AUDIO_PROCESS_COUNT_MAX
    int m_iStandardFrameLen = 480;
    int m_iOutputBlockLen = 480;       // sample frames at 48 kHz that output shaping takes at a time
    CAudioInt m_iSystemFrameLen = 480; // the callback writes it
    CAudioFlag m_bInlineMode = 0;      // 1: the algorithm runs on the caller's thread
    int m_iStreamChannelCount = 0;     // of the stream that the next start is for; 0: not known
};

// Sample frames of 10 ms; halves away from zero, so 221 at 22050 Hz.
int PerSampleFrameLen(int iSampleRate);

// Floats of a system frame. 0 for one longer than any buffer, so that lengths can be added and converted in 32 bits.
int SystemDataLen(int iChannel, UINT32 ulFrameCount);
