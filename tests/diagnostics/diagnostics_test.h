// The diagnostics tests' fixture: log, dump and event log on a machine of the test's own, and the files they leave.
#pragma once

#include "audioapi/audio_api_dump.h"
#include "platform/hostpath.h"
#include "tests/engine/engine_test.h"

class DiagnosticsTest : public EngineTest
{
protected:
    void TearDown() override
    {
        m_pEngine.reset();
        CAudioDump::DeleteInstance();
        EngineTest::TearDown();
    }

    static CAudioDump& Dump() { return *CAudioDump::Instance(); }
    static void StartDump(DWORD dwLevel, DWORD dwSize = 0)
    {
        MakeFolder(LogFolder());
        SetDump(dwLevel, dwSize);
        Dump().Initialize(nullptr);
        WaitForWorkers();
    }
    static void SetDump(DWORD dwLevel, DWORD dwSize = 0)
    {
        SetRegistry(AUDIO_DUMP_PATH, AUDIO_DUMP_LEVEL, dwLevel);
        SetRegistry(AUDIO_DUMP_PATH, AUDIO_DUMP_SIZE, dwSize);
        SetRegistry(AUDIO_DUMP_PATH, AUDIO_DUMP_NUM, 0);
    }

    // The files of the type, by the order of their names, without the module's name in front.
    static std::vector<std::string> FilesOf(const std::string& strType)
    {
        const size_t iModule = CAudioSYS::GetModuleBaseName(nullptr).size() + 1;
        std::vector<std::string> vecNames;
        for (const std::string& strName : ListFiles(LogFolder()))
            if (strName.size() > strType.size() && strName.substr(strName.size() - strType.size()) == strType)
                vecNames.push_back(strName.substr(std::min(iModule, strName.size())));
        return vecNames;
    }
    // The content of the item's one dump file; another number of files is a failure.
    static std::string ContentOf(const std::string& strItem)
    {
        WaitForWorkers();
        std::vector<std::string> vecNames = FilesOf(".pcm");
        const auto fOther = [&](const std::string& strName) { return strName.rfind(strItem + "_P", 0) != 0; };
        vecNames.erase(std::remove_if(vecNames.begin(), vecNames.end(), fOther), vecNames.end());
        EXPECT_EQ(vecNames.size(), 1u) << strItem;
        if (vecNames.size() != 1)
            return {};
        return GetFile(LogFolder() + "\\" + CAudioSYS::GetModuleBaseName(nullptr) + "_" + vecNames[0]);
    }
    static std::string BytesOf(const std::vector<FLOAT32>& vecSamples)
    {
        return {reinterpret_cast<const char*>(vecSamples.data()), vecSamples.size() * sizeof(FLOAT32)};
    }

    // The records of the event log behind their time: source, type, number, text.
    static std::vector<std::string> ReadEvents()
    {
        WaitForWorkers();
        return machine::ReportedEvents();
    }

    static std::string HostFolder() { return HostPath(LogFolder()); }
    static std::string ModuleName() { return CAudioSYS::GetModuleBaseName(nullptr); }
};
