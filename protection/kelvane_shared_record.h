// The parameter record that the instance's threads share without a lock: whole to whoever reads it, never a wait for
// Apply.
#pragma once

#include "apo/kelvane/apo_kelvane_records.h"

#include <atomic>

// A sequence counter guards the words: odd while a writer is at work, changed when one has been. Every access is
// atomic, so a torn read is seen and dropped, not undefined. Lives in memory that is freed without a destructor.
class CKelvaneSharedRecord
{
public:
    // Any thread; writers take turns, readers never hold them up.
    void Store(const KelvaneStruParam& oStruParam);

    // One attempt at a whole record. Any thread. FALSE if a writer came between.
    bool TryLoad(KelvaneStruParam& oStruParam) const;

    // One attempt at what a frame needs: whether the set processes at all, and each channel's linear gain.
    bool TryLoadGains(bool& bActive, float (&pGain)[KELVANE_MAX_CHANNELS]) const;

private:
    static constexpr size_t WORD_COUNT = sizeof(KelvaneStruParam) / sizeof(int16_t);

    int16_t Word(size_t iOffset) const { return m_sWords[iOffset / sizeof(int16_t)].load(std::memory_order_acquire); }
    bool IsUnchanged(uint32_t uSequence) const
    {
        return uSequence % 2 == 0 && m_uSequence.load(std::memory_order_relaxed) == uSequence;
    }

    std::atomic<uint32_t> m_uSequence{0};
    std::atomic<int16_t> m_sWords[WORD_COUNT] = {};
};
