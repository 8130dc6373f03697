// The thread pool.
#include "tests/support/machine_test.h"

namespace
{
using ThreadpoolTest = MachineTest;

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
