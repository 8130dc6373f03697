// A diagnostics folder that goes and comes, and disks that fail. Native only: under Wine a watched folder isn't removed
// before its watch ends, and no disk fills up on demand.
#include "tests/diagnostics/dir_test.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>

namespace
{
// Whoever writes into it meanwhile.
void RemoveFolder(const fs::path& oFolder)
{
    for (std::error_code oError; fs::exists(oFolder);)
        fs::remove_all(oFolder, oError);
}

// Writes beyond it fail as on a full disk.
void LimitFileSize(rlim_t iBytes)
{
    signal(SIGXFSZ, SIG_IGN);
    rlimit oLimit{};
    getrlimit(RLIMIT_FSIZE, &oLimit);
    oLimit.rlim_cur = iBytes == RLIM_INFINITY ? oLimit.rlim_max : iBytes;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &oLimit), 0);
}
} // namespace

TEST_F(DirTest, RemovalSwitchesOffAndReturnSwitchesOn)
{
    fs::create_directories(Folder());
    StartBoth();
    EXPECT_TRUE(IsLogOn() && IsDumpOn());
    const fs::path oAway = Folder().parent_path() / "away";
    const struct
    {
        const char* pName;
        std::function<void()> fnGone, fnBack;
    } oCases[] = {
        {"removed", [] { RemoveFolder(Folder()); }, [] { fs::create_directory(Folder()); }},
        {"renamed", [&] { fs::rename(Folder(), oAway); }, [] { fs::create_directory(Folder()); }},
        {"moved back", [] { RemoveFolder(Folder()); },
         [&]
         {
             fs::rename(oAway, Folder().parent_path().parent_path() / "outside");
             fs::rename(Folder().parent_path().parent_path() / "outside", Folder());
         }},
    };
    for (const auto& oCase : oCases)
    {
        oCase.fnGone();
        EXPECT_TRUE(WaitFor([] { return !IsLogOn() && !IsDumpOn(); })) << oCase.pName;
        oCase.fnBack();
        EXPECT_TRUE(WaitFor([] { return IsLogOn() && IsDumpOn(); })) << oCase.pName;
        AUDIOLOG_INFO(std::string("after ") + oCase.pName);
        EXPECT_EQ(CountLog(std::string("after ") + oCase.pName), 1u);
    }
}

// The keeper finds a folder at each look, but another one.
TEST_F(DirTest, AFolderReplacedInOneStepIsFollowed)
{
    const fs::path oOther = Folder().parent_path() / "other";
    const struct
    {
        const char* pName;
        std::function<void()> fnReplace;
    } oCases[] = {
        {"renamed and made", [&] { renameat2(AT_FDCWD, Folder().c_str(), AT_FDCWD, oOther.c_str(), RENAME_EXCHANGE); }},
        {"removed and made",
         [&]
         {
             for (const auto& oEntry : fs::directory_iterator(Folder()))
                 fs::remove(oEntry);
             fs::rename(oOther, Folder());
         }},
    };
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, AUDIO_LEVEL_FATA);
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_NUM, 2);
    MakeFiles(2, ".log");
    CAudioLog::Instance()->Initialize(nullptr);
    for (const auto& oCase : oCases)
    {
        WaitForWorkers();
        fs::remove_all(oOther);
        fs::create_directory(oOther);
        oCase.fnReplace();
        MakeFiles(5, ".log");
        EXPECT_TRUE(WaitFor([] { return CountFiles(".log") == 2; }, 3000)) << oCase.pName;
        EXPECT_TRUE(IsLogOn()) << oCase.pName;
    }
}

TEST_F(DirTest, StopsWithoutItsFolderOrRoomInIt)
{
    StopDespite("disk takes no byte", [] { LimitFileSize(0); });
    LimitFileSize(RLIM_INFINITY);
    StopDespite("folder gone", [] { RemoveFolder(Folder()); });
    StopDespite("folder gone unseen",
                []
                {
                    machine::FailNext("ReadDirectoryChangesW", 5, -1);
                    RemoveFolder(Folder());
                });
    StopDespite("folder read-only", [] { fs::permissions(Folder(), fs::perms::owner_read | fs::perms::owner_exec); });
    fs::permissions(Folder(), fs::perms::owner_all);
}
