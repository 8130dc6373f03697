// The machine's clock.
#include "platform/control/machine_native.h"
#include "tests/support/machine_test.h"

namespace
{
class ClockTest : public MachineTest
{
protected:
    static std::string LocalTime()
    {
        SYSTEMTIME stTime{};
        GetLocalTime(&stTime);
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
