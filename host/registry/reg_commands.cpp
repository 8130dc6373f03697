// The commands of `apohost reg`.
#include "host/registry/reg_commands.h"

#include "host/host_error.h"
#include "host/machine/interrupt.h"
#include "host/registry/registry_text.h"

#include <cstdio>
#include <memory>

namespace
{

constexpr size_t NAME_LIMIT = 16384; // characters of a value's name
constexpr DWORD WATCH_FILTER = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET;
constexpr DWORD INTERRUPT_POLL_MS = 200;

struct KeyClose
{
    void operator()(HKEY hKey) const { RegCloseKey(hKey); }
};
using KeyHandle = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyClose>;

struct EventClose
{
    void operator()(HANDLE hEvent) const { CloseHandle(hEvent); }
};
using EventHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, EventClose>;

KeyHandle OpenKey(const RegistryPlace& oPlace, REGSAM dwRights)
{
    HKEY hKey = nullptr;
    const LSTATUS lResult = RegOpenKeyExA(oPlace.hRoot, oPlace.strKey.c_str(), 0, dwRights, &hKey);
    if (lResult == ERROR_FILE_NOT_FOUND)
        throw CHostError(FormatRegistryKey(oPlace) + ": no such key");
    if (lResult != 0)
        throw CHostError(FormatRegistryKey(oPlace) + ": registry error " + std::to_string(lResult));
    return KeyHandle(hKey);
}

// Adds the key's values and subkeys to the tree, names led by strPrefix.
void ReadTree(const RegistryPlace& oPlace, const std::string& strPrefix, RegistryTree& oTree)
{
    HKEY hOpened = nullptr;
    if (RegOpenKeyExA(oPlace.hRoot, oPlace.strKey.c_str(), 0, KEY_READ, &hOpened) != 0)
        return;
    const KeyHandle hKey(hOpened);
    std::string strName(NAME_LIMIT, 0);
    DWORD dwLength = NAME_LIMIT;
    for (DWORD i = 0; RegEnumValueA(hKey.get(), i, strName.data(), &dwLength, nullptr, nullptr, nullptr, nullptr) == 0;
         ++i, dwLength = NAME_LIMIT)
    {
        RegistryPlace oValue = oPlace;
        oValue.strValue = strName.substr(0, dwLength);
        RegistryData oData;
        if (ReadRegistryValue(oValue, oData))
            oTree[strPrefix + (oValue.strValue.empty() ? "@" : oValue.strValue)] = FormatRegistryData(oData);
    }
    dwLength = NAME_LIMIT;
    for (DWORD i = 0; RegEnumKeyExA(hKey.get(), i, strName.data(), &dwLength, nullptr, nullptr, nullptr, nullptr) == 0;
         ++i, dwLength = NAME_LIMIT)
    {
        const std::string strSubKey = strName.substr(0, dwLength);
        oTree[strPrefix + strSubKey + "\\"] = "";
        RegistryPlace oSubKey = oPlace;
        oSubKey.strKey += (oSubKey.strKey.empty() ? "" : "\\") + strSubKey;
        ReadTree(oSubKey, strPrefix + strSubKey + "\\", oTree);
    }
}

RegistryTree ReadTree(const RegistryPlace& oPlace)
{
    RegistryTree oTree;
    ReadTree(oPlace, "", oTree);
    return oTree;
}

std::string FormatEntry(const RegistryTree::value_type& oEntry)
{
    return oEntry.second.empty() ? oEntry.first : oEntry.first + " = " + oEntry.second;
}

} // namespace

std::string FormatChanges(const RegistryTree& oBefore, const RegistryTree& oAfter)
{
    std::string strChanges;
    for (const auto& oEntry : oBefore)
    {
        if (oAfter.count(oEntry.first) == 0)
            strChanges += "- " + FormatEntry(oEntry) + "\n";
    }
    for (const auto& oEntry : oAfter)
    {
        const auto itBefore = oBefore.find(oEntry.first);
        if (itBefore == oBefore.end())
            strChanges += "+ " + FormatEntry(oEntry) + "\n";
        else if (itBefore->second != oEntry.second)
            strChanges += "~ " + FormatEntry(oEntry) + ", was " + itBefore->second + "\n";
    }
    return strChanges;
}

void RegGet(const std::string& strPlace)
{
    const RegistryPlace oPlace = ParseRegistryValue(strPlace);
    RegistryData oData;
    if (!ReadRegistryValue(oPlace, oData))
        throw CHostError(FormatRegistryKey(oPlace) + "\\" + (oPlace.strValue.empty() ? "@" : oPlace.strValue) +
                         ": no such value");
    std::printf("%s\n", FormatRegistryData(oData).c_str());
}

void RegSet(const std::string& strAssignment)
{
    SetRegistryValue(strAssignment);
}

void RegList(const std::string& strKey)
{
    const RegistryPlace oPlace = ParseRegistryKey(strKey);
    OpenKey(oPlace, KEY_READ);
    std::printf("%s\n", FormatRegistryKey(oPlace).c_str());
    for (const auto& oEntry : ReadTree(oPlace))
        std::printf("  %s\n", FormatEntry(oEntry).c_str());
}

void RegWatch(const std::string& strKey)
{
    const RegistryPlace oPlace = ParseRegistryKey(strKey);
    KeyHandle hKey = OpenKey(oPlace, KEY_READ);
    const EventHandle hEvent(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    CatchInterrupts(false);
    RegistryTree oBefore;
    bool bFirst = true;
    while (!IsInterrupted())
    {
        // Armed before the tree is read: no change falls between.
        const LSTATUS lResult = RegNotifyChangeKeyValue(hKey.get(), TRUE, WATCH_FILTER, hEvent.get(), TRUE);
        if (lResult != 0)
            throw CHostError(FormatRegistryKey(oPlace) + ": the key is gone, registry error " +
                             std::to_string(lResult));
        const RegistryTree oAfter = ReadTree(oPlace);
        std::printf("%s", bFirst ? ("watching " + FormatRegistryKey(oPlace) + "\n").c_str()
                                 : FormatChanges(oBefore, oAfter).c_str());
        std::fflush(stdout);
        oBefore = oAfter;
        bFirst = false;
        while (!IsInterrupted() && WaitForSingleObject(hEvent.get(), INTERRUPT_POLL_MS) != WAIT_OBJECT_0)
        {
        }
    }
}
