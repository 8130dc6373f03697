// The diagnostics folder: when it is watched, what a bad one turns off, and the oldest files beyond the limit go.
#include "tests/diagnostics/dir_test.h"

#include <thread>

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
    machine::FailNext("ReadDirectoryChangesW", 5, 2); // the first is answered by a new watch
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, AUDIO_LEVEL_INFO);
    CAudioLog::Instance()->Initialize(nullptr);
    EXPECT_TRUE(WaitFor([] { return !IsLogOn(); }));
    EXPECT_EQ(CountLog("Read Directory Changes failed!"), 2u);
    CAudioLog::DeleteInstance();

    // A folder that can't be opened for its changes is still there.
    machine::FailNext("CreateFileA", 5, 4);
    CAudioLog::Instance()->Initialize(nullptr);
    EXPECT_EQ(CountLog("Fail to Create File for monitor Directory:" + LogFolder()), 1u);
    EXPECT_EQ(CountLog("pThis->CreateDirectoryHandle()"), 1u);
    EXPECT_TRUE(IsLogOn());
    CAudioLog::DeleteInstance();

    // Each read that was good makes up for one that fails.
    CAudioLog::Instance()->Initialize(nullptr);
    WaitForWorkers();
    machine::FailNext("ReadDirectoryChangesW", 5, 1);
    std::ofstream(Folder() / "another.log").put('x');
    EXPECT_TRUE(WaitFor([] { return CountLog("Read Directory Changes failed!") == 3u; }));
    WaitForWorkers();
    EXPECT_TRUE(IsLogOn());
}

TEST_F(DirTest, TheOldestFilesBeyondTheLimitGo)
{
    MakeFiles(205, ".log");
    MakeFiles(200, ".pcm");
    fs::create_directory(Folder() / "folder.log");
    std::error_code oIgnored; // where a folder's time can't be set, it is the newest
    fs::last_write_time(Folder() / "folder.log", fs::file_time_type::clock::now() - std::chrono::hours(2), oIgnored);
    StartLog(AUDIO_LEVEL_FATA); // at the start already
    StartDump(1);
    EXPECT_EQ(CountFiles(".log"), 200u);
    EXPECT_FALSE(fs::exists(Folder() / "004.log"));
    EXPECT_TRUE(fs::exists(Folder() / "005.log") && fs::exists(Folder() / "folder.log"));
    EXPECT_EQ(CountFiles(".pcm"), 200u);

    // A new file costs the oldest of its type, and opens nothing anew.
    machine::FailNext("CreateFileA", 5, -1);
    CAudioLog::Instance()->RecordItem("f", "f", 1, AUDIO_LEVEL_FATA, 0, "line");
    Dump().RecordItemByName("block", 5, "Item");
    EXPECT_TRUE(WaitFor([] { return !fs::exists(Folder() / "005.log") && !fs::exists(Folder() / "000.pcm"); }));
    EXPECT_EQ(CountFiles(".log"), 200u);
    EXPECT_EQ(CountFiles(".pcm"), 200u);
    std::ofstream(Folder() / "one more.log").put('x');
    EXPECT_TRUE(WaitFor([] { return !fs::exists(Folder() / "006.log"); }));
}

TEST_F(DirTest, AFileThatStaysIsTriedAgainAtTheNextEvent)
{
    MakeFiles(3, ".log");
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, AUDIO_LEVEL_ERROR);
    SetRegistry(AUDIO_DEBUG_PATH, AUDIO_DEBUG_NUM, 3);
    machine::FailNext("DeleteFileA", 32, 1);
    CAudioLog::Instance()->Initialize(nullptr);
    int iFile = 3; // one that comes before the watch is seen with the next one only
    EXPECT_TRUE(WaitFor(
        [&]
        {
            std::ofstream(Folder() / (std::to_string(++iFile) + ".log")).put('x');
            return CountLog("DeleteFileA(strFilePath.c_str())") == 1;
        }));
    std::ofstream(Folder() / "last.log").put('x');
    EXPECT_TRUE(WaitFor([] { return CountFiles(".log") == 3; }));
    EXPECT_FALSE(fs::exists(Folder() / "001.log"));
}

TEST_F(DirTest, StopsWhateverHoldsItsWorkersUp)
{
    StopDespite("at rest", [] {});
    StopDespite("files can't be opened", [] { machine::FailNext("fopen_s", 13, -1); });
    // Files rain in, faster than the folder is looked through, and on until the stop is through.
    std::atomic<bool> bStop{false};
    std::atomic<int> iFiles{0};
    std::thread oRain;
    StopDespite("files rain in",
                [&]
                {
                    oRain = std::thread(
                        [&]
                        {
                            for (int i = 0; !bStop; iFiles = ++i)
                                std::ofstream(Folder() / (std::to_string(i) + ".log")).put('x');
                        });
                    EXPECT_TRUE(WaitFor([&] { return iFiles > 500; }));
                });
    bStop = true;
    oRain.join();
}
