// Files: how they are opened.
#include "tests/support/machine_test.h"

#include <cerrno>

namespace
{
using FileTest = MachineTest;
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
    EXPECT_EQ(ListFiles("C:\\logs"), (std::vector<std::string>{"a.log", "b.pcm"}));
    EXPECT_EQ(GetFile("C:\\logs\\a.log").rfind("line"), 0U) << "the second opening could only read";
}
