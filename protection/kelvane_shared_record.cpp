// The parameter record's two slots.
#include "protection/kelvane_shared_record.h"

#include <cstring>

void CKelvaneSharedRecord::Store(const KelvaneStruParam& oStruParam)
{
    const char* const pBytes = reinterpret_cast<const char*>(&oStruParam);

    while (m_bWriting.exchange(true, std::memory_order_acquire))
    {
    }
    const uint32_t uSetCount = m_uSetCount.load(std::memory_order_relaxed) + 1;
    Slot& oSlot = m_oSlots[uSetCount % 2];
    for (size_t i = 0; i < PART_COUNT; ++i)
    {
        uint64_t u64Part;
        memcpy(&u64Part, pBytes + i * sizeof(u64Part), sizeof(u64Part));
        oSlot[i].store(u64Part, std::memory_order_release);
    }
    m_uSetCount.store(uSetCount, std::memory_order_release);
    m_bWriting.store(false, std::memory_order_release);
}

// A slot is written again only after the other one was published. So a reader that saw one of the new parts, which are
// released and acquired, sees the changed count too.
bool CKelvaneSharedRecord::TryLoad(KelvaneStruParam& oStruParam, uint32_t uSetCount) const
{
    char* const pBytes = reinterpret_cast<char*>(&oStruParam);
    const Slot& oSlot = m_oSlots[uSetCount % 2];
    for (size_t i = 0; i < PART_COUNT; ++i)
    {
        const uint64_t u64Part = oSlot[i].load(std::memory_order_acquire);
        memcpy(pBytes + i * sizeof(u64Part), &u64Part, sizeof(u64Part));
    }
    return m_uSetCount.load(std::memory_order_relaxed) == uSetCount;
}
