// The registry's calls: arguments, buffers and text forms in front of the open keys.
#include "base/failure.h"
#include "platform/control/machine_native.h"
#include "registry/registry_keys.h"
#include "text/wide.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr DWORD c_dwChanges = REG_NOTIFY_CHANGE_NAME | REG_NOTIFY_CHANGE_LAST_SET; // what there is to watch for

std::string TextOf(LPCSTR pText)
{
    return pText == nullptr ? "" : pText;
}

// Hands a value's data to the caller's buffer, or its size alone.
LSTATUS GiveData(const RegistryValue& oValue, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData)
{
    const DWORD dwSize = static_cast<DWORD>(oValue.vecData.size());
    if (lpType != nullptr)
        *lpType = oValue.dwType;
    if (lpcbData == nullptr)
        return ERROR_SUCCESS;
    const DWORD dwRoom = *lpcbData;
    *lpcbData = dwSize;
    if (lpData == nullptr)
        return ERROR_SUCCESS;
    if (dwRoom < dwSize)
        return ERROR_MORE_DATA;
    std::copy(oValue.vecData.begin(), oValue.vecData.end(), lpData);
    return ERROR_SUCCESS;
}

// Hands a name to the caller's buffer. *lpcchName: its characters, with the zero in, without it out.
LSTATUS GiveName(const std::string& strName, LPSTR lpName, LPDWORD lpcchName)
{
    if (*lpcchName <= strName.size())
        return ERROR_MORE_DATA;
    memcpy(lpName, strName.c_str(), strName.size() + 1);
    *lpcchName = static_cast<DWORD>(strName.size());
    return ERROR_SUCCESS;
}

LSTATUS CreateKey(HKEY hKey, const std::string& strSubKey, REGSAM samDesired, PHKEY phkResult, LPDWORD lpdwDisposition)
{
    if (phkResult == nullptr)
        return ERROR_INVALID_PARAMETER;
    bool bCreated = false;
    const LSTATUS lResult = CRegistry::Instance().Create(hKey, strSubKey, samDesired, phkResult, bCreated);
    if (lResult == ERROR_SUCCESS && lpdwDisposition != nullptr)
        *lpdwDisposition = bCreated ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return lResult;
}

LSTATUS SetValue(HKEY hKey, const std::string& strName, DWORD dwType, std::vector<BYTE> vecData)
{
    if (HasControls(strName))
        return ERROR_INVALID_PARAMETER;
    const auto fnSet = [&](RegistryKey& oKey) -> LSTATUS
    {
        const auto [it, bNew] = oKey.mapValues.try_emplace(FoldName(strName));
        if (bNew)
            it->second.strName = strName;
        it->second.dwType = dwType;
        it->second.vecData = std::move(vecData);
        return ERROR_SUCCESS;
    };
    return CRegistry::Instance().Write(hKey, fnSet);
}
} // namespace

EXTERN_C LSTATUS WINAPI RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, REGSAM samDesired, PHKEY phkResult)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegOpenKeyExA", lResult))
        return lResult;
    if (phkResult == nullptr)
        return ERROR_INVALID_PARAMETER;
    *phkResult = nullptr;
    return CRegistry::Instance().Open(hKey, TextOf(lpSubKey), samDesired, phkResult);
}

EXTERN_C LSTATUS WINAPI RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, LPSTR, DWORD, REGSAM samDesired,
                                        const LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegCreateKeyExA", lResult))
        return lResult;
    return CreateKey(hKey, TextOf(lpSubKey), samDesired, phkResult, lpdwDisposition);
}

EXTERN_C LSTATUS WINAPI RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD, LPWSTR, DWORD, REGSAM samDesired,
                                        const LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegCreateKeyExW", lResult))
        return lResult;
    return CreateKey(hKey, NarrowOf(lpSubKey), samDesired, phkResult, lpdwDisposition);
}

EXTERN_C LSTATUS WINAPI RegCloseKey(HKEY hKey)
{
    return CRegistry::Instance().Close(hKey);
}

EXTERN_C LSTATUS WINAPI RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD, LPDWORD lpType, LPBYTE lpData,
                                         LPDWORD lpcbData)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegQueryValueExA", lResult))
        return lResult;
    if (lpData != nullptr && lpcbData == nullptr)
        return ERROR_INVALID_PARAMETER;
    const std::string strFolded = FoldName(TextOf(lpValueName));
    const auto fnQuery = [&](const CRegistryTree&, const RegistryKey& oKey) -> LSTATUS
    {
        const auto it = oKey.mapValues.find(strFolded);
        return it == oKey.mapValues.end() ? ERROR_FILE_NOT_FOUND : GiveData(it->second, lpType, lpData, lpcbData);
    };
    return CRegistry::Instance().Read(hKey, KEY_QUERY_VALUE, fnQuery);
}

EXTERN_C LSTATUS WINAPI RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD, DWORD dwType, const BYTE* lpData,
                                       DWORD cbData)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegSetValueExA", lResult))
        return lResult;
    if (lpData == nullptr && cbData > 0)
        return ERROR_NOACCESS;
    return SetValue(hKey, TextOf(lpValueName), dwType, {lpData, lpData + cbData});
}

EXTERN_C LSTATUS WINAPI RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD, DWORD dwType, const BYTE* lpData,
                                       DWORD cbData)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegSetValueExW", lResult))
        return lResult;
    if (lpData == nullptr && cbData > 0)
        return ERROR_NOACCESS;
    std::vector<BYTE> vecData(lpData, lpData + cbData);
    if (IsTextType(dwType))
    {
        std::wstring strText(cbData / sizeof(WCHAR), L'\0');
        memcpy(strText.data(), vecData.data(), strText.size() * sizeof(WCHAR));
        const std::string strNarrow = NarrowOf(strText.data(), strText.size());
        vecData.assign(strNarrow.begin(), strNarrow.end());
    }
    return SetValue(hKey, NarrowOf(lpValueName), dwType, std::move(vecData));
}

EXTERN_C LSTATUS WINAPI RegDeleteValueA(HKEY hKey, LPCSTR lpValueName)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegDeleteValueA", lResult))
        return lResult;
    const auto fnDelete = [&](RegistryKey& oKey) -> LSTATUS
    { return oKey.mapValues.erase(FoldName(TextOf(lpValueName))) > 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND; };
    return CRegistry::Instance().Write(hKey, fnDelete);
}

EXTERN_C LSTATUS WINAPI RegDeleteKeyExA(HKEY hKey, LPCSTR lpSubKey, REGSAM, DWORD)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegDeleteKeyExA", lResult))
        return lResult;
    return lpSubKey == nullptr ? ERROR_INVALID_PARAMETER : CRegistry::Instance().DeleteKey(hKey, lpSubKey);
}

EXTERN_C LSTATUS WINAPI RegDeleteKeyExW(HKEY hKey, LPCWSTR lpSubKey, REGSAM, DWORD)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegDeleteKeyExW", lResult))
        return lResult;
    return lpSubKey == nullptr ? ERROR_INVALID_PARAMETER : CRegistry::Instance().DeleteKey(hKey, NarrowOf(lpSubKey));
}

EXTERN_C LSTATUS WINAPI RegEnumKeyExA(HKEY hKey, DWORD dwIndex, LPSTR lpName, LPDWORD lpcchName, LPDWORD, LPSTR,
                                      LPDWORD, LPFILETIME)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegEnumKeyExA", lResult))
        return lResult;
    if (lpName == nullptr || lpcchName == nullptr)
        return ERROR_INVALID_PARAMETER;
    const auto fnEnum = [&](const CRegistryTree& oTree, const RegistryKey& oKey) -> LSTATUS
    {
        std::string strName;
        const bool bFound = oTree.SubkeyName(oKey.strPath, dwIndex, strName);
        return bFound ? GiveName(strName, lpName, lpcchName) : ERROR_NO_MORE_ITEMS;
    };
    return CRegistry::Instance().Read(hKey, KEY_ENUMERATE_SUB_KEYS, fnEnum);
}

EXTERN_C LSTATUS WINAPI RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName, LPDWORD,
                                      LPDWORD, LPBYTE, LPDWORD)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegEnumValueA", lResult))
        return lResult;
    if (lpValueName == nullptr || lpcchValueName == nullptr)
        return ERROR_INVALID_PARAMETER;
    const auto fnEnum = [&](const CRegistryTree&, const RegistryKey& oKey) -> LSTATUS
    {
        if (dwIndex >= oKey.mapValues.size())
            return ERROR_NO_MORE_ITEMS;
        const auto itValue = std::next(oKey.mapValues.begin(), static_cast<std::ptrdiff_t>(dwIndex));
        return GiveName(itValue->second.strName, lpValueName, lpcchValueName);
    };
    return CRegistry::Instance().Read(hKey, KEY_QUERY_VALUE, fnEnum);
}

EXTERN_C LSTATUS WINAPI RegNotifyChangeKeyValue(HKEY hKey, BOOL bWatchSubtree, DWORD dwNotifyFilter, HANDLE hEvent,
                                                BOOL fAsynchronous)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldToFailWith("RegNotifyChangeKeyValue", lResult))
        return lResult;
    if (!bWatchSubtree || (dwNotifyFilter & c_dwChanges) != c_dwChanges || !fAsynchronous)
        return ERROR_INVALID_PARAMETER;
    const auto pEvent = KernelObjectAs<CKernelEvent>(hEvent);
    if (pEvent == nullptr)
        return ERROR_INVALID_HANDLE;
    return CRegistry::Instance().Watch(hKey, pEvent);
}

std::string machine::RegistryFile()
{
    return CRegistry::Instance().File();
}

std::vector<std::string> machine::RegistryErrors()
{
    std::vector<std::string> vecErrors;
    const std::string strFile = RegistryFile();
    for (const RegistryFileError& oError : CRegistry::Instance().Errors())
        vecErrors.push_back(strFile + (oError.iLine > 0 ? ":" + std::to_string(oError.iLine) : "") + ": " +
                            oError.strReason);
    return vecErrors;
}
