// The state that the library reports, word by word: written by Apply, read by any thread.
#pragma once

#include "protection/dsp/protector.h"

#include <atomic>

class CKelvaneStateWords
{
public:
    // In the state's unit; what is beyond 16 bits stops at their ends.
    void Set(KelvaneState eState, int iChannel, double f64Value);
    // Writes all of them into a record.
    void Put(KelvaneStruParam& oStruParam) const;

    // Of a channel that the stages protect, or whose heat they reckon; its gains while bRuns.
    void SetSpeaker(const Protector& oProtector, int iChannel, bool bRuns);
    void SetGains(int iChannel, double f64Gain);

private:
    std::atomic<int16_t> m_sWords[KELVANE_STATE_COUNT][KELVANE_MAX_CHANNELS] = {};
};
