// Questions about processes, users and sessions, put to the platform itself.
#include "tests/support/logged_machine_test.h"

namespace
{
constexpr wchar_t strOwnProcess[] = L"TEST_audioapi.exe";

using SystemQueryTest = LoggedMachineTest;

TEST_F(SystemQueryTest, ProcessesAreFoundByNameAndNumber)
{
    StartLog();
    std::vector<DWORD> vecID;
    EXPECT_EQ(CAudioSYS::GetProcessIDByName(strOwnProcess, vecID), 0U);
    EXPECT_EQ(std::count(vecID.begin(), vecID.end(), GetCurrentProcessId()), 1);
    EXPECT_EQ(CAudioSYS::GetProcessNameByID(GetCurrentProcessId()), "test_audioapi.exe");
    EXPECT_TRUE(CAudioSYS::CheckProcessInvalidByID(GetCurrentProcessId()));
    EXPECT_TRUE(CAudioSYS::CheckProcessMemory(strOwnProcess, 1));
    EXPECT_FALSE(CAudioSYS::CheckProcessMemory(strOwnProcess, 4095));
    EXPECT_EQ(CountLog("Current Memory beyond limit 1MB(1048576),PagefileUsage:"), 1U);
}

std::wstring OwnName()
{
    std::wstring strName;
    EXPECT_EQ(CAudioSYS::QueryLoginName(strName), 0U);
    return strName;
}

// On this system's own registry, for the accounts stand there.
TEST(UserQueryTest, UsersAreFoundByTheirTokens)
{
    std::wstring strName;
    HANDLE hToken = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &hToken));
    EXPECT_EQ(CAudioSYS::GetTokenUserName(hToken, strName), 0U);
    EXPECT_EQ(strName, OwnName());
    CloseHandle(hToken);
    EXPECT_NE(CAudioSYS::GetTokenUserName(nullptr, strName), 0U);

    // Who sits at the console is who runs this.
    EXPECT_EQ(CAudioSYS::QueryConsoleUserName(strName), 0U);
    EXPECT_EQ(strName, OwnName());
    std::vector<DWORD> vecID;
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(strOwnProcess, vecID, 0), 0U);
    EXPECT_EQ(std::count(vecID.begin(), vecID.end(), GetCurrentProcessId()), 1);
    ASSERT_EQ(CAudioSYS::GetTokenHandleByName(strOwnProcess, hToken, 0), 0U);
    EXPECT_EQ(CAudioSYS::GetTokenUserName(hToken, strName), 0U);
    EXPECT_EQ(strName, OwnName());
    CloseHandle(hToken);
    EXPECT_EQ(CAudioSYS::QueryImpersonateLoginName(strName), 0U);
    EXPECT_EQ(strName.substr(strName.find(L'\\')), L"\\" + OwnName());
    EXPECT_EQ(CAudioSYS::GetCurrentUserSidstr(0).substr(0, 9), L"S-1-5-21-");
}
} // namespace
