// The parameter record's two slots.
#include "protection/kelvane_shared_record.h"

#include <cstring>

void CKelvaneSharedRecord::Store(const KelvaneStruParam& oStruParam)
{
    int16_t sWords[WORD_COUNT];
    memcpy(sWords, &oStruParam, sizeof(sWords));

    while (m_bWriting.exchange(true, std::memory_order_acquire))
    {
    }
    const uint32_t uSetCount = m_uSetCount.load(std::memory_order_relaxed) + 1;
    Slot& sSlot = m_sSlots[uSetCount % 2];
    for (size_t i = 0; i < WORD_COUNT; ++i)
        sSlot[i].store(sWords[i], std::memory_order_release);
    m_uSetCount.store(uSetCount, std::memory_order_release);
    m_bWriting.store(false, std::memory_order_release);
}

// A slot is written again only after the other one was published. So a reader that saw one of the new words, which are
// released and acquired, sees the changed count too.
bool CKelvaneSharedRecord::TryLoad(KelvaneStruParam& oStruParam) const
{
    int16_t sWords[WORD_COUNT];
    const uint32_t uSetCount = m_uSetCount.load(std::memory_order_acquire);
    const Slot& sSlot = m_sSlots[uSetCount % 2];
    for (size_t i = 0; i < WORD_COUNT; ++i)
        sWords[i] = sSlot[i].load(std::memory_order_acquire);
    memcpy(&oStruParam, sWords, sizeof(sWords));
    return m_uSetCount.load(std::memory_order_relaxed) == uSetCount;
}

bool CKelvaneSharedRecord::TryLoadGains(bool& bActive, float (&pGain)[KELVANE_MAX_CHANNELS]) const
{
    constexpr size_t MODULE_WORD = offsetof(KelvaneStruParam, sFFModule) / sizeof(int16_t);
    constexpr size_t GAIN_WORD = offsetof(KelvaneStruParam, sPOWTargetGain) / sizeof(int16_t);

    const uint32_t uSetCount = m_uSetCount.load(std::memory_order_acquire);
    const Slot& sSlot = m_sSlots[uSetCount % 2];
    bActive = sSlot[MODULE_WORD].load(std::memory_order_acquire) != 0;
    for (size_t i = 0; i < KELVANE_MAX_CHANNELS; ++i)
        pGain[i] = static_cast<float>(sSlot[GAIN_WORD + i].load(std::memory_order_acquire)) / 100.0f;
    return m_uSetCount.load(std::memory_order_relaxed) == uSetCount;
}
