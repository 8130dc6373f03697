// The fixture's half that makes and removes the machine: a registry of the test's own over this system's, and its
// files.
#include "tests/support/machine_test.h"

#include <cstdlib>
#include <filesystem>

namespace
{
constexpr char strTestKey[] = "Software\\KelvaneAPOTest";
// What the module and its tests put on a machine. A system where this is more than a test's isn't one to test on.
constexpr const char* aPaths[] = {"C:/windows/system32/ZVAudioDriver",
                                  "C:/PROGRAMDATA/ZVAudio",
                                  "D:/.ZVAudioParams",
                                  "D:/.LOGAudioKelvaneVoice",
                                  "C:/logs",
                                  "C:/find"};

void RemoveFiles()
{
    for (const char* pPath : aPaths)
    {
        std::error_code oIgnored; // what can't go now goes before the next test
        std::filesystem::remove_all(pPath, oIgnored);
    }
}

// Leads this process's way into the root to a key of the test's, or back.
void Redirect(HKEY hRoot, const char* pName)
{
    HKEY hKey = nullptr;
    if (pName != nullptr)
    {
        const std::string strKey = std::string(strTestKey) + "\\" + pName;
        ASSERT_EQ(
            RegCreateKeyExA(HKEY_CURRENT_USER, strKey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &hKey, nullptr),
            ERROR_SUCCESS);
    }
    ASSERT_EQ(RegOverridePredefKey(hRoot, hKey), ERROR_SUCCESS);
    if (hKey != nullptr)
        RegCloseKey(hKey);
}
} // namespace

void MachineTest::MakeMachine()
{
    RemoveFiles();
    RegDeleteTreeA(HKEY_CURRENT_USER, strTestKey);
    Redirect(HKEY_LOCAL_MACHINE, "Machine");
    Redirect(HKEY_CLASSES_ROOT, "Classes");
}

void MachineTest::RemoveMachine()
{
    Redirect(HKEY_CLASSES_ROOT, nullptr);
    Redirect(HKEY_LOCAL_MACHINE, nullptr);
    RegDeleteTreeA(HKEY_CURRENT_USER, strTestKey);
    RemoveFiles();
}

void MachineTest::SetElsewhere(const std::string& strPath, const std::string& strName, DWORD dwValue)
{
    const std::string strCommand = std::string("reg add \"HKCU\\") + strTestKey + "\\Machine\\" +
                                   strPath.substr(strPath.find('\\') + 1) + "\" /v " + strName +
                                   " /t REG_DWORD /f /d " + std::to_string(dwValue) + " >nul";
    ASSERT_EQ(std::system(strCommand.c_str()), 0) << strCommand;
}
