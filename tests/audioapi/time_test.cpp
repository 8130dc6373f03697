// Time stamps and time texts.
#include "audioapi/audio_api_time.h"
#include "tests/support/logged_machine_test.h"

namespace
{
const SYSTEMTIME DAY = {2024, 2, 4, 29, 7, 5, 9, 42}; // 29 February 2024, 07:05:09.042, a Thursday

using TimeTest = LoggedMachineTest;

TEST_F(TimeTest, StampsCountMilliseconds)
{
    EXPECT_EQ(CAudioTIME::GetIntTime({1970, 1, 4, 1, 8, 0, 0, 0}), 0); // by the fixed eight hours
    EXPECT_EQ(CAudioTIME::GetTimeDiff(DAY, {2024, 3, 5, 1, 7, 5, 9, 43}), 86400001);

    StartLog();
    EXPECT_EQ(CAudioTIME::GetIntTime({2023, 13, 4, 1, 7, 5, 9, 42}), 0); // there is no such month
    EXPECT_EQ(FindLog("SystemTime To FileTime failed!").at(0).iErrorCode, 87);
}

TEST_F(TimeTest, TextTakesAsManyFieldsAsTheFormatHas)
{
    EXPECT_EQ(CAudioTIME::GetStrTime(DAY, "%d%02d%02d_%02d%02d%02d"), "20240229_070509");
    EXPECT_EQ(CAudioTIME::MsToStrTime(CAudioTIME::GetIntTime(DAY), "%d-%d-%d %d:%d:%d.%d"), "2024-2-29 7:5:9.42");

    StartLog();
    EXPECT_EQ(CAudioTIME::GetStrTime(DAY, ""), "");
    EXPECT_EQ(CAudioTIME::GetStrTime(DAY, "%d%d%d%d%d%d%d%d"), "");
    EXPECT_EQ(CountLog("Invaild time format!"), 2U);
    EXPECT_EQ(CAudioTIME::GetStrTime(DAY, "%063d"), std::string(59, '0') + "2024");
    EXPECT_EQ(CAudioTIME::GetStrTime(DAY, "%064d"), "");
    EXPECT_EQ(CountLog("systime trun to string time failed!"), 1U);
    constexpr INT64 LAST_STAMP = std::numeric_limits<INT64>::max() / 10000 - 11644502400000;
    EXPECT_EQ(CAudioTIME::MsToStrTime(LAST_STAMP, "%d"), "30828");
    EXPECT_EQ(CAudioTIME::MsToStrTime(LAST_STAMP + 1, "%d"), "");
    EXPECT_EQ(CAudioTIME::MsToStrTime(0, "%d"), "0") << "no time at all";
}
} // namespace
