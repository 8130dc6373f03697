// The machine's clock and the conversions of its times.
#include "platform/linux/machine.h"
#include "tests/support/machine_test.h"

#include <ctime>

namespace
{
class ClockTest : public MachineTest
{
protected:
    static std::string LocalTime()
    {
        SYSTEMTIME stTime{};
        GetLocalTime(&stTime);
        return Text(stTime);
    }
    static std::string Text(const SYSTEMTIME& stTime)
    {
        char aText[64];
        snprintf(aText, sizeof(aText), "%04d-%02d-%02d/%d %02d:%02d:%02d.%03d", stTime.wYear, stTime.wMonth,
                 stTime.wDay, stTime.wDayOfWeek, stTime.wHour, stTime.wMinute, stTime.wSecond, stTime.wMilliseconds);
        return aText;
    }
};
} // namespace

TEST_F(ClockTest, StandsMovesAndRunsAsTold)
{
    machine::FreezeClock();
    machine::SetClock({2024, 2, 0, 28, 23, 59, 59, 990});
    EXPECT_EQ(LocalTime(), "2024-02-28/3 23:59:59.990");
    machine::AdvanceClock(10);
    EXPECT_EQ(LocalTime(), "2024-02-29/4 00:00:00.000");
    machine::AdvanceClock(24LL * 3600 * 1000 * 307 - 1);
    EXPECT_EQ(LocalTime(), "2024-12-31/2 23:59:59.999");
    machine::AdvanceClock(-24LL * 3600 * 1000 * 366);
    EXPECT_EQ(LocalTime(), "2023-12-31/0 23:59:59.999");
    machine::RunClock();
    EXPECT_TRUE(WaitFor([] { return LocalTime() >= "2024-01-01/1 00:00:00.004"; }));
}

TEST_F(ClockTest, LocalTimeFollowsTheZone)
{
    setenv("TZ", "XST-5:30", 1);
    tzset();
    machine::FreezeClock();
    machine::SetClock({2031, 6, 0, 1, 2, 0, 0, 0}); // a quarter of an hour that no other test has asked for
    SYSTEMTIME stUtc{};
    GetSystemTime(&stUtc);
    EXPECT_EQ(Text(stUtc), "2031-05-31/6 20:30:00.000");
    FILETIME stFile{};
    FILETIME stLocal{};
    SYSTEMTIME stResult{};
    EXPECT_TRUE(SystemTimeToFileTime(&stUtc, &stFile));
    EXPECT_TRUE(FileTimeToLocalFileTime(&stFile, &stLocal));
    EXPECT_TRUE(FileTimeToSystemTime(&stLocal, &stResult));
    EXPECT_EQ(Text(stResult), "2031-06-01/0 02:00:00.000");
    EXPECT_EQ(LocalTime(), Text(stResult));
    unsetenv("TZ");
    tzset();
}
