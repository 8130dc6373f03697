// Questions about processes, users, sessions, events and the machine, put to this system's own.
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"
#include "platform/control/machine_native.h"
#include "platform/hostpath.h"
#include "tests/support/logged_machine_test.h"

#include <objbase.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

namespace
{
// A name of an executable that no other run of these tests has on this system.
std::string ChildName()
{
    return "Kelvane-Child" + std::to_string(getpid());
}

std::wstring Upper(const std::string& strName)
{
    return CAudioSTR::ToUpper(std::wstring(strName.begin(), strName.end()));
}

// A process of an executable's name of its own, ended with its scope. It waits for a block that never comes, in memory
// that it asked for and doesn't touch.
class CChild
{
public:
    explicit CChild(const std::string& strName, std::string strBlock = "bs=4k")
    {
        std::string strProgram = machine::Folder() + "/" + strName;
        std::filesystem::copy_file("/bin/dd", strProgram, std::filesystem::copy_options::skip_existing);
        EXPECT_EQ(pipe2(m_aPipe, O_CLOEXEC), 0);
        posix_spawn_file_actions_t oActions;
        posix_spawn_file_actions_init(&oActions);
        posix_spawn_file_actions_adddup2(&oActions, m_aPipe[0], STDIN_FILENO);
        char* const aArguments[] = {strProgram.data(), strBlock.data(), nullptr};
        EXPECT_EQ(posix_spawn(&m_iProcess, strProgram.c_str(), &oActions, nullptr, aArguments, environ), 0);
        posix_spawn_file_actions_destroy(&oActions);
    }
    ~CChild()
    {
        kill(m_iProcess, SIGKILL);
        waitpid(m_iProcess, nullptr, 0);
        close(m_aPipe[0]);
        close(m_aPipe[1]);
    }
    CChild(const CChild&) = delete;
    CChild& operator=(const CChild&) = delete;
    DWORD ID() const { return static_cast<DWORD>(m_iProcess); }

private:
    pid_t m_iProcess = 0;
    int m_aPipe[2] = {};
};

class SystemQueryTest : public LoggedMachineTest
{
protected:
    static void PutSession(const std::string& strID, const std::string& strUser, const std::string& strState,
                           const std::string& strMore = "CLASS=user\n")
    {
        const std::string strFile = machine::PlatformPath(machine::Folder() + "/sessions/" + strID);
        PutFile(strFile, "USER=" + strUser + "\nSTATE=" + strState + "\n" + strMore);
    }
    static void PutConsole(const std::string& strUser)
    {
        PutSession("7", strUser, "active", "CLASS=user\nSEAT=seat0\nACTIVE=1\n");
    }
    static std::wstring OwnName()
    {
        std::wstring strName;
        EXPECT_EQ(CAudioSYS::QueryLoginName(strName), 0U);
        return strName;
    }
    static std::string OwnNarrowName() { return CAudioSTR::ToString(OwnName(), CP_UTF8); }
};

TEST_F(SystemQueryTest, ProcessesAreFoundByNameInAnyCase)
{
    StartLog();
    const std::string strChild = ChildName();
    std::vector<DWORD> vecID;
    DWORD dwID = 0;
    {
        const CChild oOne(strChild);
        const CChild oOther(strChild);
        ASSERT_TRUE(WaitFor([&] { return CAudioSYS::GetProcessNameByID(oOther.ID()) == strChild; }));
        EXPECT_EQ(CAudioSYS::GetProcessIDByName(Upper(strChild), dwID), 0U);
        EXPECT_TRUE(dwID == oOne.ID() || dwID == oOther.ID());
        EXPECT_EQ(CAudioSYS::GetProcessIDByName(Upper(strChild), vecID), 0U);
        std::sort(vecID.begin(), vecID.end());
        EXPECT_EQ(vecID, (std::vector<DWORD>{std::min(oOne.ID(), oOther.ID()), std::max(oOne.ID(), oOther.ID())}));
        EXPECT_TRUE(CAudioSYS::CheckProcessInvalidByName(Upper(strChild)));
        EXPECT_TRUE(CAudioSYS::CheckProcessInvalidByID(oOne.ID()));

        machine::FailNext("CreateToolhelp32Snapshot", ERROR_ACCESS_DENIED);
        EXPECT_EQ(CAudioSYS::GetProcessIDByName(Upper(strChild), dwID), 6U);
        ASSERT_EQ(CountLog("(hSnapshot == INVALID_HANDLE_VALUE)"), 1U);
        EXPECT_EQ(FindLog("(hSnapshot == INVALID_HANDLE_VALUE)")[0].iErrorCode, 6);
    }
    EXPECT_FALSE(CAudioSYS::CheckProcessInvalidByID(dwID));
    EXPECT_FALSE(CAudioSYS::CheckProcessInvalidByID(0));
    EXPECT_EQ(CAudioSYS::GetProcessIDByName(L"kelvane-none", vecID = {}), 6U);
    machine::FailNext("CreateToolhelp32Snapshot", ERROR_ACCESS_DENIED, -1);
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(Upper(strChild), vecID, 2), 0U);
    machine::ClearFailures();
    EXPECT_EQ(CountLog("(hSnapshot == INVALID_HANDLE_VALUE)"), 2U) << "a name that isn't there is no reason to wait";
    EXPECT_FALSE(CAudioSYS::CheckProcessInvalidByName(L"kelvane-none"));
    EXPECT_EQ(CountLog("kelvane-none is not exist!"), 1U);
}

TEST_F(SystemQueryTest, ConsoleUserOwnsProcesses)
{
    StartLog();
    const std::string strChild = ChildName();
    const std::wstring strWide(strChild.begin(), strChild.end());
    const CChild oChild(strChild);
    ASSERT_TRUE(WaitFor([&] { return CAudioSYS::CheckProcessInvalidByName(strWide); }));
    std::vector<DWORD> vecID;
    HANDLE hToken = nullptr;
    // Nobody at the console: first attempt and two retries.
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(strWide, vecID, 2), 0U);
    EXPECT_EQ(CountLog("Query Session Information for Console UserName failed!"), 3U);
    EXPECT_EQ(CAudioSYS::GetTokenHandleByName(strWide, hToken, 1), 6U);
    // Somebody else.
    PutConsole("someone-else");
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(strWide, vecID, 0), 0U);
    EXPECT_EQ(CAudioSYS::GetTokenHandleByName(strWide, hToken, 0), 6U);
    EXPECT_TRUE(vecID.empty());
    EXPECT_EQ(hToken, nullptr);
    // This user; the first two openings fail.
    PutConsole(CAudioSTR::ToUpper(OwnNarrowName()));
    machine::FailNext("OpenProcess", ERROR_ACCESS_DENIED, 2);
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(strWide, vecID, 0), 0U);
    EXPECT_TRUE(vecID.empty());
    EXPECT_EQ(CAudioSYS::GetTokenHandleByName(Upper(strChild), hToken, 1), 0U);
    EXPECT_EQ(CountLog("hProcess"), 2U);
    std::wstring strTokenUser;
    EXPECT_EQ(CAudioSYS::GetTokenUserName(hToken, strTokenUser), 0U);
    EXPECT_EQ(strTokenUser, OwnName());
    EXPECT_EQ(CAudioSYS::GetTokenUserName(nullptr, strTokenUser), 6U);
    for (const auto& [pCall, dwResult] :
         {std::pair<const char*, DWORD>{"LocalAlloc", 12}, {"GetTokenInformation", 31}, {"LookupAccountSidW", 31}})
    {
        machine::FailNext(pCall, 31);
        EXPECT_EQ(CAudioSYS::GetTokenUserName(hToken, strTokenUser), dwResult) << pCall;
    }
    CloseHandle(hToken);
    EXPECT_TRUE(CAudioSYS::CheckProcessInvalidByUserName(strWide));
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(strWide, vecID), 0U);
    EXPECT_EQ(vecID, std::vector<DWORD>{oChild.ID()});
    EXPECT_EQ(CountLog("ProcessName:" + strChild + ",ProcessID:" + std::to_string(oChild.ID()) +
                       ",TokenUserName:" + OwnNarrowName() + ",ConsoleUserName=someone-else"),
              2U);
    // One that can't be opened doesn't hide the other.
    const CChild oOther(strChild);
    ASSERT_TRUE(WaitFor([&] { return CAudioSYS::GetProcessNameByID(oOther.ID()) == strChild; }));
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(strWide, vecID = {}, 0), 0U);
    EXPECT_EQ(vecID.size(), 2U);
    machine::FailNext("OpenProcess", ERROR_ACCESS_DENIED);
    EXPECT_EQ(CAudioSYS::GetProcessIDByUserName(strWide, vecID = {}, 0), 0U);
    EXPECT_EQ(vecID.size(), 1U);
}

TEST_F(SystemQueryTest, ConsoleUserIsAskedUnderItsName)
{
    StartLog();
    PutConsole(OwnNarrowName());
    machine::DivideTimeouts(50);
    machine::FailNext("WTSQueryUserToken", ERROR_NO_TOKEN, 2); // who logs in meanwhile is found
    std::wstring strName;
    EXPECT_EQ(CAudioSYS::QueryImpersonateLoginName(strName), 0U);
    EXPECT_EQ(strName.substr(strName.find(L'\\')), L"\\" + OwnName());
    EXPECT_EQ(CountLog("Find LoginName:" + CAudioSTR::ToString(strName, CP_UTF8) + " by SessionID:7"), 1U);

    machine::FailNext("LookupAccountNameW", ERROR_NONE_MAPPED);
    EXPECT_EQ(CAudioSYS::GetCurrentUserSidstr(1), L"S-1-22-1-" + std::to_wstring(geteuid()));
    for (const char* pCall : {"LookupAccountNameW", "LocalAlloc", "ConvertSidToStringSidW"})
    {
        machine::FailNext(pCall, ERROR_NONE_MAPPED);
        EXPECT_EQ(CAudioSYS::GetCurrentUserSidstr(0), L"") << pCall;
    }
    machine::FailNext("ImpersonateLoggedOnUser", ERROR_ACCESS_DENIED);
    EXPECT_EQ(CAudioSYS::QueryImpersonateLoginName(strName), static_cast<DWORD>(ERROR_ACCESS_DENIED));

    // A failure without a code, and the way back to the thread's own name from one behind the impersonation.
    machine::FailNext("GetUserNameW", 0);
    EXPECT_EQ(CAudioSYS::QueryLoginName(strName), static_cast<DWORD>(ERROR_GEN_FAILURE));
    if (geteuid() == 0) // may take another's name
    {
        const std::wstring strOwnName = OwnName();
        PutConsole("daemon");
        EXPECT_EQ(CAudioSYS::QueryImpersonateLoginName(strName), 0U);
        EXPECT_EQ(strName.substr(strName.find(L'\\')), L"\\daemon");
        EXPECT_EQ(OwnName(), strOwnName);
        machine::FailNext("GetUserNameExW", 0);
        EXPECT_EQ(CAudioSYS::QueryImpersonateLoginName(strName), static_cast<DWORD>(ERROR_GEN_FAILURE));
        EXPECT_EQ(OwnName(), strOwnName);
    }

    machine::FailNext("WTSQueryUserToken", 0, -1);
    EXPECT_EQ(CAudioSYS::GetCurrentUserSidstr(0), L"");
    EXPECT_EQ(CountLog("Not find UserToken by SessionID:7,Trytimes=30,ErrorCode =31"), 1U);
}

TEST_F(SystemQueryTest, UsersNobodyLooksAt)
{
    StartLog();
    PutConsole("ann");
    PutSession("c2", "bob", "online");
    PutSession("3", "carl", "closing");
    PutSession("4", "login", "online", "CLASS=greeter\n");
    PutSession("5", "dan", "active"); // looks at another screen
    std::vector<std::wstring> vecName{L"X"};
    CAudioSYS::QueryInactiveUser(vecName);
    EXPECT_EQ(vecName, (std::vector<std::wstring>{L"X", L"CARL", L"BOB"}));
    EXPECT_EQ(CountLog("Find Inactive User CARL,BOB"), 1U);
    machine::FailNext("WTSEnumerateSessionsExW", ERROR_ACCESS_DENIED);
    CAudioSYS::QueryInactiveUser(vecName);
    EXPECT_EQ(vecName.size(), 3U);
    EXPECT_EQ(CountLog("Find Inactive User"), 1U);

    std::wstring strUser;
    EXPECT_EQ(CAudioSYS::QueryConsoleUserName(strUser), 0U);
    EXPECT_EQ(strUser, L"ann");
    PutSession("7", "login", "active", "CLASS=greeter\nSEAT=seat0\nACTIVE=1\n");
    EXPECT_EQ(CAudioSYS::QueryConsoleUserName(strUser), 13U);
    machine::FailNext("WTSQuerySessionInformationW", ERROR_ACCESS_DENIED);
    EXPECT_EQ(CAudioSYS::QueryConsoleUserName(strUser), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(strUser, L"ann");
}

TEST_F(SystemQueryTest, EventIsFoundAtItsTime)
{
    StartLog();
    SYSTEMTIME stTime{2024, 7, 0, 14, 9, 26, 53, 0};
    machine::SetClock(stTime);
    machine::FreezeClock();
    const HANDLE hSource = RegisterEventSourceA(nullptr, "Test");
    const std::string strLong(70000, 'x'); // no room for it in the first buffer
    for (const auto& [dwID, pText] : {std::pair<DWORD, const char*>{0x80020F02, "a\tb\n"}, {0x40020F03, "old"}})
        ReportEventA(hSource, EVENTLOG_WARNING_TYPE, 0, dwID, nullptr, 1, 0, const_cast<LPCSTR*>(&pText), nullptr);
    const char* const pLong = strLong.c_str();
    ReportEventA(hSource, EVENTLOG_ERROR_TYPE, 0, 5, nullptr, 1, 0, const_cast<LPCSTR*>(&pLong), nullptr);
    DeregisterEventSource(hSource);
    EXPECT_TRUE(CAudioSYS::FindLastestMatchEvent("System", 0x0F02));
    EXPECT_EQ(CountLog("Find event 3842 occurse at 2024-07-14 09:26:53.000"), 1U);
    EXPECT_FALSE(CAudioSYS::FindLastestMatchEvent("System", 0x80020F02)) << "the number's low word counts";
    machine::AdvanceClock(1000);
    EXPECT_FALSE(CAudioSYS::FindLastestMatchEvent("System", 0x0F02));
    EXPECT_EQ(CountLog("Need Check event BaseTime occurse at 2024-07-14 09:26:54.000"), 1U);
    EXPECT_EQ(CountLog("dwStatus != ERROR_HANDLE_EOF"), 0U);

    machine::FailNext("ReadEventLogW", 0);
    EXPECT_FALSE(CAudioSYS::FindLastestMatchEvent("System", 0x0F02));
    machine::FailNext("ReadEventLogW", ERROR_INSUFFICIENT_BUFFER); // and needs no more than there is
    EXPECT_FALSE(CAudioSYS::FindLastestMatchEvent("System", 0x0F02));
    EXPECT_EQ(FindLog("dwStatus != ERROR_HANDLE_EOF").at(0).iErrorCode, ERROR_GEN_FAILURE);
    EXPECT_EQ(CountLog("dwStatus != ERROR_HANDLE_EOF"), 2U);
    machine::FailNext("OpenEventLogA", 0);
    EXPECT_FALSE(CAudioSYS::FindLastestMatchEvent("System", 0x0F02));
    EXPECT_EQ(FindLog("Open System EventLog failed!").at(0).iErrorCode, ERROR_GEN_FAILURE);
}

TEST_F(SystemQueryTest, FolderIsAddedToAVariableOnce)
{
    const std::string strOldPath = std::getenv("PATH");
    setenv("PATH", "C:\\Windows;\\c:\\TOOLS\\\\ ;", 1);
    EXPECT_TRUE(CAudioSYS::IsExistEnvInPath("c:\\tools\\"));
    EXPECT_FALSE(CAudioSYS::IsExistEnvInPath("c:\\tool"));
    const auto GetWritten = []
    {
        std::string strValue;
        CAudioREG::ReadRegValue(AUDIO_ENV_ITEM, "Path", strValue);
        return strValue;
    };
    CAudioREG::CreateRegKey(AUDIO_ENV_ITEM);
    CAudioSYS::SetEnvVariable("Path", "C:\\Tools");
    CAudioSYS::SetEnvVariable("KELVANE_UNSET", "C:\\New\\");
    EXPECT_EQ(GetWritten(), "");
    CAudioSYS::SetEnvVariable("Path", "C:\\New\\");
    EXPECT_EQ(GetWritten(), "C:\\Windows;\\c:\\TOOLS\\\\ ;;C:\\New\\");
    setenv("PATH", strOldPath.c_str(), 1);
}

TEST_F(SystemQueryTest, MissingRuntimeLibrariesAreCopied)
{
    StartLog();
    PutFile("C:\\src\\msvcp140.dll", "new");
    PutFile("C:\\src\\concrt140.dll", "new");
    PutFile("C:\\src\\vcruntime140.dll", "new");
    PutFile(std::string(AUDIO_SYSTEM_DIR) + "concrt140.dll", "old");
    CAudioSYS::CopySystemDependenceDLL("C:\\src\\");
    EXPECT_EQ(GetFile(std::string(AUDIO_SYSTEM_DIR) + "concrt140.dll"), "old");
    EXPECT_EQ(GetFile(std::string(AUDIO_SYSTEM_DIR) + "vcruntime140.dll"), "new");
    EXPECT_EQ(CountLog("Fill up system dependence dll msvcp140.dll vcruntime140.dll "), 1U);
    const std::vector<LogLine> vecFailed = FindLog("CopyFileA(strSrcDllPath.c_str(), strDstDllPath.c_str(), TRUE)");
    ASSERT_EQ(vecFailed.size(), 4U);
    EXPECT_EQ(vecFailed[0].iErrorCode, ERROR_FILE_NOT_FOUND);
}

TEST_F(SystemQueryTest, MemoryLimitIsReachedByEitherFigure)
{
    StartLog();
    const std::string strSmall = ChildName() + "-small";
    const std::string strLarge = ChildName() + "-large";
    const CChild oSmall(strSmall);           // below 1 MB of its own, but its libraries are in memory
    const CChild oLarge(strLarge, "bs=64M"); // 64 MB of its own, not in memory
    ASSERT_TRUE(WaitFor([&] { return CAudioSYS::CheckProcessMemory(Upper(strLarge), 33); }));
    ASSERT_TRUE(WaitFor([&] { return CAudioSYS::CheckProcessMemory(Upper(strSmall), 1); }));
    const std::vector<LogLine> vecLine = FindLog("Current Memory beyond limit 33MB(34603008),PagefileUsage:");
    ASSERT_EQ(vecLine.size(), 1U);
    unsigned long long aFigures[4] = {};
    ASSERT_EQ(sscanf(std::strstr(vecLine[0].strMessage.c_str(), ",Page"),
                     ",PagefileUsage:%lluMB(%llu),WorkingSetSize:%lluMB(%llu)", &aFigures[0], &aFigures[1],
                     &aFigures[2], &aFigures[3]),
              4);
    EXPECT_EQ(aFigures[0], 64U);
    EXPECT_EQ(aFigures[1] >> 20, 64U);
    EXPECT_LT(aFigures[2], 33U);
    EXPECT_EQ(aFigures[2], aFigures[3] >> 20);
    EXPECT_EQ(CountLog("Current Memory beyond limit 1MB(1048576),PagefileUsage:0MB("), 1U);
    EXPECT_FALSE(CAudioSYS::CheckProcessMemory(Upper(strLarge), 4095));
    EXPECT_TRUE(CAudioSYS::CheckProcessMemory(Upper(strLarge), 4096)) << "no bytes within 32 bits";
    EXPECT_FALSE(CAudioSYS::CheckProcessMemory(L"kelvane-none", 0));
    for (const char* pCall : {"OpenProcess", "K32GetProcessMemoryInfo"})
    {
        machine::FailNext(pCall, ERROR_ACCESS_DENIED);
        EXPECT_FALSE(CAudioSYS::CheckProcessMemory(Upper(strLarge), 33)) << pCall;
    }
    EXPECT_NE(GetFile(machine::PlatformPath(machine::Folder() + "/eventlog.txt")).find("0x80020F02"),
              std::string::npos);
}

TEST_F(SystemQueryTest, FileTimesAreLocal)
{
    StartLog();
    const std::string strOldZone = std::getenv("TZ") != nullptr ? std::getenv("TZ") : "";
    setenv("TZ", "XXX-5:40", 1); // six hours ahead, rounded
    tzset();
    PutFile("C:\\f.txt", "x");
    timespec aTimes[2] = {{1700000000, 0}, {1700000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, HostPath("C:\\f.txt").c_str(), aTimes, 0), 0);
    CAudioSYS::PrintFileInfo("C:\\f.txt");
    CAudioSYS::PrintFileInfo("C:\\none.txt");
    EXPECT_EQ(CountLog("C:\\f.txt CreationTime:"), 1U);
    EXPECT_EQ(CountLog(",LastAccessTime:2023-11-15 04:13:20.000,LastWriteTime:2023-11-15 04:13:20.000"), 1U);
    strOldZone.empty() ? unsetenv("TZ") : setenv("TZ", strOldZone.c_str(), 1);
    tzset();
}

TEST_F(SystemQueryTest, GuidsAreNewAndTriedForSixTimes)
{
    machine::FailNext("CoCreateGuid", ERROR_GEN_FAILURE, 5);
    const std::string strGuid = CAudioSYS::CreateGuidString();
    GUID stGuid{};
    const std::wstring strBraced = L"{" + CAudioSTR::ToWString(strGuid, CP_UTF8) + L"}";
    EXPECT_EQ(CLSIDFromString(strBraced.c_str(), &stGuid), S_OK);
    EXPECT_EQ(CAudioSTR::ToUpper(strGuid), strGuid);
    EXPECT_NE(CAudioSYS::CreateGuidString(), strGuid);
    machine::FailNext("CoCreateGuid", ERROR_GEN_FAILURE, 6);
    EXPECT_EQ(CAudioSYS::CreateGuidString(), "");
}
} // namespace
