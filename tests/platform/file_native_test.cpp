// Paths of the machine and the files under them.
#include "platform/hostpath.h"
#include "platform/linux/machine.h"
#include "tests/support/machine_test.h"

#include <cerrno>
#include <filesystem>

namespace
{
class FileTest : public MachineTest
{
protected:
    static std::vector<std::string> Find(const std::string& strPattern)
    {
        std::vector<std::string> vecNames;
        WIN32_FIND_DATAA stData{};
        const HANDLE hFind = FindFirstFileA(strPattern.c_str(), &stData);
        if (hFind == INVALID_HANDLE_VALUE)
            return {"error " + std::to_string(GetLastError())};
        do
            vecNames.push_back(stData.cFileName);
        while (FindNextFileA(hFind, &stData));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
        EXPECT_TRUE(FindClose(hFind));
        return vecNames;
    }
};
using CNames = std::vector<std::string>;
} // namespace

TEST_F(FileTest, PathsFindTheirPlaceWithoutRegardToCase)
{
    PutFile("C:\\Windows\\System32\\Some File.XML", "x");
    const std::string strMachine = machine::Folder();
    const struct
    {
        std::string strPath;
        std::string strHost;
    } aCases[] = {
        {"C:\\Windows\\System32\\Some File.XML", strMachine + "/c/Windows/System32/Some File.XML"},
        {"c:/WINDOWS\\system32/some file.xml", strMachine + "/c/Windows/System32/Some File.XML"},
        {"C:\\windows\\New\\Name.txt", strMachine + "/c/Windows/New/Name.txt"},
        {"C:\\..\\..\\windows\\.\\x\\..\\system32\\", strMachine + "/c/Windows/System32"},
        {"\\\\?\\C:\\windows", strMachine + "/c/Windows"},
        {"D:\\", strMachine + "/d"},
        {"Z:\\proc\\self", "/proc/self"},
        {"/proc/SELF", "/proc/self"},
        {"", ""},
    };
    for (const auto& stCase : aCases)
        EXPECT_EQ(HostPath(stCase.strPath), stCase.strHost) << stCase.strPath;
    EXPECT_EQ(machine::PlatformPath(strMachine + "/c/Windows/x.log"), "C:\\Windows\\x.log");
    EXPECT_EQ(machine::PlatformPath("/proc/self"), "Z:\\proc\\self");
}

TEST_F(FileTest, OpenTakesThePlatformsModesAndTellsErrors)
{
    MakeFolder("C:\\logs");
    const struct
    {
        const char* pPath;
        const char* pMode;
        errno_t iResult;
    } aCases[] = {
        {"C:\\logs\\a.log", "at+", 0},    {"C:\\LOGS\\A.LOG", "rb", 0},  {"C:\\logs\\b.pcm", "ab+", 0},
        {"C:\\logs\\none.log", "rt", 2},  {"C:\\none\\a.log", "at+", 2}, {"C:\\logs", "rb", EACCES},
        {"C:\\logs", "at+", EACCES},      {"C:\\logs\\a.log", "q", 22},  {"C:\\logs\\a.log", "r+x", 22},
        {"C:\\logs\\a.log", nullptr, 22}, {"C:\\logs\\a.log", "", 22},
    };
    for (const auto& stCase : aCases)
    {
        FILE* pFile = reinterpret_cast<FILE*>(1);
        EXPECT_EQ(fopen_s(&pFile, stCase.pPath, stCase.pMode), stCase.iResult) << stCase.pPath;
        ASSERT_EQ(pFile != nullptr, stCase.iResult == 0) << stCase.pPath;
        if (pFile == nullptr)
            continue;
        fputs("line\n", pFile);
        fclose(pFile);
    }
    EXPECT_EQ(ListFiles("C:\\logs"), (CNames{"a.log", "b.pcm"}));
    EXPECT_EQ(GetFile("C:\\logs\\a.log"), "line\n"); // the second opening could only read
}

TEST_F(FileTest, SearchMatchesAsThePlatformDoes)
{
    for (const char* pName : {"b.log", "A.LOG", "a.log.old", "plain", "c.xml"})
        PutFile(std::string("C:\\find\\") + pName, pName);
    MakeFolder("C:\\find\\sub.log");
    const struct
    {
        const char* pPattern;
        CNames vecNames;
    } aCases[] = {
        {"C:\\find\\*.log", {"A.LOG", "b.log", "sub.log"}},
        {"C:\\FIND\\?.LOG", {"A.LOG", "b.log"}},
        {"C:\\find\\*.*", {".", "..", "A.LOG", "a.log.old", "b.log", "c.xml", "plain", "sub.log"}},
        {"C:\\find\\PLAIN", {"plain"}},
        {"C:\\find\\*.none", {"error 2"}},
        {"C:\\find\\", {"error 2"}},
        {"C:\\nowhere\\*", {"error 3"}},
    };
    for (const auto& stCase : aCases)
        EXPECT_EQ(Find(stCase.pPattern), stCase.vecNames) << stCase.pPattern;
}
