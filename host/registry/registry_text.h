// The registry as a person types and reads it: KEY, KEY\VALUE, DATA.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// A key or a value in it. The root is a predefined handle and needs no closing.
struct RegistryPlace
{
    HKEY hRoot = nullptr;
    std::string strKey;   // below the root
    std::string strValue; // empty: the key's default value
};

struct RegistryData
{
    DWORD dwType = REG_NONE;
    std::vector<BYTE> vecBytes;
};

// KEY begins with HKEY_LOCAL_MACHINE or another root, short HKLM and so on, or is
// ZVAudio itself, HKLM\SOFTWARE\ZVAudio, or is below that.
// Throws CHostError for an empty key part.
RegistryPlace ParseRegistryKey(const std::string& strText);
// KEY\VALUE; the last part is the value's name, "@" or nothing stands for the default value.
RegistryPlace ParseRegistryValue(const std::string& strText);

// A number (decimal or 0x) is a 32-bit number; "text:..." and everything else is text.
// Throws CHostError for a number beyond 32 bits.
RegistryData ParseRegistryData(const std::string& strText);

// Splits KEY\VALUE=DATA at its first "=" and sets it, with the keys that are missing. A value that is text stays text,
// one that is a number takes no text but with "text:". Throws CHostError.
void SetRegistryValue(const std::string& strAssignment);

// One line: 7 (0x00000007), "text", hex bytes.
std::string FormatRegistryData(const RegistryData& oData);
// The whole name with its root.
std::string FormatRegistryKey(const RegistryPlace& oPlace);

// False if there is no such key or value.
bool ReadRegistryValue(const RegistryPlace& oPlace, RegistryData& oData);
// The value if it is a 32-bit number, else dwDefault.
DWORD ReadRegistryNumber(const std::string& strValuePath, DWORD dwDefault);
