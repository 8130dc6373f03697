// The watchers' fixture: the keys that they follow, values of any type, changes one at a time.
#pragma once

#include "audioapi/audio_api_registry.h"
#include "tests/support/logged_machine_test.h"

class WatcherTest : public LoggedMachineTest
{
protected:
    static CAudioMonitor& Monitor() { return *CAudioMonitor::Instance(); }
    static CAudioStatus& Status() { return Monitor().StatusRecord(); }

    // Sets one value, of type and bytes, and lets every watcher see it.
    static void Set(const std::string& strPath, const char* pName, DWORD dwType, const std::string& strBytes)
    {
        SetRegistry(strPath, pName, dwType, strBytes);
        WaitForWorkers();
    }
    static void Delete(const std::string& strPath, const char* pName)
    {
        DeleteRegistryValue(strPath, pName);
        WaitForWorkers();
    }

    // The messages that the log took since the last call, in order, of levels INFO and ERROR.
    std::vector<std::string> TakeLog()
    {
        std::vector<std::string> vecText;
        const std::vector<LogLine> vecLines = ReadLog();
        for (; m_iTaken < vecLines.size(); ++m_iTaken)
        {
            const LogLine& oLine = vecLines[m_iTaken];
            if (oLine.strLevel == "INFO" || oLine.strLevel == "ERROR")
                vecText.push_back(oLine.strMessage);
        }
        return vecText;
    }

private:
    size_t m_iTaken = 0;
};
