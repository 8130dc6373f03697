// The diagnostics folder: its coming and going switches log and dump, and the oldest files beyond the limit go.
#include "tests/diagnostics/diagnostics_test.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <thread>

namespace
{
namespace fs = std::filesystem;

class DirTest : public DiagnosticsTest
{
protected:
    static fs::path Folder() { return fs::path(HostFolder()); }

    // Log and dump on, whatever is there of the folder.
    static void StartBoth()
    {
        SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, AUDIO_LEVEL_INFO);
        SetDump(1);
        CAudioLog::Instance()->Initialize(nullptr);
        Dump().Initialize(nullptr);
        WaitForWorkers();
    }
    static bool IsLogOn() { return CAudioLog::Instance()->IsRecorded(AUDIO_LEVEL_FATA); }
    // Whether a block recorded now leaves a file.
    static bool IsDumpOn()
    {
        const std::string strItem = "Probe" + std::to_string(m_iProbe++);
        Dump().RecordItemByName("probe", 5, strItem);
        WaitForWorkers();
        const std::vector<std::string> vecNames = FilesOf(".pcm");
        return std::any_of(vecNames.begin(), vecNames.end(),
                           [&](const std::string& strName) { return strName.rfind(strItem + "_", 0) == 0; });
    }

    // Whoever writes into it meanwhile.
    static void RemoveFolder()
    {
        for (std::error_code oError; fs::exists(Folder());)
            fs::remove_all(Folder(), oError);
    }

    // Files named 000 and on, each a second older than the next.
    static void MakeFiles(int iCount, const std::string& strType)
    {
        fs::create_directories(Folder());
        const auto oNow = fs::file_time_type::clock::now();
        for (int i = 0; i < iCount; ++i)
        {
            const fs::path oFile = Folder() / (std::to_string(1000 + i).substr(1) + strType);
            std::ofstream(oFile).put('x');
            fs::last_write_time(oFile, oNow - std::chrono::hours(1) + std::chrono::seconds(i));
        }
    }
    static size_t CountFiles(const std::string& strType)
    {
        size_t iCount = 0;
        for (const auto& oEntry : fs::directory_iterator(Folder()))
            iCount += oEntry.path().extension() == strType && oEntry.is_regular_file() ? 1u : 0u;
        return iCount;
    }

    static inline int m_iProbe = 0;
};
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
        {"removed", RemoveFolder, [] { fs::create_directory(Folder()); }},
        {"renamed", [&] { fs::rename(Folder(), oAway); }, [] { fs::create_directory(Folder()); }},
        {"moved back", RemoveFolder,
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

TEST_F(DirTest, WithoutTheFolderTheFirstStartAloneWatches)
{
    fs::create_directories(Folder().parent_path().parent_path());
    StartBoth(); // the log's keeper makes the parent and watches it; the dump's finds it there
    EXPECT_TRUE(fs::is_directory(Folder().parent_path()));
    EXPECT_FALSE(fs::exists(Folder()));
    EXPECT_FALSE(IsLogOn());
    fs::create_directory(Folder().parent_path() / "other");
    fs::create_directory(Folder());
    EXPECT_TRUE(WaitFor([] { return IsLogOn(); }));
    EXPECT_FALSE(IsDumpOn());
    CAudioDump::DeleteInstance();
    CAudioLog::DeleteInstance();

    fs::remove_all(Folder());
    StartBoth(); // nobody watches
    fs::create_directory(Folder());
    WaitForWorkers();
    EXPECT_FALSE(IsLogOn() || IsDumpOn());
}

TEST_F(DirTest, ABadFolderTurnsDiagnosticsOffAndNothingElse)
{
    fs::create_directories(Folder().parent_path());
    std::ofstream(Folder()).put('x'); // a file in the folder's place
    StartBoth();
    EXPECT_FALSE(IsLogOn() || IsDumpOn());
    AUDIOLOG_INFO("nowhere");
    CAudioDump::DeleteInstance();
    CAudioLog::DeleteInstance();

    fs::remove(Folder());
    fs::create_directory(Folder());
    // A watch that fails: the line comes first, then the switch.
    control::FailNext("ReadDirectoryChangesW", 5, 1);
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, AUDIO_LEVEL_INFO);
    CAudioLog::Instance()->Initialize(nullptr);
    EXPECT_TRUE(WaitFor([] { return !IsLogOn(); }));
    EXPECT_EQ(CountLog("Read Directory Changes failed!"), 1u);
    CAudioLog::DeleteInstance();

    // A folder that can't be opened for its changes is still there.
    control::FailNext("CreateFileA", 5, 4);
    CAudioLog::Instance()->Initialize(nullptr);
    EXPECT_EQ(CountLog("Fail to Create File for monitor Directory:" + LogFolder()), 1u);
    EXPECT_EQ(CountLog("pThis->CreateDirectoryHandle()"), 1u);
    EXPECT_TRUE(IsLogOn());
}

TEST_F(DirTest, TheOldestFilesBeyondTheLimitGo)
{
    MakeFiles(205, ".log");
    MakeFiles(200, ".pcm");
    fs::create_directory(Folder() / "folder.log");
    fs::last_write_time(Folder() / "folder.log", fs::file_time_type::clock::now() - std::chrono::hours(2));
    StartLog(AUDIO_LEVEL_FATA); // at the start already
    StartDump(1);
    EXPECT_EQ(CountFiles(".log"), 200u);
    EXPECT_FALSE(fs::exists(Folder() / "004.log"));
    EXPECT_TRUE(fs::exists(Folder() / "005.log") && fs::exists(Folder() / "folder.log"));
    EXPECT_EQ(CountFiles(".pcm"), 200u);

    // A new file costs the oldest of its type.
    CAudioLog::Instance()->RecordItem("f", "f", 1, AUDIO_LEVEL_FATA, 0, "line");
    Dump().RecordItemByName("block", 5, "Item");
    EXPECT_TRUE(WaitFor([] { return !fs::exists(Folder() / "005.log") && !fs::exists(Folder() / "000.pcm"); }));
    EXPECT_EQ(CountFiles(".log"), 200u);
    EXPECT_EQ(CountFiles(".pcm"), 200u);
}

TEST_F(DirTest, AFileThatStaysIsTriedAgainAtTheNextEvent)
{
    MakeFiles(3, ".log");
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, AUDIO_LEVEL_ERROR);
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_NUM, 3);
    control::FailNext("DeleteFileA", 32, 1);
    CAudioLog::Instance()->Initialize(nullptr);
    WaitForWorkers(); // a file that comes before the watch is seen with the next one only
    AUDIOLOG_ERROR(1, "a fourth file");
    EXPECT_TRUE(WaitFor([] { return CountLog("DeleteFileA(strFilePath.c_str())") == 1; }, 3000));
    std::ofstream(Folder() / "fifth.log").put('x');
    EXPECT_TRUE(WaitFor([] { return CountFiles(".log") == 3; }));
    EXPECT_FALSE(fs::exists(Folder() / "001.log"));
}

// A stop ends every worker while the trouble lasts, and frees what is queued: one that waited for its end would hang.
TEST_F(DirTest, StopsWhateverHoldsItsWorkersUp)
{
    std::atomic<bool> bStop{false};
    std::atomic<int> iFiles{0};
    std::thread oRain; // faster than the folder is looked through, and on until the stop is through
    const struct
    {
        const char* pName;
        std::function<void()> fnTrouble;
    } oCases[] = {
        {"at rest", [] {}},
        {"files can't be opened", [] { control::FailNext("fopen_s", 13, -1); }},
        {"disk takes no byte", control::FillDisks},
        {"folder gone", RemoveFolder},
        {"folder gone unseen",
         []
         {
             control::FailNext("ReadDirectoryChangesW", 5, -1);
             RemoveFolder();
         }},
        {"files rain in",
         [&]
         {
             oRain = std::thread(
                 [&]
                 {
                     for (int i = 0; !bStop; iFiles = ++i)
                         std::ofstream(Folder() / (std::to_string(i) + ".log")).put('x');
                 });
             EXPECT_TRUE(WaitFor([&] { return iFiles > 500; }));
         }},
        {"folder read-only", [] { fs::permissions(Folder(), fs::perms::owner_read | fs::perms::owner_exec); }},
    };
    for (const auto& oCase : oCases)
    {
        fs::create_directories(Folder());
        StartBoth();
        bStop = false;
        oCase.fnTrouble();
        for (int i = 0; i < 500; ++i)
        {
            AUDIOLOG_EVENT_ERROR(i + 1, "report");
            Dump().RecordItemByName("block", 5, "Item");
        }
        CAudioDump::DeleteInstance();
        CAudioLog::DeleteInstance();
        EXPECT_EQ(control::LiveWork(), 0u) << oCase.pName;
        bStop = true;
        if (oRain.joinable())
            oRain.join();
        control::ClearFailures();
        fs::create_directories(Folder());
        fs::permissions(Folder(), fs::perms::owner_all);
    }
}
