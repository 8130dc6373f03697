// The parameter record that the instance's threads share without a lock: whole to whoever reads it, never a wait for
// Apply.
#pragma once

#include "protection/kelvane_protection.h"

#include <atomic>

// Two slots and a count of the sets so far, whose low bit names the slot to read; a writer fills the other one. So a
// whole set is always there to read, even while a writer stands still halfway. Every access is atomic. Lives in memory
// that is freed without a destructor.
class CKelvaneSharedRecord
{
public:
    // Any thread; writers take turns, readers never hold them up.
    void Store(const KelvaneStruParam& oStruParam);

    // One attempt at the whole record. Any thread. FALSE if another set was stored meanwhile.
    bool TryLoad(KelvaneStruParam& oStruParam) const;

    // One attempt at what a frame needs: whether the set processes at all, and each channel's linear gain.
    bool TryLoadGains(bool& bActive, float (&pGain)[KELVANE_MAX_CHANNELS]) const;

private:
    static constexpr size_t WORD_COUNT = sizeof(KelvaneStruParam) / sizeof(int16_t);
    using Slot = std::atomic<int16_t>[WORD_COUNT];

    std::atomic<bool> m_bWriting{false};
    std::atomic<uint32_t> m_uSetCount{0};
    Slot m_sSlots[2] = {};
};
