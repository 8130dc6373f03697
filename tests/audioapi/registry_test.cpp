// Registry access on a machine of the test's own: values, keys, watches, registration, and what failures log.
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_worker_event.h"
#include "platform/control/control.h"
#include "tests/support/logged_machine_test.h"

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

    // Each text was logged once, with the code.
    static void ExpectErrors(const std::vector<std::string>& vecText, INT64 iErrorCode)
    {
        for (const std::string& strText : vecText)
        {
            int iCount = 0;
            for (const LogLine& oLine : FindLog(strText))
                iCount += oLine.strMessage == strText && oLine.iErrorCode == iErrorCode;
            EXPECT_EQ(iCount, 1) << strText;
        }
    }
};

// Reads don't look at the type; a value that is too large or missing leaves the out value alone.
TEST_F(RegistryTest, ReadsByBytesWhateverTheType)
{
    SetBytes("Short", REG_BINARY, "\x05");
    SetBytes("Open", REG_BINARY, "open"); // text without its zero
    SetBytes("Large", REG_BINARY, std::string(1025, 'L'));
    const struct
    {
        const char* pName;
        DWORD dwNumber;
        std::string strText;
        std::string strHex;
    } CASE[] = {
        {"Number", 0x44434241, "ABCD", "41424344"},
        {"Short", 5, "\x05", "05"},
        {"Open", 0x6E65706F, "open", "6F70656E"},
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
    EXPECT_EQ(CAudioREG::RegEnumKeyName(BASE), std::vector<std::string>{"Sub"});
    EXPECT_TRUE(CAudioREG::RegKeyExists(strBase + "\\Sub\\Count"));
    EXPECT_EQ(CAudioREG::DeleteRegValue(strBase + "\\Sub", "Count"), 0U);
    EXPECT_FALSE(CAudioREG::RegKeyExists(strBase + "\\Sub\\Count"));
    CAudioREG::DeleteRegKey(strBase + "\\Sub\\Deep");
    EXPECT_FALSE(CAudioREG::RegPathExists(strBase + "\\Sub\\Deep"));
}

TEST_F(RegistryTest, FailuresAreLoggedWithTheirCode)
{
    StartLog();
    const std::string strMissing = MISSING;
    std::string strText;
    DWORD dwNumber = 0;
    CAudioREG::ReadRegValue(MISSING, "A", dwNumber);
    CAudioREG::ReadRegBinary(BASE, "C", strText);
    CAudioREG::WriteRegValue(strMissing + "\\D", std::string("x"));
    CAudioREG::DeleteRegValue(MISSING, "F");
    CAudioREG::DeleteRegKey(MISSING);
    EXPECT_TRUE(CAudioREG::RegEnumKeyName(MISSING).empty());
    EXPECT_TRUE(CAudioREG::RegEnumKeyName(BASE).empty());
    ExpectErrors({"Fail to Read Reg Value KeyPath:" + strMissing + "\\A",
                  "RegQueryValueExA(khHandle, strKeyName.c_str(), nullptr, &dwSzType, cBuf, &dwSize)",
                  "Fail to Write Reg Value KeyPath:" + strMissing + "\\D",
                  "WriteRegValue(strPath, strKeyName, strWValue)",
                  "Fail to Delete Reg Value KeyPath:" + strMissing + "\\F",
                  "RegDeleteKeyExA(GetRegHeadKey(strRegHead), strRegPath.c_str(), KEY_WOW64_64KEY, 0)",
                  "Fail to Enum RegKey Path:" + strMissing},
                 ERROR_FILE_NOT_FOUND);

    EXPECT_FALSE(CAudioREG::RegPathExists(MISSING));
    EXPECT_FALSE(CAudioREG::RegPathExists("HKEY_USERS\\*\\SOFTWARE\\X"));
    EXPECT_EQ(CountLog("Not exist RegKey:"), 2U);
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
    EXPECT_EQ(WaitForSingleObject(hEvent, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    for (const std::string& strPath : {std::string(BASE), strDeep})
    {
        SetRegistry(strPath, "Number", 1);
        EXPECT_EQ(WaitForSingleObject(hEvent, 10000), static_cast<DWORD>(WAIT_OBJECT_0)) << strPath;
        CAudioREG::RegNotifyReset(hKey, hEvent);
        EXPECT_EQ(WaitForSingleObject(hEvent, 0), static_cast<DWORD>(WAIT_TIMEOUT)) << strPath;
    }
    CAudioREG::RegNotifyClose(hKey, hEvent);
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
    control::FailNext("RegNotifyChangeKeyValue", 1234);
    EXPECT_EQ(CAudioREG::RegNotifyStart(BASE, hKey, oEvent), 1234U);
    EXPECT_EQ(hKey, nullptr);
    EXPECT_TRUE(SetEvent(oEvent));
    ExpectErrors({"RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, pEventHandle, TRUE)"}, 1234);
    EXPECT_EQ(CountLog("Fail to Regist Notify Change KeyPath:"), 2U);

    control::FailNext("CreateEventW", 8);
    SetRegistry("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other", "Number", 1);
    EXPECT_EQ(CAudioREG::RegNotifyStart("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other", hKey, hEvent), 6U);
    EXPECT_EQ(hKey, nullptr);
    ExpectErrors({"pEventHandle", "Fail to Regist Notify Change KeyPath:HKEY_LOCAL_MACHINE\\SOFTWARE\\Other"}, 6);
}

} // namespace
