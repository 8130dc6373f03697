// Registry access on a machine of the test's own: values, keys, watches, registration, and what failures log.
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_worker_event.h"
#include "tests/support/logged_machine_test.h"

#include <utility>

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
    SetRegistry(BASE, "Short", REG_BINARY, "\x05");
    SetRegistry(BASE, "Open", REG_BINARY, "open"); // text without its zero
    const std::string strNearly(1022, 'N');
    const std::string strFull(1024, 'F');
    SetRegistry(BASE, "Nearly", REG_SZ, strNearly + '\0');
    SetRegistry(BASE, "Full", REG_BINARY, strFull);
    SetRegistry(BASE, "Large", REG_BINARY, std::string(1025, 'L'));
    const auto fHex = [](const std::string& strBytes)
    { return CAudioSTR::ToHexString(reinterpret_cast<const BYTE*>(strBytes.data()), strBytes.size()); };
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
        {"Nearly", 0x4E4E4E4E, strNearly, fHex(strNearly + '\0')},
        {"Full", 0x46464646, strFull, fHex(strFull)},
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
    HKEY hKey = nullptr;
    DWORD dwType = 0;
    ASSERT_EQ(CAudioREG::OpenRegKey(strBase + "\\Sub", KEY_QUERY_VALUE | KEY_WOW64_64KEY, hKey), 0U);
    EXPECT_EQ(RegQueryValueExA(hKey, "Count", nullptr, &dwType, nullptr, nullptr), 0);
    EXPECT_EQ(dwType, DWORD{REG_DWORD});
    RegCloseKey(hKey);
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
    SetRegistry(BASE, "None", REG_NONE, "");
    EXPECT_FALSE(CAudioREG::RegKeyExists(std::string(BASE) + "\\None"));
    ExpectErrors({"dwSzType == REG_NONE"}, 13);
    for (const auto& [pName, hRoot] : {std::pair<const char*, HKEY>{"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
                                       {"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
                                       {"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
                                       {"HKEY_USERS", HKEY_USERS}})
        EXPECT_EQ(CAudioREG::GetRegHeadKey(pName), hRoot) << pName;
}

TEST_F(RegistryTest, WatchWakesOncePerArming)
{
    StartLog();
    const std::string strDeep = std::string(BASE) + "\\New\\Deep";
    CAudioREG::CreateRegKey(strDeep);
    HKEY hKey = nullptr;
    CAudioWorkerEvent oEvent;
    ASSERT_EQ(CAudioREG::RegNotifyStart(BASE, hKey, oEvent), 0U);
    EXPECT_EQ(WaitForSingleObject(oEvent, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    const std::function<void()> CHANGE[] = {
        [] { SetRegistry(BASE, "Number", 1); },
        [&] { SetRegistry(strDeep, "Number", 1); },
        [&] { CAudioREG::CreateRegKey(strDeep + "\\Below"); },
        [&] { CAudioREG::DeleteRegKey(strDeep + "\\Below"); },
    };
    for (const auto& fChange : CHANGE)
    {
        SCOPED_TRACE(&fChange - CHANGE);
        fChange();
        EXPECT_EQ(WaitForSingleObject(oEvent, 10000), static_cast<DWORD>(WAIT_OBJECT_0));
        // Without one of the two nothing happens.
        CAudioREG::RegNotifyReset(nullptr, oEvent);
        CAudioREG::RegNotifyReset(hKey, nullptr);
        EXPECT_EQ(WaitForSingleObject(oEvent, 0), static_cast<DWORD>(WAIT_OBJECT_0));
        CAudioREG::RegNotifyReset(hKey, oEvent);
        SetRegistry(std::string(BASE) + "2", "Number", 1); // a key beside it, whose name only begins alike
        EXPECT_EQ(WaitForSingleObject(oEvent, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    }
    EXPECT_EQ(CountLog("hKey"), std::size(CHANGE));
    EXPECT_EQ(CountLog("hEvent"), std::size(CHANGE));
    CAudioREG::RegNotifyClose(hKey, oEvent);
    CAudioREG::RegNotifyClose(hKey, oEvent);
}

TEST_F(RegistryTest, FailedWatchLeavesNothingOpen)
{
    StartLog();
    HKEY hKey = nullptr;
    CAudioWorkerEvent oEvent;
    ASSERT_TRUE(oEvent.Create());
    EXPECT_EQ(CAudioREG::RegNotifyStart(MISSING, hKey, oEvent), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(oEvent, nullptr);

    machine::FailNext("RegNotifyChangeKeyValue", 1234);
    EXPECT_EQ(CAudioREG::RegNotifyStart(BASE, hKey, oEvent), 1234U);
    EXPECT_EQ(hKey, nullptr);
    EXPECT_EQ(oEvent, nullptr);
    ExpectErrors({"RegNotifyChangeKeyValue(hKey, TRUE, dwFilter, pEventHandle, TRUE)"}, 1234);
    EXPECT_EQ(CountLog("Fail to Regist Notify Change KeyPath:"), 2U);

    machine::FailNext("CreateEventW", 8);
    SetRegistry("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other", "Number", 1);
    EXPECT_EQ(CAudioREG::RegNotifyStart("HKEY_LOCAL_MACHINE\\SOFTWARE\\Other", hKey, oEvent), 6U);
    EXPECT_EQ(hKey, nullptr);
    ExpectErrors({"pEventHandle", "Fail to Regist Notify Change KeyPath:HKEY_LOCAL_MACHINE\\SOFTWARE\\Other"}, 6);
}

} // namespace
