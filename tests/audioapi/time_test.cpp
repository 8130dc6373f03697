// Time stamps and time texts.
#include "audioapi/audio_api_time.h"
#include "tests/support/logged_machine_test.h"

namespace
{
const SYSTEMTIME DAY = {2024, 2, 4, 29, 7, 5, 9, 42}; // 29 February 2024, 07:05:09.042, a Thursday

using TimeTest = LoggedMachineTest;

TEST_F(TimeTest, StampsCountMilliseconds)
{
    const SYSTEMTIME stEpoch = {1970, 1, 4, 1, 8, 0, 0, 0}; // the fixed eight hours make this 0
    EXPECT_EQ(CAudioTIME::GetIntTime(stEpoch), 0);
    SYSTEMTIME stNextDay = DAY;
    stNextDay.wMonth = 3;
    stNextDay.wDay = 1;
    stNextDay.wMilliseconds = 43;
    EXPECT_EQ(CAudioTIME::GetTimeDiff(DAY, stNextDay), 86400001);

    StartLog();
    SYSTEMTIME stNoDay = DAY;
    stNoDay.wYear = 2023; // has no 29 February
    EXPECT_EQ(CAudioTIME::GetIntTime(stNoDay), 0);
    const std::vector<LogLine> vecLine = FindLog("SystemTime To FileTime failed!");
    ASSERT_EQ(vecLine.size(), 1U);
    EXPECT_EQ(vecLine[0].iErrorCode, 87);
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
    EXPECT_EQ(CAudioTIME::MsToStrTime(std::numeric_limits<INT64>::max(), "%d"), "");
}
} // namespace
