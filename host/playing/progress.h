// Progress of a run on a terminal, printed by a thread of its own so that the periodic loop never waits for a terminal.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

// Prints to stderr, four times a second, and only where that is a terminal.
class CProgress
{
public:
    // Seconds of audio are periods times f64PeriodSeconds.
    CProgress(int64_t i64Periods, double f64PeriodSeconds);
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;
    ~CProgress();

    void Set(int64_t i64Done) { m_i64Done.store(i64Done, std::memory_order_relaxed); }

private:
    void Run();

    const int64_t m_i64Periods;
    const double m_f64PeriodSeconds;
    std::atomic<int64_t> m_i64Done{0};
    std::mutex m_oLock;
    std::condition_variable m_oStopped;
    bool m_bStop = false; // under m_oLock
    std::thread m_oThread;
};
