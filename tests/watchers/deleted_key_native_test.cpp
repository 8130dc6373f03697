// A watcher whose key goes. Native only: Wine goes on watching a key that is no more.
#include "tests/watchers/watcher_test.h"

namespace
{
using DeletedKeyTest = WatcherTest;

TEST_F(DeletedKeyTest, IsToldOnceAndAStopStillWorks)
{
    StartLog();
    CAudioREG::CreateRegKey(AUDIO_BYPASS_PATH);
    Monitor().StartMonitor(3);
    WaitForWorkers();
    CAudioREG::DeleteRegKey(AUDIO_BYPASS_PATH);
    WaitForWorkers();
    Set(AUDIO_BYPASS_PATH, AUDIO_KELVANE_STATUS, REG_DWORD, std::string("\7\0\0\0", 4));
    EXPECT_EQ(CountLog("RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, hEvent, TRUE)"), 1U);
    EXPECT_EQ(Status().m_iKelvaneBypass, 0);
}
} // namespace
