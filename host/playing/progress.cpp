// Progress of a run on a terminal.
#include "host/playing/progress.h"

#include <cstdio>
#include <unistd.h>

CProgress::CProgress(int64_t i64Periods, double f64PeriodSeconds)
    : m_i64Periods(i64Periods), m_f64PeriodSeconds(f64PeriodSeconds)
{
    if (isatty(STDERR_FILENO) != 0)
        m_oThread = std::thread([this] { Run(); });
}

CProgress::~CProgress()
{
    if (!m_oThread.joinable())
        return;
    {
        const std::lock_guard<std::mutex> oGuard(m_oLock);
        m_bStop = true;
    }
    m_oStopped.notify_one();
    m_oThread.join();
}

void CProgress::Run()
{
    std::unique_lock<std::mutex> oGuard(m_oLock);
    while (!m_oStopped.wait_for(oGuard, std::chrono::milliseconds(250), [this] { return m_bStop; }))
    {
        const int64_t i64Done = m_i64Done.load(std::memory_order_relaxed);
        std::fprintf(stderr, "\r%8.1f s of %.1f s (%d %%) ", static_cast<double>(i64Done) * m_f64PeriodSeconds,
                     static_cast<double>(m_i64Periods) * m_f64PeriodSeconds,
                     static_cast<int>(i64Done * 100 / m_i64Periods));
    }
    std::fprintf(stderr, "\r%50s\r", "");
}
