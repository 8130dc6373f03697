// A 32-bit value that threads share without a lock: plain aligned loads and stores, defined by the language.
#pragma once

#include <atomic>

// Reads and writes as its value type does, each a relaxed atomic access; a stale read costs its reader one period.
template <class T> class CAudioRelaxed
{
    static_assert(sizeof(T) <= 4, "a shared value is one aligned 32-bit word at most");

public:
    CAudioRelaxed() = default;
    constexpr CAudioRelaxed(T tValue) : m_tValue(tValue) {}
    CAudioRelaxed(const CAudioRelaxed&) = delete;
    CAudioRelaxed& operator=(const CAudioRelaxed&) = delete;

    operator T() const { return m_tValue.load(std::memory_order_relaxed); }
    T operator=(T tValue)
    {
        m_tValue.store(tValue, std::memory_order_relaxed);
        return tValue;
    }

private:
    std::atomic<T> m_tValue{};
};

using CAudioInt = CAudioRelaxed<int>;
using CAudioFlag = CAudioRelaxed<int>; // 0 or 1: the run flags, the inline mode
