// Registry access on a machine of the test's own: values, keys, watches, registration, and what failures log.
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_worker_event.h"
#include "platform/linux/machine.h"
#include "tests/support/logged_machine_test.h"

#include <audioenginebaseapo.h>

#include <cstring>

namespace
{
constexpr char BASE[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Test";
constexpr char MISSING[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Missing";

class RegistryTest : public LoggedMachineTest
{
protected:
    void SetUp() override
    {
        LoggedMachineTest::SetUp();
        SetRegistry(BASE, "Number", 0x44434241); // "ABCD" as text
        SetRegistry(BASE, "Text", std::string("Hi"));
    }

    static void SetBytes(const char* pName, DWORD dwType, const std::string& strBytes)
    {
        HKEY hKey = nullptr;
        ASSERT_EQ(CAudioREG::OpenRegKey(BASE, KEY_SET_VALUE | KEY_WOW64_64KEY, hKey), 0U);
        EXPECT_EQ(RegSetValueExA(hKey, pName, 0, dwType, reinterpret_cast<const BYTE*>(strBytes.data()),
                                 static_cast<DWORD>(strBytes.size())),
                  0);
        RegCloseKey(hKey);
    }

    // Each text was logged once, at ERROR with the code.
    static void ExpectErrors(const std::vector<std::string>& vecText, INT64 iErrorCode)
    {
        const std::vector<LogLine> vecLog = ReadLog();
        for (const std::string& strText : vecText)
        {
            size_t iCount = 0;
            for (const LogLine& oLine : vecLog)
            {
                if (oLine.strMessage != strText)
                    continue;
                ++iCount;
                EXPECT_EQ(oLine.strLevel, "ERROR") << strText;
                EXPECT_EQ(oLine.iErrorCode, iErrorCode) << strText;
            }
            EXPECT_EQ(iCount, 1U) << strText;
        }
    }
};

// Reads don't look at the type; a value that is too large or missing leaves the out value alone.
TEST_F(RegistryTest, ReadsByBytesWhateverTheType)
{
    SetBytes("Short", REG_BINARY, "\x05");
    SetBytes("Open", REG_BINARY, "open"); // text without its zero
    SetBytes("Full", REG_BINARY, std::string(1024, 'F'));
    SetBytes("Large", REG_BINARY, std::string(1025, 'L'));
    std::string strFullHex;
    for (int i = 0; i < 1024; ++i)
        strFullHex += "46";
    const struct
    {
        const char* pName;
        DWORD dwNumber;
        std::string strText;
        std::string strHex;
    } CASE[] = {
        {"Number", 0x44434241, "ABCD", "41424344"},
        {"Text", 0x6948, "Hi", "486900"},
        {"Short", 5, "\x05", "05"},
        {"Open", 0x6E65706F, "open", "6F70656E"},
        {"Full", 0x46464646, std::string(1024, 'F'), strFullHex},
        {"", 99, "old", "old"},
        {"Large", 99, "old", "old"},
    };
    for (const auto& oCase : CASE)
    {
        const bool bRead = oCase.dwNumber != 99;
        CAudioInt iNumber{99};
        std::string strText = "old";
        std::string strHex = "old";
        EXPECT_EQ(CAudioREG::ReadRegValue(BASE, oCase.pName, iNumber) == 0, bRead) << oCase.pName;
        EXPECT_EQ(CAudioREG::ReadRegValue(BASE, oCase.pName, strText) == 0, bRead) << oCase.pName;
        EXPECT_EQ(CAudioREG::ReadRegBinary(BASE, oCase.pName, strHex) == 0, bRead) << oCase.pName;
        EXPECT_EQ(iNumber, static_cast<int>(oCase.dwNumber)) << oCase.pName;
        EXPECT_EQ(strText, oCase.strText) << oCase.pName;
        EXPECT_EQ(strHex, oCase.strHex) << oCase.pName;
    }
}

TEST_F(RegistryTest, WritesAndDeletes)
{
    const std::string strBase = BASE;
    CAudioREG::CreateRegKey(strBase + "\\Sub\\Deep");
    EXPECT_EQ(CAudioREG::WriteRegValue(strBase + "\\Sub\\Name", std::string("text")), 0U);
    EXPECT_EQ(CAudioREG::WriteRegValue(strBase + "\\Sub\\Count", 7U), 0U);
    std::string strText;
    DWORD dwCount = 0;
    EXPECT_EQ(CAudioREG::ReadRegValue(strBase + "\\Sub", "Name", strText), 0U);
    EXPECT_EQ(CAudioREG::ReadRegValue(strBase + "\\Sub", "Count", dwCount), 0U);
    EXPECT_EQ(strText, "text");
    EXPECT_EQ(dwCount, 7U);
    CAudioREG::CreateRegKey(strBase + "\\Other");
    EXPECT_EQ(CAudioREG::RegEnumKeyName(BASE), (std::vector<std::string>{"Other", "Sub"}));

    EXPECT_TRUE(CAudioREG::RegKeyExists(strBase + "\\Sub\\Count"));
    EXPECT_EQ(CAudioREG::DeleteRegValue(strBase + "\\Sub", "Count"), 0U);
    EXPECT_FALSE(CAudioREG::RegKeyExists(strBase + "\\Sub\\Count"));
    CAudioREG::DeleteRegKey(strBase + "\\Sub\\Deep");
    EXPECT_FALSE(CAudioREG::RegPathExists(strBase + "\\Sub\\Deep"));
    EXPECT_TRUE(CAudioREG::RegPathExists(strBase + "\\Sub"));
}

TEST_F(RegistryTest, FailuresAreLoggedWithTheirCode)
{
    SetBytes("None", REG_NONE, "");
    StartLog();
    const std::string strMissing = MISSING;
    std::string strText;
    DWORD dwNumber = 0;
    CAudioREG::ReadRegValue(MISSING, "A", dwNumber);
    CAudioREG::ReadRegValue(BASE, "B", strText);
    CAudioREG::ReadRegBinary(BASE, "C", strText);
    CAudioREG::WriteRegValue(strMissing + "\\D", std::string("x"));
    CAudioREG::WriteRegValue(strMissing + "\\E", 1U);
    CAudioREG::DeleteRegValue(MISSING, "F");
    CAudioREG::DeleteRegValue(BASE, "G");
    CAudioREG::DeleteRegKey(MISSING);
    EXPECT_TRUE(CAudioREG::RegEnumKeyName(MISSING).empty());
    EXPECT_TRUE(CAudioREG::RegEnumKeyName(BASE).empty());
    ExpectErrors(
        {"Fail to Read Reg Value KeyPath:" + strMissing + "\\A",
         std::string("Fail to Read Reg Value KeyPath:") + BASE + "\\B",
         "RegQueryValueExA(khHandle, strKeyName.c_str(), nullptr, &dwSzType, (LPBYTE)cBuf, &dwSize)",
         "RegQueryValueExA(khHandle, strKeyName.c_str(), nullptr, &dwSzType, cBuf, &dwSize)",
         "Fail to Write Reg Value KeyPath:" + strMissing + "\\D", "WriteRegValue(strPath, strKeyName, strWValue)",
         "Fail to Write Reg Value KeyPath:" + strMissing + "\\E", "WriteRegValue(strPath, strKeyName, dWValue)",
         "Fail to Delete Reg Value KeyPath:" + strMissing + "\\F", "RegDeleteValueA(khHandle, strKeyName.c_str())",
         std::string("Fail to Delete Reg Value KeyPath:") + BASE + "\\G",
         "RegDeleteKeyExA(GetRegHeadKey(strRegHead), strRegPath.c_str(), KEY_WOW64_64KEY, 0)",
         "Fail to Enum RegKey Path:" + strMissing},
        ERROR_FILE_NOT_FOUND);

    EXPECT_FALSE(CAudioREG::RegKeyExists(std::string(BASE) + "\\None"));
    ExpectErrors({"dwSzType == REG_NONE"}, 13);
    EXPECT_FALSE(CAudioREG::RegPathExists(MISSING));
    EXPECT_FALSE(CAudioREG::RegPathExists("HKEY_USERS\\*\\SOFTWARE\\X"));
    EXPECT_EQ(CountLog("Not exist RegKey:"), 3U);
    EXPECT_TRUE(CAudioREG::RegPathExists("HKEY_LOCAL_MACHINE")); // no backslash: the default root itself
    EXPECT_EQ(CountLog("Undefine RegRoot Use default HKEY_LOCAL_MACHINE!"), 1U);
}

TEST_F(RegistryTest, WatchWakesOncePerArming)
{
    StartLog();
    const std::string strDeep = std::string(BASE) + "\\New\\Deep";
    CAudioREG::CreateRegKey(strDeep);
    HKEY hKey = nullptr;
    HANDLE hEvent = nullptr;
    ASSERT_EQ(CAudioREG::RegNotifyStart(BASE, hKey, hEvent), 0U);
    EXPECT_EQ(CountLog(std::string("Success to Regist Notify Change KeyPath:") + BASE), 1U);
    EXPECT_EQ(WaitForSingleObject(hEvent, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    for (const std::string& strPath : {std::string(BASE), strDeep})
    {
        SetRegistry(strPath, "Number", 1);
        EXPECT_EQ(WaitForSingleObject(hEvent, 10000), static_cast<DWORD>(WAIT_OBJECT_0)) << strPath;
        CAudioREG::RegNotifyReset(hKey, hEvent);
        EXPECT_EQ(WaitForSingleObject(hEvent, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << strPath;
    }
    CAudioREG::RegNotifyReset(nullptr, hEvent);
    CAudioREG::RegNotifyReset(hKey, nullptr);
    ExpectErrors({"hKey", "hEvent"}, 6);
    CAudioREG::RegNotifyClose(hKey, hEvent);
    EXPECT_EQ(hKey, nullptr);
    EXPECT_EQ(hEvent, nullptr);
    CAudioREG::RegNotifyClose(hKey, hEvent);
}

// A failed start closes what it was given; a worker's own event stays its owner's to close.
TEST_F(RegistryTest, FailedWatchLeavesNothingOpen)
{
    StartLog();
    HKEY hKey = nullptr;
    HANDLE hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(CAudioREG::RegNotifyStart(MISSING, hKey, hEvent), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(hEvent, nullptr);

    CAudioWorkerEvent oEvent;
    ASSERT_TRUE(oEvent.Create());
    machine::FailNext("RegNotifyChangeKeyValue", 1234);
    EXPECT_EQ(CAudioREG::RegNotifyStart(BASE, hKey, oEvent), 1234U);
    EXPECT_EQ(hKey, nullptr);
    EXPECT_TRUE(SetEvent(oEvent));
    ExpectErrors({"RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, pEventHandle, TRUE)"}, 1234);
    EXPECT_EQ(CountLog("Fail to Regist Notify Change KeyPath:"), 2U);

    machine::FailNext("CreateEventW", 8);
    SetRegistry("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other", "Number", 1);
    EXPECT_EQ(CAudioREG::RegNotifyStart("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other", hKey, hEvent), 6U);
    EXPECT_EQ(hKey, nullptr);
    ExpectErrors({"pEventHandle", "Fail to Regist Notify Change KeyPath:HKEY_LOCAL_MACHINE\\SOFTWARE\\Other"}, 6);
}

TEST_F(RegistryTest, ClassRegistration)
{
    StartLog();
    EXPECT_EQ(CAudioREG::RegisterAudioAPO(nullptr, "Class", "Module"), 13);
    ExpectErrors({"pAPOReg"}, 13);

    APO_REG_PROPERTIES stProperties{};
    stProperties.clsid = {0x12345678, 0x1234, 0x5678, {1, 2, 3, 4, 5, 6, 7, 8}};
    const std::string strGuid = "{12345678-1234-5678-0102-030405060708}";
    const std::string strClass = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\" + strGuid;
    const std::string strPlatform = "HKEY_CLASSES_ROOT\\AudioEngine\\AudioProcessingObjects\\" + strGuid;
    ASSERT_EQ(CAudioREG::RegisterAudioAPO(&stProperties, "First", "Module"), 0);
    ASSERT_EQ(CAudioREG::RegisterAudioAPO(&stProperties, "Class", "KelvaneAPO"), 0); // overwrites
    const struct
    {
        const char* pSubkey;
        const char* pName;
        const char* pValue;
    } WRITTEN[] = {
        {"", "", "Class"}, {"\\InprocServer32", "", "KelvaneAPO"}, {"\\InprocServer32", "ThreadingMode", "Both"}};
    for (const auto& oWritten : WRITTEN)
    {
        std::string strValue;
        EXPECT_EQ(CAudioREG::ReadRegValue(strClass + oWritten.pSubkey, oWritten.pName, strValue), 0U);
        EXPECT_EQ(strValue, oWritten.pValue);
    }
    EXPECT_TRUE(CAudioREG::RegPathExists(strPlatform));
    EXPECT_EQ(CAudioREG::UnregisterAudioAPO(stProperties.clsid), 0);
    EXPECT_FALSE(CAudioREG::RegPathExists(strClass));
    EXPECT_FALSE(CAudioREG::RegPathExists(strPlatform));
}
} // namespace
