// The thread pool, and the idleness that is read off it.
#include "platform/linux/machine.h"
#include "tests/support/machine_test.h"

#include <atomic>
#include <thread>

namespace
{
using ThreadpoolTest = MachineTest;

struct CLink
{
    HANDLE hWake = nullptr;
    HANDLE hNext = nullptr;
    std::atomic<int>* piRun = nullptr;
    std::atomic<int> iRounds{0};
};

// Waits, works a little, wakes the next of the chain.
void CALLBACK PassOn(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CLink& oLink = *static_cast<CLink*>(pContext);
    while (*oLink.piRun)
    {
        if (WaitForSingleObject(oLink.hWake, 10) != WAIT_OBJECT_0)
            continue;
        if (oLink.iRounds % 97 == 0)
            std::this_thread::yield();
        ++oLink.iRounds;
        if (oLink.hNext != nullptr)
            SetEvent(oLink.hNext);
    }
}
} // namespace

TEST_F(ThreadpoolTest, ACallbackThatKeepsAPriorityEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto fnRaise = [](PTP_CALLBACK_INSTANCE, PVOID, PTP_WORK)
    { SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_HIGHEST); };
    const auto fnRun = [&]
    {
        const PTP_WORK pWork = CreateThreadpoolWork(fnRaise, nullptr, nullptr);
        SubmitThreadpoolWork(pWork);
        WaitForThreadpoolWorkCallbacks(pWork, FALSE);
    };
    EXPECT_DEATH(fnRun(), "priority of its own");
}

TEST_F(ThreadpoolTest, ChainOfWorkersIsIdleOnlyWhenTheLastIsDone)
{
    constexpr int LINKS = 5;
    constexpr int ROUNDS = 4000;
    std::atomic<int> iRun{1};
    CLink aLinks[LINKS];
    PTP_WORK aWorks[LINKS] = {};
    for (int iLink = LINKS - 1; iLink >= 0; --iLink)
    {
        aLinks[iLink].hWake = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        aLinks[iLink].hNext = iLink + 1 < LINKS ? aLinks[iLink + 1].hWake : nullptr;
        aLinks[iLink].piRun = &iRun;
        aWorks[iLink] = CreateThreadpoolWork(PassOn, &aLinks[iLink], nullptr);
        SubmitThreadpoolWork(aWorks[iLink]);
    }
    for (int iRound = 1; iRound <= ROUNDS; ++iRound)
    {
        SetEvent(aLinks[0].hWake);
        ASSERT_TRUE(machine::WaitUntilIdle(10000));
        ASSERT_EQ(aLinks[LINKS - 1].iRounds, iRound);
    }
    iRun = 0;
    for (int iLink = 0; iLink < LINKS; ++iLink)
    {
        CloseHandle(aLinks[iLink].hWake);
        WaitForThreadpoolWorkCallbacks(aWorks[iLink], FALSE);
        CloseThreadpoolWork(aWorks[iLink]);
        EXPECT_EQ(aLinks[iLink].iRounds, ROUNDS);
    }
}
