// The fixture's half that is written in the platform's own calls.
#include "tests/support/machine_test.h"

#include "platform/control/machine.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>

namespace
{
struct FileCloser
{
    void operator()(FILE* pFile) const { fclose(pFile); }
};

std::unique_ptr<FILE, FileCloser> OpenFile(const std::string& strPath, const char* pMode)
{
    FILE* pFile = nullptr;
    fopen_s(&pFile, strPath.c_str(), pMode);
    return std::unique_ptr<FILE, FileCloser>(pFile);
}

// The key, made when missing; the caller closes it.
HKEY OpenKey(const std::string& strPath)
{
    const size_t iSplit = strPath.find('\\');
    EXPECT_EQ(strPath.substr(0, iSplit), "HKEY_LOCAL_MACHINE");
    HKEY hKey = nullptr;
    EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, strPath.substr(iSplit + 1).c_str(), 0, nullptr, 0,
                              KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, &hKey, nullptr),
              ERROR_SUCCESS)
        << strPath;
    return hKey;
}
} // namespace

void MachineTest::SetUp()
{
    MakeMachine();
    m_iResources = CountResources();
}

void MachineTest::TearDown()
{
    machine::ClearFailures();
    EXPECT_TRUE(WaitFor([this] { return CountResources() == m_iResources; }))
        << "handles or thread pool work left open: " << CountResources() << " after " << m_iResources;
    machine::Reset();
    RemoveMachine();
}

void MachineTest::WaitForWorkers()
{
    ASSERT_TRUE(machine::WaitUntilIdle(10000)) << "a worker never comes to rest";
}

size_t MachineTest::CountResources()
{
    return machine::LiveHandles() + machine::LiveWork();
}

void MachineTest::SetRegistry(const std::string& strPath, const std::string& strName, DWORD dwValue)
{
    SetRegistry(strPath, strName, REG_DWORD, {reinterpret_cast<const char*>(&dwValue), sizeof dwValue});
}

void MachineTest::SetRegistry(const std::string& strPath, const std::string& strName, const std::string& strValue)
{
    SetRegistry(strPath, strName, REG_SZ, strValue + '\0');
}

void MachineTest::SetRegistry(const std::string& strPath, const std::string& strName, DWORD dwType,
                              const std::string& strBytes)
{
    const HKEY hKey = OpenKey(strPath);
    EXPECT_EQ(RegSetValueExA(hKey, strName.c_str(), 0, dwType, reinterpret_cast<const BYTE*>(strBytes.data()),
                             static_cast<DWORD>(strBytes.size())),
              ERROR_SUCCESS)
        << strPath << " " << strName;
    RegCloseKey(hKey);
}

void MachineTest::DeleteRegistryValue(const std::string& strPath, const std::string& strName)
{
    const HKEY hKey = OpenKey(strPath);
    EXPECT_EQ(RegDeleteValueA(hKey, strName.c_str()), ERROR_SUCCESS) << strPath << " " << strName;
    RegCloseKey(hKey);
}

void MachineTest::MakeFolder(const std::string& strPath)
{
    for (size_t iEnd = strPath.find('\\'); iEnd != std::string::npos;)
    {
        iEnd = strPath.find('\\', iEnd + 1);
        CreateDirectoryA(strPath.substr(0, iEnd).c_str(), nullptr);
    }
    const DWORD dwAttributes = GetFileAttributesA(strPath.c_str());
    ASSERT_NE(dwAttributes, INVALID_FILE_ATTRIBUTES) << strPath;
    ASSERT_NE(dwAttributes & FILE_ATTRIBUTE_DIRECTORY, 0u) << strPath;
}

void MachineTest::PutFile(const std::string& strPath, const std::string& strContent)
{
    MakeFolder(strPath.substr(0, strPath.rfind('\\')));
    const auto pFile = OpenFile(strPath, "wb");
    ASSERT_NE(pFile, nullptr) << strPath;
    ASSERT_EQ(fwrite(strContent.data(), 1, strContent.size(), pFile.get()), strContent.size()) << strPath;
}

std::string MachineTest::GetFile(const std::string& strPath)
{
    std::string strContent;
    if (const auto pFile = OpenFile(strPath, "rb"))
    {
        char cBuf[65536];
        while (const size_t iCount = fread(cBuf, 1, sizeof cBuf, pFile.get()))
            strContent.append(cBuf, iCount);
    }
    return strContent;
}

std::string MachineTest::HostFile(const std::string& strPath)
{
    std::ifstream oFile(strPath, std::ios::binary);
    EXPECT_TRUE(oFile) << strPath;
    return {std::istreambuf_iterator<char>(oFile), std::istreambuf_iterator<char>()};
}

std::vector<std::string> MachineTest::ListFiles(const std::string& strFolder)
{
    std::vector<std::string> vecNames;
    WIN32_FIND_DATAA stData{};
    const HANDLE hFind = FindFirstFileA((strFolder + "\\*").c_str(), &stData);
    if (hFind == INVALID_HANDLE_VALUE)
        return vecNames;
    do
    {
        if ((stData.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
            vecNames.emplace_back(stData.cFileName);
    } while (FindNextFileA(hFind, &stData));
    FindClose(hFind);
    std::sort(vecNames.begin(), vecNames.end());
    return vecNames;
}

bool MachineTest::WaitFor(const std::function<bool()>& fCondition, DWORD dwMilliseconds)
{
    const auto oEnd = std::chrono::steady_clock::now() + std::chrono::milliseconds(dwMilliseconds);
    while (!fCondition())
    {
        if (std::chrono::steady_clock::now() > oEnd)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
