// The start and the stop of workers, and the waiting for them.
#include "tests/support/logged_machine_test.h"

#include <thread>

namespace
{
// A worker of each kind there is: the owner makes the event, or the worker itself does, perhaps when the stop has
// already been.
struct Worker
{
    CAudioWorkerEvent m_hEvent;
    PTP_WORK m_pWork = nullptr;
    CAudioFlag m_iRun{0};
    bool m_bOwnEvent = false;
    bool m_bLate = false;
    std::atomic<int> m_iBegun{0};
    std::atomic<int> m_iEnded{0};

    static void CALLBACK Run(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
    {
        auto* pThis = static_cast<Worker*>(pContext);
        ++pThis->m_iBegun;
        while (pThis->m_bLate && pThis->m_iRun == 1)
            std::this_thread::yield();
        if (pThis->m_bOwnEvent)
            pThis->m_hEvent.Create();
        while (pThis->m_iRun == 1)
            WaitForSingleObject(pThis->m_hEvent, INFINITE);
        ++pThis->m_iEnded;
    }

    void Start() { m_pWork = CAudioMonitor::CreateMonitorThread(Run, this, &m_iRun); }
    void Stop() { CAudioMonitor::StopMonitorThread(&m_iRun, m_hEvent, m_pWork); }
};

using MonitorTest = LoggedMachineTest;
} // namespace

TEST_F(MonitorTest, StartsAndStopsWorkersWithoutGrowth)
{
    StartLog(AUDIO_LEVEL_WARN);
    const size_t iResources = CountResources();
    for (int iRound = 0; iRound < 1000; ++iRound)
    {
        Worker oWorker;
        oWorker.m_bOwnEvent = iRound % 2 != 0;
        oWorker.m_bLate = iRound % 4 == 1;
        ASSERT_TRUE(oWorker.m_bOwnEvent || oWorker.m_hEvent.Create());
        oWorker.Start();
        // A stop waits for the end of a worker that has begun, and takes one back that hasn't.
        while (iRound % 8 < 4 && oWorker.m_iBegun == 0)
            std::this_thread::yield();
        oWorker.Stop();
        ASSERT_EQ(oWorker.m_iEnded, oWorker.m_iBegun) << iRound;
    }
    EXPECT_TRUE(WaitFor([&] { return CountResources() == iResources; })) << CountResources() << " > " << iResources;
    EXPECT_TRUE(ReadLog().empty());
}

TEST_F(MonitorTest, ALatchOpensWithItsLast)
{
    CAudioLatch oLatch;
    EXPECT_TRUE(oLatch.Wait(0));
    for (int i = 0; i < 4; ++i)
        oLatch.Add();
    for (int i = 0; i < 3; ++i)
        oLatch.Done();
    EXPECT_FALSE(oLatch.Wait(1));
    std::thread oLast([&] { oLatch.Done(); });
    EXPECT_TRUE(oLatch.Wait(INFINITE));
    oLast.join();
    oLatch.Add();
    EXPECT_FALSE(oLatch.Wait(1)) << "closed again";
}
