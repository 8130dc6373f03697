// Files: how they are opened, and found by patterns.
#include "tests/support/machine_test.h"

#include <cerrno>

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

TEST_F(FileTest, OpenTakesThePlatformsModesAndTellsErrors)
{
    MakeFolder("C:\\logs");
    const struct
    {
        const char* pPath;
        const char* pMode;
        errno_t iResult;
    } aCases[] = {
        {"C:\\logs\\a.log", "at+", 0},   {"C:\\LOGS\\A.LOG", "rb", 0},  {"C:\\logs\\b.pcm", "ab+", 0},
        {"C:\\logs\\none.log", "rt", 2}, {"C:\\none\\a.log", "at+", 2}, {"C:\\logs", "rb", EACCES},
        {"C:\\logs", "at+", EACCES},     {"C:\\logs\\a.log", "q", 22},  {"C:\\logs\\a.log", nullptr, 22},
        {"C:\\logs\\a.log", "", 22},
    };
    for (const auto& stCase : aCases)
    {
        FILE* pFile = nullptr;
        EXPECT_EQ(fopen_s(&pFile, stCase.pPath, stCase.pMode), stCase.iResult) << stCase.pPath;
        ASSERT_EQ(pFile != nullptr, stCase.iResult == 0) << stCase.pPath;
        if (pFile == nullptr)
            continue;
        fputs("line\n", pFile);
        fclose(pFile);
    }
    EXPECT_EQ(ListFiles("C:\\logs"), (CNames{"a.log", "b.pcm"}));
    EXPECT_EQ(GetFile("C:\\logs\\a.log").rfind("line"), 0U) << "the second opening could only read";
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
