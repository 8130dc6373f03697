// The registry of the native machine: values and keys, rights, the file's text, watches.
#include "platform/control/machine_native.h"
#include "platform/linux/registry/registry_follower.h"
#include "tests/support/machine_test.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <new>
#include <thread>

namespace
{
// An event, manual reset, closed with the scope.
class ScopedEvent
{
public:
    ScopedEvent() : m_hEvent(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}
    ScopedEvent(const ScopedEvent&) = delete;
    ~ScopedEvent() { CloseHandle(m_hEvent); }
    bool IsSet(DWORD dwMilliseconds = 0) const
    {
        return WaitForSingleObject(m_hEvent, dwMilliseconds) == WAIT_OBJECT_0;
    }

    const HANDLE m_hEvent;
};

class ScopedKey
{
public:
    explicit ScopedKey(const char* pPath, REGSAM samRights = KEY_ALL_ACCESS)
    {
        EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, pPath, 0, nullptr, 0, samRights, nullptr, &m_hKey, nullptr), 0);
    }
    ScopedKey(const ScopedKey&) = delete;
    ~ScopedKey() { RegCloseKey(m_hKey); }

    HKEY m_hKey = nullptr;
};

void Watch(const ScopedKey& oKey, const ScopedEvent& oEvent)
{
    EXPECT_EQ(RegNotifyChangeKeyValue(oKey.m_hKey, TRUE, 15, oEvent.m_hEvent, TRUE), 0);
}

LSTATUS Set(HKEY hKey, const char* pName, DWORD dwType, const std::string& strData)
{
    return RegSetValueExA(hKey, pName, 0, dwType, reinterpret_cast<const BYTE*>(strData.data()),
                          static_cast<DWORD>(strData.size()));
}

LSTATUS SetNumber(HKEY hKey, const char* pName, DWORD dwValue)
{
    return Set(hKey, pName, REG_DWORD, std::string(reinterpret_cast<const char*>(&dwValue), sizeof(dwValue)));
}

// "type:bytes" of a value, or the error's code.
std::string Get(HKEY hKey, const char* pName)
{
    DWORD dwType = 0;
    BYTE cData[1024];
    DWORD dwSize = sizeof(cData);
    const LSTATUS lResult = RegQueryValueExA(hKey, pName, nullptr, &dwType, cData, &dwSize);
    if (lResult != ERROR_SUCCESS)
        return "error " + std::to_string(lResult);
    return std::to_string(dwType) + ":" + std::string(cData, cData + dwSize);
}

void WriteRegistryFile(const std::string& strText)
{
    std::ofstream(machine::RegistryFile(), std::ios::binary) << strText;
}

// A key's line: that name so many times, each below the last, below SOFTWARE.
std::string Nested(int iTimes, const std::string& strName)
{
    std::string strLine = "[HKEY_LOCAL_MACHINE\\SOFTWARE";
    while (iTimes-- > 0)
        strLine += "\\" + strName;
    return strLine + "]\n";
}

using PlatformRegistryTest = MachineTest;

TEST_F(PlatformRegistryTest, EveryKindOfValueSurvivesTheFile)
{
    std::string strAllBytes;
    for (int i = 0; i < 256; i++)
        strAllBytes += static_cast<char>(i);
    const struct
    {
        const char* pName;
        DWORD dwType;
        std::string strData;
        const char* pLine; // what stands in the file
    } oCases[] = {
        {"", REG_SZ, std::string("default\0", 8), "@=\"default\""},
        {"Gr\xC3\xB6\xC3\x9F"
         "e\\\"",
         REG_SZ, std::string("\xE2\x82\xAC\0", 4), "\"=\"\xE2\x82\xAC\""},
        {"Open", REG_SZ, "ab", "\"Open\"=hex(1):61,00,62,00"},
        {"Lines", REG_SZ, std::string("a\nb\xFF\xF0\x9F\x98\x80\0", 9),
         "\"Lines\"=hex(1):61,00,0a,00,62,00,ff,dc,3d,d8,00,de,00,00"},
        {"Multi", REG_MULTI_SZ, std::string("a\0b\0\0", 5), "\"Multi\"=hex(7):61,00,00,00,62,00,00,00,00,00"},
        {"Number", REG_DWORD, std::string("\x2A\x00\x00\x80", 4), "\"Number\"=dword:8000002a"},
        {"Wide", REG_QWORD, "\x01\x02\x03\x04\x05\x06\x07\x08", "\"Wide\"=hex(b):01,02,03,04,05,06,07,08"},
        {"None", REG_NONE, "", "\"None\"=hex(0):"},
        {"Bytes", REG_BINARY, strAllBytes,
         "\"Bytes\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,14,\\\n  15,"},
    };
    {
        ScopedKey oKey("SOFTWARE\\Test Maker\\Kinds");
        for (const auto& oCase : oCases)
            EXPECT_EQ(Set(oKey.m_hKey, oCase.pName, oCase.dwType, oCase.strData), 0) << oCase.pName;
    }
    const std::string strText = HostFile(machine::RegistryFile());
    machine::UseFolder(machine::Folder()); // all that is known now comes from the file
    ScopedKey oKey("software\\TEST maker\\kinds");
    for (const auto& oCase : oCases)
    {
        EXPECT_NE(strText.find(oCase.pLine), std::string::npos) << oCase.pName << " in\n" << strText;
        EXPECT_EQ(Get(oKey.m_hKey, oCase.pName), std::to_string(oCase.dwType) + ":" + oCase.strData) << oCase.pName;
    }
}

TEST_F(PlatformRegistryTest, ReadsHandWrittenFilesAndSaysWhatIsWrong)
{
    std::string strLongest;
    while (strLongest.size() < 2 * 255)
        strLongest += "\xC3\xA4"; // a letter of two bytes
    WriteRegistryFile("Windows Registry Editor Version 5.00\r\n"
                      "; the machine of a test\r\n"
                      "[HKEY_CLASSES_ROOT\\CLSID\\{1}]\r\n"
                      "@=\"class\"\r\n"
                      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]\r\n"
                      "; volume\r\n"
                      " \"Volume\" = dword:1F\r\n"
                      "\"Data\"=hex:01,\\\r\n"
                      "  02,03\r\n"
                      "\"Bad\"=dword:xyz\r\n"
                      "\"Gone\"=\"x\"\r\n"
                      "\"Gone\"=-\r\n"
                      "\"Open\"=\"C:\\\r\n"
                      "\"Next\"=\"ok\"\r\n"
                      "what is this\r\n"
                      "[HKEY_NOWHERE\\A]\r\n"
                      "\"Lost\"=\"x\"\r\n"
                      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\B2\r\n" +
                      Nested(511, "b") + Nested(512, "b") + Nested(1, strLongest) + Nested(1, strLongest + "n") +
                      "; end");
    const struct
    {
        int iLine;
        const char* pReason;
    } oErrors[] = {{10, "\"xyz\" is no number"}, {13, "closing quote"}, {15, "no key, no value"},
                   {16, "root is unknown"},      {18, "closing ]"},     {20, "512 levels"},
                   {22, "255 characters"}};
    const std::vector<std::string> vecErrors = machine::RegistryErrors();
    ASSERT_EQ(vecErrors.size(), std::size(oErrors));
    for (size_t i = 0; i < vecErrors.size(); i++)
    {
        EXPECT_EQ(vecErrors[i].rfind(machine::RegistryFile() + ":" + std::to_string(oErrors[i].iLine) + ": ", 0), 0U)
            << vecErrors[i];
        EXPECT_NE(vecErrors[i].find(oErrors[i].pReason), std::string::npos) << vecErrors[i];
    }

    ScopedKey oKey("SOFTWARE\\A");
    EXPECT_EQ(Get(oKey.m_hKey, "volume"), std::string("4:\x1F\0\0\0", 6));
    EXPECT_EQ(Get(oKey.m_hKey, "Data"), "3:\x01\x02\x03");
    EXPECT_EQ(Get(oKey.m_hKey, "Next"), std::string("1:ok\0", 5));
    EXPECT_EQ(Get(oKey.m_hKey, "Gone"), "error 2");
    ScopedKey oClass("SOFTWARE\\Classes\\CLSID\\{1}");
    EXPECT_EQ(Get(oClass.m_hKey, nullptr), std::string("1:class\0", 8));

    // A write loses neither comments nor what couldn't be read.
    ASSERT_EQ(SetNumber(oKey.m_hKey, "Volume", 1), 0);
    const std::string strText = HostFile(machine::RegistryFile());
    for (const std::string& strKept :
         {std::string("; the machine of a test\n"), std::string("; volume\n\"Volume\"=dword:00000001\n"),
          std::string("; not read: \"Bad\"=dword:xyz\n"),
          std::string("; not read: [HKEY_NOWHERE\\A]\n; not read: \"Lost\"=\"x\"\n"), std::string("; end\n"),
          "\n" + Nested(511, "b"), "\n" + Nested(1, strLongest), "; not read: " + Nested(512, "b")})
        EXPECT_NE(strText.find(strKept), std::string::npos) << strKept << " in\n" << strText;

    // The form in which the platform itself exports.
    std::string strWide = "\xFF\xFE";
    for (const char c : std::string(
             "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]\r\n\"W\"=\"w\"\r\n"))
        strWide += {c, '\0'};
    WriteRegistryFile(strWide);
    EXPECT_EQ(Get(oKey.m_hKey, "W"), std::string("1:w\0", 4));
}

TEST_F(PlatformRegistryTest, CodesAndRightsAreThePlatforms)
{
    ScopedKey oAll("SOFTWARE\\Rights");
    ScopedKey oChild("SOFTWARE\\Rights\\Child");
    ScopedKey oWriter("SOFTWARE\\Rights", KEY_SET_VALUE | KEY_WOW64_64KEY);
    ScopedKey oReader("SOFTWARE\\Rights", KEY_QUERY_VALUE);
    ASSERT_EQ(SetNumber(oAll.m_hKey, "N", 7), 0);
    char cName[8] = {};
    DWORD dwLen = 0;
    DWORD dwSize = 2;
    const auto fnEnum = [&](HKEY hKey, DWORD dwIndex, DWORD dwRoom)
    {
        dwLen = dwRoom;
        return RegEnumKeyExA(hKey, dwIndex, cName, &dwLen, nullptr, nullptr, nullptr, nullptr);
    };
    HKEY hKey = nullptr;
    const ScopedEvent oEvent;
    const struct
    {
        const char* pWhat;
        LSTATUS lResult;
        LSTATUS lExpected;
    } oCases[] = {
        {"leading backslash", RegOpenKeyExA(HKEY_LOCAL_MACHINE, "\\SOFTWARE", 0, KEY_READ, &hKey), ERROR_BAD_PATHNAME},
        {"short buffer", RegQueryValueExA(oAll.m_hKey, "N", nullptr, nullptr, reinterpret_cast<LPBYTE>(cName), &dwSize),
         ERROR_MORE_DATA},
        {"read by writer", RegQueryValueExA(oWriter.m_hKey, "N", nullptr, nullptr, nullptr, nullptr),
         ERROR_ACCESS_DENIED},
        {"write by reader", SetNumber(oReader.m_hKey, "N", 8), ERROR_ACCESS_DENIED},
        {"watch by reader", RegNotifyChangeKeyValue(oReader.m_hKey, TRUE, 15, oEvent.m_hEvent, TRUE),
         ERROR_ACCESS_DENIED},
        {"short name", fnEnum(oAll.m_hKey, 0, 5), ERROR_MORE_DATA},
        {"past the last", fnEnum(oAll.m_hKey, 1, 8), ERROR_NO_MORE_ITEMS},
        {"delete a parent", RegDeleteKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Rights", KEY_WOW64_64KEY, 0),
         ERROR_ACCESS_DENIED},
        {"a name no line can hold", SetNumber(oAll.m_hKey, "a\nb", 1), ERROR_INVALID_PARAMETER},
        {"enumerate", fnEnum(oAll.m_hKey, 0, 6), ERROR_SUCCESS},
    };
    for (const auto& oCase : oCases)
        EXPECT_EQ(oCase.lResult, oCase.lExpected) << oCase.pWhat;
    EXPECT_EQ(dwSize, 4U); // what the short buffer would have needed
    EXPECT_STREQ(cName, "Child");

    // A key that is made again is another key to those who had the old one open.
    ASSERT_EQ(RegDeleteKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Rights\\Child", KEY_WOW64_64KEY, 0), 0);
    const ScopedKey oAgain("SOFTWARE\\RIGHTS\\child");
    EXPECT_EQ(SetNumber(oChild.m_hKey, "N", 1), ERROR_KEY_DELETED);
    EXPECT_EQ(Get(oAgain.m_hKey, "N"), "error 2");

    // A file that can't be understood as one isn't overwritten.
    std::filesystem::remove(machine::RegistryFile());
    std::filesystem::create_directory(machine::RegistryFile());
    EXPECT_NE(SetNumber(oAll.m_hKey, "N", 1), 0);
    EXPECT_EQ(machine::RegistryErrors().size(), 1U);
}

TEST_F(PlatformRegistryTest, EditorsWakeWatches)
{
    ScopedKey oKey("SOFTWARE\\Edited");
    ASSERT_EQ(SetNumber(oKey.m_hKey, "N", 0), 0);
    std::string strText = HostFile(machine::RegistryFile());
    char& cDigit = strText[strText.find("dword:") + 13];
    // An editor overwrites the file; it may empty it before, or move it away.
    const std::function<void()> aBefore[] = {
        [] {}, [] { WriteRegistryFile(""); },
        [] { std::filesystem::rename(machine::RegistryFile(), machine::RegistryFile() + "~"); }};
    for (const auto& fnBefore : aBefore)
    {
        ++cDigit;
        const ScopedEvent oEvent;
        Watch(oKey, oEvent);
        EXPECT_FALSE(oEvent.IsSet(30));
        fnBefore();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        WriteRegistryFile(strText);
        EXPECT_TRUE(oEvent.IsSet(10000)) << cDigit;
        EXPECT_EQ(Get(oKey.m_hKey, "N")[2], cDigit - '0');
    }

    // A file that stays away is an empty registry after a moment.
    const ScopedEvent oEvent;
    Watch(oKey, oEvent);
    std::filesystem::remove(machine::RegistryFile());
    EXPECT_EQ(Get(oKey.m_hKey, "N").substr(0, 2), "4:");
    EXPECT_TRUE(oEvent.IsSet(10000));
    EXPECT_EQ(Get(oKey.m_hKey, "N"), "error 1018");
}

TEST_F(PlatformRegistryTest, AFollowerOutlivesWhatItsOwnerThrows)
{
    std::atomic<int> iCalls{0};
    CRegistryFollower oFollower(
        [&]
        {
            if (++iCalls == 1)
                throw std::bad_alloc();
            return -1;
        });
    oFollower.Follow(machine::Folder());
    WriteRegistryFile("x");
    EXPECT_TRUE(WaitFor([&] { return iCalls >= 2; })) << "not tried again";
    oFollower.Stop();
    oFollower.Join();
}
} // namespace
