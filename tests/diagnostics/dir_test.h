// The fixture of the diagnostics folder's keeper: log and dump on, the folder seen from the host's side.
#pragma once

#include "tests/diagnostics/diagnostics_test.h"

#include <chrono>
#include <filesystem>
#include <fstream>

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

    // A stop ends every worker while the trouble lasts, and frees what is queued: one that waited for its end would
    // hang.
    static void StopDespite(const char* pTrouble, const std::function<void()>& fnTrouble)
    {
        fs::create_directories(Folder());
        StartBoth();
        fnTrouble();
        for (int i = 0; i < 500; ++i)
        {
            AUDIOLOG_EVENT_ERROR(i + 1, "report");
            Dump().RecordItemByName("block", 5, "Item");
        }
        CAudioDump::DeleteInstance();
        CAudioLog::DeleteInstance();
        EXPECT_EQ(machine::LiveWork(), 0u) << pTrouble;
        machine::ClearFailures();
    }

    static inline int m_iProbe = 0;
};
