// Reads, writes and lists registry values and keys.
#include "audioapi/audio_api_registry.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr DWORD REG_BUFFER_SIZE = 1024; // bytes of the largest value that is read

// An open key, closed with the scope.
class CRegKey
{
public:
    CRegKey(const std::string& strPath, REGSAM iRights)
        : m_dwResult(CAudioREG::OpenRegKey(strPath, iRights, m_khHandle))
    {
    }
    ~CRegKey()
    {
        if (m_dwResult == 0)
            RegCloseKey(m_khHandle);
    }
    CRegKey(const CRegKey&) = delete;
    CRegKey& operator=(const CRegKey&) = delete;

    DWORD Result() const { return m_dwResult; }
    HKEY Handle() const { return m_khHandle; }

private:
    HKEY m_khHandle = nullptr;
    DWORD m_dwResult;
};

constexpr REGSAM READ_RIGHTS = KEY_QUERY_VALUE | KEY_WOW64_64KEY;
constexpr REGSAM WRITE_RIGHTS = KEY_SET_VALUE | KEY_WOW64_64KEY;
constexpr REGSAM ENUM_RIGHTS = KEY_ENUMERATE_SUB_KEYS | KEY_WOW64_64KEY;

// All of these log at the operation's site. Logs what kind of access to the value failed; gives the code back.
DWORD ReportValue(const AudioLogSite& oSite, DWORD dwResult, const char* pText, const std::string& strPath,
                  const std::string& strKeyName)
{
    if (dwResult != 0)
        AUDIO_LOG_AT(oSite, AUDIO_LEVEL_ERROR, dwResult, pText + strPath + "\\" + strKeyName);
    return dwResult;
}

// Logs the failed call itself, when the operation has a text for it.
DWORD ReportCall(const AudioLogSite& oSite, LSTATUS lResult, const char* pText)
{
    if (lResult != 0 && pText != nullptr)
        AudioLogFailure(oSite, lResult, pText);
    return static_cast<DWORD>(lResult);
}

// The body of the three reads. dwSize takes the value's size in bytes.
DWORD QueryRegValue(const AudioLogSite& oSite, const std::string& strPath, const std::string& strKeyName,
                    BYTE (&cBuf)[REG_BUFFER_SIZE], DWORD& dwSize, const char* pCallText)
{
    std::memset(cBuf, 0, sizeof(cBuf));
    dwSize = REG_BUFFER_SIZE;
    const CRegKey oKey(strPath, READ_RIGHTS);
    DWORD dwResult = oKey.Result();
    if (dwResult == 0)
        dwResult = ReportCall(
            oSite, RegQueryValueExA(oKey.Handle(), strKeyName.c_str(), nullptr, nullptr, cBuf, &dwSize), pCallText);
    return ReportValue(oSite, dwResult, "Fail to Read Reg Value KeyPath:", strPath, strKeyName);
}

// The body of both writes.
DWORD SetRegValue(const AudioLogSite& oSite, const std::string& strPath, const std::string& strKeyName, DWORD dwType,
                  const void* pData, size_t iDataSize, const char* pCallText)
{
    const CRegKey oKey(strPath, WRITE_RIGHTS);
    DWORD dwResult = oKey.Result();
    if (dwResult == 0)
        dwResult = ReportCall(oSite,
                              RegSetValueExA(oKey.Handle(), strKeyName.c_str(), 0, dwType,
                                             static_cast<const BYTE*>(pData), static_cast<DWORD>(iDataSize)),
                              pCallText);
    return ReportValue(oSite, dwResult, "Fail to Write Reg Value KeyPath:", strPath, strKeyName);
}
} // namespace

HKEY CAudioREG::GetRegHeadKey(const std::string& strRegHead)
{
    static const struct
    {
        const char* pName;
        HKEY hKey;
    } ROOT_KEY[] = {
        {"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
        {"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
        {"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
        {"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
        {"HKEY_USERS", HKEY_USERS},
    };
    for (const auto& oRoot : ROOT_KEY)
        if (strRegHead == oRoot.pName)
            return oRoot.hKey;
    AUDIOLOG_WARN("Undefine RegRoot Use default HKEY_LOCAL_MACHINE!");
    return HKEY_LOCAL_MACHINE;
}

DWORD CAudioREG::OpenRegKey(const std::string& strPath, REGSAM iRights, HKEY& khHandle)
{
    std::string strRegHead;
    std::string strRegPath;
    CAudioSTR::SplitPair(strPath, strRegHead, strRegPath, "\\");
    return static_cast<DWORD>(RegOpenKeyExA(GetRegHeadKey(strRegHead), strRegPath.c_str(), 0, iRights, &khHandle));
}

DWORD CAudioREG::ReadRegNumber(const AudioLogSite& oSite, const std::string& strPath, const std::string& strKeyName,
                               DWORD& dwValue)
{
    BYTE cBuf[REG_BUFFER_SIZE];
    DWORD dwSize = 0;
    const DWORD dwResult = QueryRegValue(oSite, strPath, strKeyName, cBuf, dwSize, nullptr);
    if (dwResult == 0)
        std::memcpy(&dwValue, cBuf, sizeof(dwValue));
    return dwResult;
}

DWORD CAudioREG::ReadRegValue(const std::string& strPath, const std::string& strKeyName, std::string& strValue)
{
    BYTE cBuf[REG_BUFFER_SIZE];
    DWORD dwSize = 0;
    const DWORD dwResult =
        QueryRegValue(AUDIO_LOG_SITE, strPath, strKeyName, cBuf, dwSize,
                      "RegQueryValueExA(khHandle, strKeyName.c_str(), nullptr, &dwSzType, (LPBYTE)cBuf, &dwSize)");
    if (dwResult == 0)
        strValue.assign(cBuf, std::find(cBuf, cBuf + REG_BUFFER_SIZE, BYTE{0}));
    return dwResult;
}

DWORD CAudioREG::ReadRegBinary(const std::string& strPath, const std::string& strKeyName, std::string& strValue)
{
    BYTE cBuf[REG_BUFFER_SIZE];
    DWORD dwSize = 0;
    const DWORD dwResult =
        QueryRegValue(AUDIO_LOG_SITE, strPath, strKeyName, cBuf, dwSize,
                      "RegQueryValueExA(khHandle, strKeyName.c_str(), nullptr, &dwSzType, cBuf, &dwSize)");
    if (dwResult == 0)
        strValue = CAudioSTR::ToHexString(cBuf, dwSize);
    return dwResult;
}

DWORD CAudioREG::WriteRegValue(const std::string& strPath, const std::string& strKeyName, const std::string& strWValue)
{
    return SetRegValue(AUDIO_LOG_SITE, strPath, strKeyName, REG_SZ, strWValue.c_str(), strWValue.length() + 1, nullptr);
}

DWORD CAudioREG::WriteRegValue(const std::string& strPath, const std::string& strKeyName, DWORD dWValue)
{
    return SetRegValue(AUDIO_LOG_SITE, strPath, strKeyName, REG_DWORD, &dWValue, sizeof(DWORD),
                       "RegSetValueExA(khHandle, strKeyName.c_str(), 0, REG_DWORD, (const BYTE *)(&dWValue), "
                       "sizeof(DWORD))");
}

DWORD CAudioREG::WriteRegValue(const std::string& strFullPath, const std::string& strWValue)
{
    std::string strPath;
    std::string strKeyName;
    CAudioSTR::SplitPair(strFullPath, strPath, strKeyName, "\\", 1);
    return AUDIO_CHECK(WriteRegValue(strPath, strKeyName, strWValue));
}

DWORD CAudioREG::WriteRegValue(const std::string& strFullPath, DWORD dWValue)
{
    std::string strPath;
    std::string strKeyName;
    CAudioSTR::SplitPair(strFullPath, strPath, strKeyName, "\\", 1);
    return AUDIO_CHECK(WriteRegValue(strPath, strKeyName, dWValue));
}

DWORD CAudioREG::DeleteRegValue(const std::string& strPath, const std::string& strKeyName)
{
    const CRegKey oKey(strPath, WRITE_RIGHTS);
    DWORD dwResult = oKey.Result();
    if (dwResult == 0)
    {
        const HKEY khHandle = oKey.Handle();
        dwResult = static_cast<DWORD>(AUDIO_CHECK(RegDeleteValueA(khHandle, strKeyName.c_str())));
    }
    return ReportValue(AUDIO_LOG_SITE, dwResult, "Fail to Delete Reg Value KeyPath:", strPath, strKeyName);
}

void CAudioREG::CreateRegKey(const std::string& strPath)
{
    std::string strRegHead;
    std::string strRegPath;
    CAudioSTR::SplitPair(strPath, strRegHead, strRegPath, "\\");
    HKEY khHandle = nullptr;
    if (AUDIO_CHECK(RegCreateKeyExA(GetRegHeadKey(strRegHead), strRegPath.c_str(), 0, nullptr, 0,
                                    KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, &khHandle, nullptr)) == 0)
        RegCloseKey(khHandle);
}

void CAudioREG::DeleteRegKey(const std::string& strPath)
{
    std::string strRegHead;
    std::string strRegPath;
    CAudioSTR::SplitPair(strPath, strRegHead, strRegPath, "\\");
    AUDIO_CHECK(RegDeleteKeyExA(GetRegHeadKey(strRegHead), strRegPath.c_str(), KEY_WOW64_64KEY, 0));
}

bool CAudioREG::RegKeyExists(const std::string& strFullPath)
{
    std::string strPath;
    std::string strKeyName;
    CAudioSTR::SplitPair(strFullPath, strPath, strKeyName, "\\", 1);
    const CRegKey oKey(strPath, READ_RIGHTS);
    DWORD dwSzType = REG_NONE;
    if (oKey.Result() == 0 &&
        RegQueryValueExA(oKey.Handle(), strKeyName.c_str(), nullptr, &dwSzType, nullptr, nullptr) == 0 &&
        !AUDIO_FAIL_IF(dwSzType == REG_NONE, AUDIO_BAD_DATA))
        return true;
    AUDIOLOG_WARN("Not exist RegKey:" + strFullPath);
    return false;
}

bool CAudioREG::RegPathExists(const std::string& strPath)
{
    const CRegKey oKey(strPath, READ_RIGHTS);
    if (oKey.Result() == 0)
        return true;
    AUDIOLOG_WARN("Not exist RegKey:" + strPath);
    return false;
}

std::vector<std::string> CAudioREG::RegEnumKeyName(const std::string& strPath)
{
    std::vector<std::string> vecName;
    const CRegKey oKey(strPath, ENUM_RIGHTS);
    if (oKey.Result() != 0)
    {
        AUDIOLOG_ERROR(oKey.Result(), "Fail to Enum RegKey Path:" + strPath);
        return vecName;
    }
    char cName[1024];
    for (DWORD dwIndex = 0;; ++dwIndex)
    {
        DWORD dwNameLen = sizeof(cName);
        if (RegEnumKeyExA(oKey.Handle(), dwIndex, cName, &dwNameLen, nullptr, nullptr, nullptr, nullptr) != 0)
            return vecName;
        vecName.emplace_back(cName, dwNameLen);
    }
}
