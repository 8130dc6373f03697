// One thread for all devices that complete late.
#include "devices/device_timer.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace
{
using Clock = std::chrono::steady_clock;

class CDeviceTimer
{
public:
    CDeviceTimer()
    {
        std::thread([this] { Run(); }).detach();
    }

    void Add(Clock::time_point oWhen, std::function<void()> fCall)
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        m_mapCalls.emplace(oWhen, std::move(fCall));
        m_oAdded.notify_one();
    }

private:
    [[noreturn]] void Run()
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        for (;;)
        {
            if (m_mapCalls.empty())
            {
                m_oAdded.wait(oLock);
                continue;
            }
            const Clock::time_point oNext = m_mapCalls.begin()->first;
            if (Clock::now() < oNext)
            {
                m_oAdded.wait_until(oLock, oNext);
                continue;
            }
            const std::function<void()> fCall = std::move(m_mapCalls.begin()->second);
            m_mapCalls.erase(m_mapCalls.begin());
            oLock.unlock();
            fCall();
            oLock.lock();
        }
    }

    std::mutex m_oMutex;
    std::condition_variable m_oAdded;
    std::multimap<Clock::time_point, std::function<void()>> m_mapCalls;
};
} // namespace

void CallLater(DWORD dwMilliseconds, std::function<void()> fCall)
{
    static CDeviceTimer* const pTimer = new CDeviceTimer; // its thread outlives the process's static objects
    pTimer->Add(Clock::now() + std::chrono::milliseconds(dwMilliseconds), std::move(fCall));
}
