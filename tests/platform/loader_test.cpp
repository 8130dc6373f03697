// Modules: where they are found, when they are told of attach and detach, and that they really go.
#include "platform/hostpath.h"
#include "tests/support/machine_test.h"

#include <filesystem>

namespace
{
using PFN_COUNT_CALLS = int (*)();

class LoaderTest : public MachineTest
{
protected:
    void SetUp() override
    {
        MachineTest::SetUp();
        MakeFolder("C:\\windows\\system32\\Driver");
        for (const char* pPath :
             {"C:\\windows\\system32\\Counting.dll", "C:\\windows\\system32\\Driver\\Other_x64.dll"})
            std::filesystem::copy_file(COUNTING_MODULE_FILE, HostPath(pPath));
    }
    static int CountCalls(HMODULE hModule)
    {
        const auto pfnCountCalls =
            reinterpret_cast<PFN_COUNT_CALLS>(reinterpret_cast<void*>(GetProcAddress(hModule, "CountCalls")));
        return pfnCountCalls == nullptr ? -1 : pfnCountCalls();
    }
    static std::string FileName(HMODULE hModule)
    {
        char aPath[1024] = {};
        EXPECT_NE(GetModuleFileNameA(hModule, aPath, sizeof(aPath)), 0U);
        return aPath;
    }
};
} // namespace

TEST_F(LoaderTest, AttachesOnceDetachesWithTheLastUserAndStartsAfresh)
{
    const HMODULE hModule = LoadLibraryA("C:\\Windows\\SYSTEM32\\counting.dll");
    ASSERT_NE(hModule, nullptr);
    EXPECT_EQ(LoadLibraryA("Counting"), hModule);
    EXPECT_EQ(GetFile("C:\\loader.txt"), "attach ");
    EXPECT_STRCASEEQ(FileName(hModule).c_str(), "C:\\windows\\system32\\Counting.dll");
    EXPECT_EQ(CountCalls(hModule), 1);
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_EQ(CountCalls(hModule), 2);
    EXPECT_TRUE(FreeLibrary(hModule));
    EXPECT_EQ(GetFile("C:\\loader.txt"), "attach detach ");
    EXPECT_FALSE(FreeLibrary(hModule));

    const HMODULE hAgain = LoadLibraryA("Counting.dll");
    ASSERT_NE(hAgain, nullptr);
    EXPECT_EQ(CountCalls(hAgain), 1);
    const HMODULE hOther = LoadLibraryA("C:\\windows\\system32\\Driver\\Other_x64.dll");
    EXPECT_NE(hOther, hAgain);
    FreeLibrary(hOther);
    FreeLibrary(hAgain);
}

TEST_F(LoaderTest, RefusedAttachUnloads)
{
    PutFile("C:\\refuse", "");
    EXPECT_EQ(LoadLibraryA("Counting"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_DLL_INIT_FAILED});
    EXPECT_EQ(GetFile("C:\\loader.txt"), "attach detach ");
    DeleteFileA("C:\\refuse");
    const HMODULE hModule = LoadLibraryA("Counting");
    EXPECT_EQ(CountCalls(hModule), 1);
    EXPECT_TRUE(FreeLibrary(hModule));
}
