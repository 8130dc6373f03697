// What is kept of each temperature sensor: its last samples, and their means on the way from one thread to another.
#pragma once

#include "audioapi/audio_api_atomic.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <vector>

// The last N values, oldest first. A copy takes no heap block.
template <size_t N> class CKelvaneSensorQueue
{
public:
    // Drops the oldest value when there are N.
    void Push(INT32 iValue)
    {
        if (IsFull())
            m_iSize = static_cast<size_t>(std::copy(begin() + 1, end(), m_iValues) - m_iValues);
        m_iValues[m_iSize++] = iValue;
    }
    void Clear() { m_iSize = 0; }
    bool IsFull() const { return m_iSize == N; }
    const INT32* begin() const { return m_iValues; }
    const INT32* end() const { return m_iValues + m_iSize; }

private:
    INT32 m_iValues[N] = {};
    size_t m_iSize = 0;
};

using CKelvaneSampleQueue = CKelvaneSensorQueue<12>; // hundredths of a degree Celsius
using CKelvaneMeanQueue = CKelvaneSensorQueue<10>;   // whole degrees Celsius

// A queue of means per sensor. One thread fills them and publishes each round, one thread reads the last round
// published and empties them; neither waits for the other. Three buffers: the writer's, the reader's, and between them
// the one they exchange.
class CKelvaneAverageQueue
{
public:
    // Sets the number of sensors. Before there are threads.
    void Resize(size_t iSensorCount)
    {
        for (Round* const pRound : {&m_oFilling, &m_oRounds[0], &m_oRounds[1], &m_oRounds[2]})
            pRound->vecMeans.resize(iSensorCount);
    }

    // Writer: begins a round; behind a Clear, from empty queues.
    void BeginRound() { Renew(m_oFilling); }
    void Push(size_t iSensor, INT32 iMean) { m_oFilling.vecMeans[iSensor].Push(iMean); }
    void Publish()
    {
        m_oRounds[m_iWriter] = m_oFilling; // of equal lengths: no heap block
        m_iWriter = m_iBetween.exchange(m_iWriter | FRESH, std::memory_order_acq_rel) & ~FRESH;
    }

    // Reader: the means of the last round, empty when it began before the last Clear. Stay until the next call.
    const std::vector<CKelvaneMeanQueue>& Read()
    {
        if ((m_iBetween.load(std::memory_order_relaxed) & FRESH) != 0)
            m_iReader = m_iBetween.exchange(m_iReader, std::memory_order_acq_rel) & ~FRESH;
        Renew(m_oRounds[m_iReader]);
        return m_oRounds[m_iReader].vecMeans;
    }
    // Reader: empties the queues, at once for itself, at its next round for the writer.
    void Clear() { m_iGeneration = m_iGeneration + 1; }

private:
    struct Round
    {
        UINT32 iGeneration = 0;
        std::vector<CKelvaneMeanQueue> vecMeans;
    };

    void Renew(Round& oRound)
    {
        const UINT32 iGeneration = m_iGeneration;
        if (oRound.iGeneration == iGeneration)
            return;
        oRound.iGeneration = iGeneration;
        for (CKelvaneMeanQueue& oQueue : oRound.vecMeans)
            oQueue.Clear();
    }

    static constexpr UINT32 FRESH = 4; // the buffer between the two is newer than the reader's
    CAudioRelaxed<UINT32> m_iGeneration{0};
    Round m_oFilling;
    Round m_oRounds[3];
    UINT32 m_iWriter = 0;
    std::atomic<UINT32> m_iBetween{1};
    UINT32 m_iReader = 2;
};
