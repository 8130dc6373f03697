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

    // Sets so far.
    uint32_t Count() const { return m_uSetCount.load(std::memory_order_acquire); }

    // One attempt at the whole record of that count. Any thread. FALSE if another set was stored meanwhile.
    bool TryLoad(KelvaneStruParam& oStruParam, uint32_t uSetCount) const;

private:
    static constexpr size_t PART_COUNT = sizeof(KelvaneStruParam) / sizeof(uint64_t);
    static_assert(sizeof(KelvaneStruParam) % sizeof(uint64_t) == 0);
    using Slot = std::atomic<uint64_t>[PART_COUNT];

    std::atomic<bool> m_bWriting{false};
    std::atomic<uint32_t> m_uSetCount{0};
    Slot m_oSlots[2] = {};
};
