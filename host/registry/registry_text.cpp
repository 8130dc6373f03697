// The registry as a person types and reads it.
#include "host/registry/registry_text.h"

#include "host/host_error.h"
#include "host/text_format.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace
{

constexpr const char* TEXT_PREFIX = "text:";
constexpr const char* DEFAULT_PARENT = "SOFTWARE";
constexpr const char* DEFAULT_KEY = "ZVAudio";

struct RegistryRoot
{
    const char* pLong;
    const char* pShort;
    HKEY hRoot;
};

const RegistryRoot REGISTRY_ROOTS[] = {
    {"HKEY_LOCAL_MACHINE", "HKLM", HKEY_LOCAL_MACHINE},
    {"HKEY_CLASSES_ROOT", "HKCR", HKEY_CLASSES_ROOT},
    {"HKEY_CURRENT_USER", "HKCU", HKEY_CURRENT_USER},
    {"HKEY_USERS", "HKU", HKEY_USERS},
};

bool IsSameName(const std::string& strLeft, const char* pRight)
{
    return strLeft.size() == std::strlen(pRight) && std::equal(strLeft.begin(), strLeft.end(), pRight,
                                                               [](unsigned char cLeft, unsigned char cRight)
                                                               { return std::toupper(cLeft) == std::toupper(cRight); });
}

bool IsHex(const std::string& strText)
{
    return strText.compare(0, 2, "0x") == 0 || strText.compare(0, 2, "0X") == 0;
}

bool IsNumber(const std::string& strText)
{
    const bool bHex = IsHex(strText);
    const auto itDigits = strText.begin() + (bHex ? 2 : 0);
    return itDigits != strText.end() &&
           std::all_of(itDigits, strText.end(),
                       [&](unsigned char cDigit)
                       { return (bHex ? std::isxdigit(cDigit) : std::isdigit(cDigit)) != 0; });
}

DWORD ParseNumber(const std::string& strText)
{
    try
    {
        const unsigned long long ullNumber = std::stoull(strText, nullptr, IsHex(strText) ? 16 : 10);
        if (ullNumber <= 0xFFFFFFFF)
            return static_cast<DWORD>(ullNumber);
    }
    catch (const std::out_of_range&)
    {
    }
    throw CHostError(strText + ": a number has 32 bits; for the text write text:" + strText);
}

bool HasTextPrefix(const std::string& strText)
{
    return strText.compare(0, std::strlen(TEXT_PREFIX), TEXT_PREFIX) == 0;
}

RegistryData TextData(const std::string& strText)
{
    RegistryData oData{REG_SZ, std::vector<BYTE>(strText.begin(), strText.end())};
    oData.vecBytes.push_back(0);
    return oData;
}

// Data for a value that may already be there with a type that it keeps.
RegistryData DataForPlace(const RegistryPlace& oPlace, const std::string& strText)
{
    RegistryData oOld;
    if (HasTextPrefix(strText) || !ReadRegistryValue(oPlace, oOld))
        return ParseRegistryData(strText);
    if (oOld.dwType == REG_SZ)
        return TextData(strText);
    if (oOld.dwType == REG_DWORD && !IsNumber(strText))
        throw CHostError(FormatRegistryKey(oPlace) + "\\" + oPlace.strValue + ": holds a number; \"" + strText +
                         "\" is none (text:" + strText + " makes it text)");
    return ParseRegistryData(strText);
}

std::string FormatHex(const RegistryData& oData)
{
    std::string strText = "type " + std::to_string(oData.dwType) + ":";
    char strByte[4];
    for (const BYTE byValue : oData.vecBytes)
    {
        std::snprintf(strByte, sizeof(strByte), " %02x", byValue);
        strText += strByte;
    }
    return strText;
}

} // namespace

RegistryPlace ParseRegistryKey(const std::string& strText)
{
    const size_t iEnd = strText.find_last_not_of('\\');
    if (iEnd == std::string::npos)
        throw CHostError("\"" + strText + "\": a registry key is missing");
    const std::string strKey = strText.substr(0, iEnd + 1);
    const size_t iFirst = strKey.find('\\');
    const std::string strFirst = strKey.substr(0, iFirst);
    for (const RegistryRoot& oRoot : REGISTRY_ROOTS)
    {
        if (IsSameName(strFirst, oRoot.pLong) || IsSameName(strFirst, oRoot.pShort))
            return {oRoot.hRoot, iFirst == std::string::npos ? "" : strKey.substr(iFirst + 1), ""};
    }
    const std::string strBelow = IsSameName(strFirst, DEFAULT_KEY) ? strKey : DEFAULT_KEY + ("\\" + strKey);
    return {HKEY_LOCAL_MACHINE, DEFAULT_PARENT + ("\\" + strBelow), ""};
}

RegistryPlace ParseRegistryValue(const std::string& strText)
{
    const size_t iLast = strText.find_last_of('\\');
    if (iLast == std::string::npos || iLast == 0)
        throw CHostError("\"" + strText + "\": KEY\\VALUE is expected");
    RegistryPlace oPlace = ParseRegistryKey(strText.substr(0, iLast));
    oPlace.strValue = strText.substr(iLast + 1);
    if (oPlace.strValue == "@")
        oPlace.strValue.clear();
    return oPlace;
}

RegistryData ParseRegistryData(const std::string& strText)
{
    if (HasTextPrefix(strText))
        return TextData(strText.substr(std::strlen(TEXT_PREFIX)));
    if (!IsNumber(strText))
        return TextData(strText);
    const DWORD dwNumber = ParseNumber(strText);
    RegistryData oData{REG_DWORD, std::vector<BYTE>(sizeof(dwNumber))};
    std::memcpy(oData.vecBytes.data(), &dwNumber, sizeof(dwNumber));
    return oData;
}

void SetRegistryValue(const std::string& strAssignment)
{
    const size_t iEqual = strAssignment.find('=');
    if (iEqual == std::string::npos)
        throw CHostError("\"" + strAssignment + "\": KEY\\VALUE=DATA is expected");
    const RegistryPlace oPlace = ParseRegistryValue(strAssignment.substr(0, iEqual));
    const RegistryData oData = DataForPlace(oPlace, strAssignment.substr(iEqual + 1));
    HKEY hKey = nullptr;
    LSTATUS lResult = RegCreateKeyExA(oPlace.hRoot, oPlace.strKey.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                      KEY_SET_VALUE, nullptr, &hKey, nullptr);
    if (lResult == 0)
    {
        lResult = RegSetValueExA(hKey, oPlace.strValue.c_str(), 0, oData.dwType, oData.vecBytes.data(),
                                 static_cast<DWORD>(oData.vecBytes.size()));
        RegCloseKey(hKey);
    }
    if (lResult != 0)
        throw CHostError(FormatRegistryKey(oPlace) + ": not set, registry error " + std::to_string(lResult));
}

std::string FormatRegistryData(const RegistryData& oData)
{
    DWORD dwNumber = 0;
    if (oData.dwType == REG_DWORD && oData.vecBytes.size() == sizeof(dwNumber))
    {
        std::memcpy(&dwNumber, oData.vecBytes.data(), sizeof(dwNumber));
        return Print("%u (0x%08X)", static_cast<unsigned>(dwNumber), static_cast<unsigned>(dwNumber));
    }
    if (oData.dwType != REG_SZ && oData.dwType != REG_EXPAND_SZ)
        return FormatHex(oData);
    const auto itEnd = std::find(oData.vecBytes.begin(), oData.vecBytes.end(), 0);
    return "\"" + std::string(oData.vecBytes.begin(), itEnd) + "\"";
}

std::string FormatRegistryKey(const RegistryPlace& oPlace)
{
    const auto* pRoot = std::find_if(std::begin(REGISTRY_ROOTS), std::end(REGISTRY_ROOTS),
                                     [&](const RegistryRoot& oRoot) { return oRoot.hRoot == oPlace.hRoot; });
    const std::string strRoot = pRoot != std::end(REGISTRY_ROOTS) ? pRoot->pLong : "";
    return oPlace.strKey.empty() ? strRoot : strRoot + "\\" + oPlace.strKey;
}

bool ReadRegistryValue(const RegistryPlace& oPlace, RegistryData& oData)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExA(oPlace.hRoot, oPlace.strKey.c_str(), 0, KEY_QUERY_VALUE, &hKey) != 0)
        return false;
    // Another process may grow the value between the two calls.
    LSTATUS lResult = ERROR_MORE_DATA;
    for (DWORD dwSize = 0; lResult == ERROR_MORE_DATA;)
    {
        oData.vecBytes.resize(dwSize);
        lResult = RegQueryValueExA(hKey, oPlace.strValue.c_str(), nullptr, &oData.dwType,
                                   dwSize > 0 ? oData.vecBytes.data() : nullptr, &dwSize);
        if (lResult == 0 && dwSize > oData.vecBytes.size())
            lResult = ERROR_MORE_DATA;
        else if (lResult == 0)
            oData.vecBytes.resize(dwSize);
    }
    RegCloseKey(hKey);
    return lResult == 0;
}

DWORD ReadRegistryNumber(const std::string& strValuePath, DWORD dwDefault)
{
    RegistryData oData;
    DWORD dwNumber = dwDefault;
    if (ReadRegistryValue(ParseRegistryValue(strValuePath), oData) && oData.dwType == REG_DWORD &&
        oData.vecBytes.size() == sizeof(dwNumber))
        std::memcpy(&dwNumber, oData.vecBytes.data(), sizeof(dwNumber));
    return dwNumber;
}
