// What becomes of waiters when a handle goes.
#include "tests/support/machine_test.h"

#include <atomic>
#include <thread>

namespace
{
class EventTest : public MachineTest
{
protected:
    // Starts a thread that waits for the event, and gives it time to be in its wait.
    std::thread StartWaiter(HANDLE hEvent, DWORD dwMilliseconds = INFINITE)
    {
        const int iBefore = m_iStarted;
        std::thread oThread(
            [this, hEvent, dwMilliseconds]
            {
                ++m_iStarted;
                if (WaitForSingleObject(hEvent, dwMilliseconds) == WAIT_OBJECT_0)
                    ++m_iReleased;
            });
        EXPECT_TRUE(WaitFor([&] { return m_iStarted > iBefore; }));
        Sleep(20);
        return oThread;
    }

    std::atomic<int> m_iStarted{0};
    std::atomic<int> m_iReleased{0};
};
} // namespace

TEST_F(EventTest, ClosedHandleFailsAndTheWaiterKeepsTheEvent)
{
    const HANDLE hEvent = CreateEventW(nullptr, TRUE, FALSE, L"Local\\kept");
    const HANDLE hOther = OpenEventW(EVENT_ALL_ACCESS, FALSE, L"kept");
    ASSERT_NE(hOther, nullptr);
    std::thread oThread = StartWaiter(hEvent);
    std::thread oPatience = StartWaiter(hEvent, 50);
    EXPECT_TRUE(CloseHandle(hEvent));
    for (const HANDLE hGone : {hEvent, HANDLE{nullptr}, INVALID_HANDLE_VALUE})
    {
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(WaitForSingleObject(hGone, 0), DWORD{WAIT_FAILED});
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
        EXPECT_FALSE(SetEvent(hGone));
        EXPECT_FALSE(ResetEvent(hGone));
        EXPECT_FALSE(CloseHandle(hGone));
    }
    oPatience.join();
    EXPECT_EQ(m_iReleased, 0);
    SetEvent(hOther);
    oThread.join();
    EXPECT_EQ(m_iReleased, 1);
    CloseHandle(hOther);
}
