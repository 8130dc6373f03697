// The parameter record's sequence counter.
#include "protection/kelvane_shared_record.h"

#include <cstring>

// A reader that sees one of the words also sees the odd count before it: words are released, and acquired.
void CKelvaneSharedRecord::Store(const KelvaneStruParam& oStruParam)
{
    int16_t sWords[WORD_COUNT];
    memcpy(sWords, &oStruParam, sizeof(sWords));

    uint32_t uSequence = m_uSequence.load(std::memory_order_relaxed) & ~1u;
    while (!m_uSequence.compare_exchange_weak(uSequence, uSequence + 1, std::memory_order_acquire))
        uSequence &= ~1u;
    for (size_t i = 0; i < WORD_COUNT; ++i)
        m_sWords[i].store(sWords[i], std::memory_order_release);
    m_uSequence.store(uSequence + 2, std::memory_order_release);
}

bool CKelvaneSharedRecord::TryLoad(KelvaneStruParam& oStruParam) const
{
    int16_t sWords[WORD_COUNT];
    const uint32_t uSequence = m_uSequence.load(std::memory_order_acquire);
    for (size_t i = 0; i < WORD_COUNT; ++i)
        sWords[i] = m_sWords[i].load(std::memory_order_acquire);
    if (!IsUnchanged(uSequence))
        return false;
    memcpy(&oStruParam, sWords, sizeof(sWords));
    return true;
}

bool CKelvaneSharedRecord::TryLoadGains(bool& bActive, float (&pGain)[KELVANE_MAX_CHANNELS]) const
{
    int16_t sGain[KELVANE_MAX_CHANNELS];
    const uint32_t uSequence = m_uSequence.load(std::memory_order_acquire);
    const int16_t sModule = Word(offsetof(KelvaneStruParam, sFFModule));
    for (size_t i = 0; i < KELVANE_MAX_CHANNELS; ++i)
        sGain[i] = Word(offsetof(KelvaneStruParam, sPOWTargetGain) + i * sizeof(int16_t));
    if (!IsUnchanged(uSequence))
        return false;
    bActive = sModule != 0;
    for (size_t i = 0; i < KELVANE_MAX_CHANNELS; ++i)
        pGain[i] = static_cast<float>(sGain[i]) / 100.0f;
    return true;
}
