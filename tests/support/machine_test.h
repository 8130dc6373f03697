// The tests' common fixture: a machine of its own for each test, with registry and files, taken down whole.
#pragma once

#include "platform/compiler.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// Paths of files and registry keys are the platform's: "C:\windows\x", "HKEY_LOCAL_MACHINE\SOFTWARE\x".
class MachineTest : public ::testing::Test
{
protected:
    // A derived fixture calls these first and last. The end checks that nothing the test opened is left.
    void SetUp() override;
    void TearDown() override;

    // Writes the value; the key is made when missing.
    static void SetRegistry(const std::string& strPath, const std::string& strName, DWORD dwValue);
    static void SetRegistry(const std::string& strPath, const std::string& strName, const std::string& strValue);
    static void SetRegistry(const std::string& strPath, const std::string& strName, DWORD dwType,
                            const std::string& strBytes);
    // The same, by another program.
    static void SetElsewhere(const std::string& strPath, const std::string& strName, DWORD dwValue);
    static void DeleteRegistryValue(const std::string& strPath, const std::string& strName);

    // Makes the folder with those above it.
    static void MakeFolder(const std::string& strPath);
    // Replaces the file; its folder is made when missing.
    static void PutFile(const std::string& strPath, const std::string& strContent);
    // The whole content; empty when there is no such file.
    static std::string GetFile(const std::string& strPath);
    // A file of this host, whole; a failure without it.
    static std::string HostFile(const std::string& strPath);
    // Names of the files in the folder, sorted.
    static std::vector<std::string> ListFiles(const std::string& strFolder);

    // Returns when every worker waits for something to happen; a failure when that takes longer than 10 s.
    static void WaitForWorkers();
    // Whether the condition came true within the time.
    static bool WaitFor(const std::function<bool()>& fCondition, DWORD dwMilliseconds = 10000);
    // Open handles and thread pool work of the process: what must not grow.
    static size_t CountResources();

private:
    // The machine itself: natively a temporary folder, on Windows this one with a registry of the test's own.
    void MakeMachine();
    void RemoveMachine();

    std::string m_strHostFolder;
    size_t m_iResources = 0;
};
