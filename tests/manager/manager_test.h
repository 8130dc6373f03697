// The fixture of the manager's tests: a machine with tuning files and a library, and the log running.
#pragma once

#include "tests/support/logged_machine_test.h"
#include "tests/support/manager_inside.h"

#include <chrono>
#include <thread>

class ManagerTest : public LoggedMachineTest
{
protected:
    // Each step begins with a fresh manager, which takes the log down and up again.
    static CKelvaneManager* Restart()
    {
        CKelvaneManager::DeleteInstance();
        EmptyLog();
        StartLog();
        return CKelvaneManager::Instance();
    }

    void TearDown() override
    {
        CKelvaneManager::DeleteInstance();
        LoggedMachineTest::TearDown();
    }

    // The next file written will be newer than all before it, whatever the file system's grain.
    static void LetTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(15)); }

    // Whether the log has the message at the level with the code; a code of -1 is any but 0.
    static bool HasLine(const std::string& strLevel, long long iCode, const std::string& strMessage)
    {
        for (const LogLine& oLine : ReadLog())
            if (oLine.strMessage == strMessage && oLine.strLevel == strLevel &&
                (iCode == -1 ? oLine.iErrorCode != 0 : oLine.iErrorCode == iCode))
                return true;
        return false;
    }
};
