// The registry's calls: arguments, buffers and text forms in front of the open keys.
#include "base/failure.h"
#include "platform/control/machine_native.h"
#include "registry/registry_keys.h"
#include "registry/registry_text.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr DWORD c_dwLegalFilter = 0xF;
constexpr DWORD c_dwThreadAgnostic = 0x10000000;

std::string Narrow(LPCSTR pText)
{
    return pText == nullptr ? "" : pText;
}

std::string Narrow(LPCWSTR pText)
{
    return pText == nullptr ? "" : Utf8FromWide(pText, wcslen(pText));
}

// Whether the call was told to fail, and the code.
bool IsToldTo(const char* pCall, LSTATUS& lResult)
{
    if (!IsToldToFail(pCall))
        return false;
    lResult = static_cast<LSTATUS>(GetLastError());
    return true;
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
    if (std::any_of(strName.begin(), strName.end(), [](char c) { return c > 0 && c < 0x20; }))
        return ERROR_INVALID_PARAMETER; // the file's lines can't hold it
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
    if (IsToldTo("RegOpenKeyExA", lResult))
        return lResult;
    if (phkResult == nullptr)
        return ERROR_INVALID_PARAMETER;
    *phkResult = nullptr;
    return CRegistry::Instance().Open(hKey, Narrow(lpSubKey), samDesired, phkResult);
}

EXTERN_C LSTATUS WINAPI RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD, LPSTR, DWORD, REGSAM samDesired,
                                        const LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegCreateKeyExA", lResult))
        return lResult;
    return CreateKey(hKey, Narrow(lpSubKey), samDesired, phkResult, lpdwDisposition);
}

EXTERN_C LSTATUS WINAPI RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD, LPWSTR, DWORD, REGSAM samDesired,
                                        const LPSECURITY_ATTRIBUTES, PHKEY phkResult, LPDWORD lpdwDisposition)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegCreateKeyExW", lResult))
        return lResult;
    return CreateKey(hKey, Narrow(lpSubKey), samDesired, phkResult, lpdwDisposition);
}

EXTERN_C LSTATUS WINAPI RegCloseKey(HKEY hKey)
{
    return CRegistry::Instance().Close(hKey);
}

EXTERN_C LSTATUS WINAPI RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD, LPDWORD lpType, LPBYTE lpData,
                                         LPDWORD lpcbData)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegQueryValueExA", lResult))
        return lResult;
    if (lpData != nullptr && lpcbData == nullptr)
        return ERROR_INVALID_PARAMETER;
    const std::string strFolded = FoldName(Narrow(lpValueName));
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
    if (IsToldTo("RegSetValueExA", lResult))
        return lResult;
    if (lpData == nullptr && cbData > 0)
        return ERROR_NOACCESS;
    return SetValue(hKey, Narrow(lpValueName), dwType, {lpData, lpData + cbData});
}

EXTERN_C LSTATUS WINAPI RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD, DWORD dwType, const BYTE* lpData,
                                       DWORD cbData)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegSetValueExW", lResult))
        return lResult;
    if (lpData == nullptr && cbData > 0)
        return ERROR_NOACCESS;
    std::vector<BYTE> vecData(lpData, lpData + cbData);
    if (IsTextType(dwType))
    {
        std::wstring strText(cbData / sizeof(WCHAR), L'\0');
        memcpy(strText.data(), vecData.data(), strText.size() * sizeof(WCHAR));
        const std::string strNarrow = Utf8FromWide(strText.data(), strText.size());
        vecData.assign(strNarrow.begin(), strNarrow.end());
    }
    return SetValue(hKey, Narrow(lpValueName), dwType, std::move(vecData));
}

EXTERN_C LSTATUS WINAPI RegDeleteValueA(HKEY hKey, LPCSTR lpValueName)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegDeleteValueA", lResult))
        return lResult;
    const auto fnDelete = [&](RegistryKey& oKey) -> LSTATUS
    { return oKey.mapValues.erase(FoldName(Narrow(lpValueName))) > 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND; };
    return CRegistry::Instance().Write(hKey, fnDelete);
}

EXTERN_C LSTATUS WINAPI RegDeleteKeyExA(HKEY hKey, LPCSTR lpSubKey, REGSAM, DWORD)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegDeleteKeyExA", lResult))
        return lResult;
    return lpSubKey == nullptr ? ERROR_INVALID_PARAMETER : CRegistry::Instance().DeleteKey(hKey, lpSubKey);
}

EXTERN_C LSTATUS WINAPI RegDeleteKeyExW(HKEY hKey, LPCWSTR lpSubKey, REGSAM, DWORD)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegDeleteKeyExW", lResult))
        return lResult;
    return lpSubKey == nullptr ? ERROR_INVALID_PARAMETER : CRegistry::Instance().DeleteKey(hKey, Narrow(lpSubKey));
}

EXTERN_C LSTATUS WINAPI RegEnumKeyExA(HKEY hKey, DWORD dwIndex, LPSTR lpName, LPDWORD lpcchName, LPDWORD, LPSTR lpClass,
                                      LPDWORD lpcchClass, LPFILETIME lpftLastWriteTime)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegEnumKeyExA", lResult))
        return lResult;
    if (lpName == nullptr || lpcchName == nullptr)
        return ERROR_INVALID_PARAMETER;
    std::string strName;
    const auto fnEnum = [&](const CRegistryTree& oTree, const RegistryKey& oKey) -> LSTATUS
    { return oTree.SubkeyName(oKey.strPath, dwIndex, strName) ? ERROR_SUCCESS : ERROR_NO_MORE_ITEMS; };
    lResult = CRegistry::Instance().Read(hKey, KEY_ENUMERATE_SUB_KEYS, fnEnum);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    // Keys of this registry have neither a class nor a time.
    if (lpClass != nullptr && lpcchClass != nullptr && *lpcchClass > 0)
        *lpClass = '\0';
    if (lpcchClass != nullptr)
        *lpcchClass = 0;
    if (lpftLastWriteTime != nullptr)
        *lpftLastWriteTime = FILETIME{};
    return GiveName(strName, lpName, lpcchName);
}

EXTERN_C LSTATUS WINAPI RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName, LPDWORD,
                                      LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegEnumValueA", lResult))
        return lResult;
    if (lpValueName == nullptr || lpcchValueName == nullptr || (lpData != nullptr && lpcbData == nullptr))
        return ERROR_INVALID_PARAMETER;
    const auto fnEnum = [&](const CRegistryTree&, const RegistryKey& oKey) -> LSTATUS
    {
        if (dwIndex >= oKey.mapValues.size())
            return ERROR_NO_MORE_ITEMS;
        const RegistryValue& oValue = std::next(oKey.mapValues.begin(), static_cast<std::ptrdiff_t>(dwIndex))->second;
        const LSTATUS lName = GiveName(oValue.strName, lpValueName, lpcchValueName);
        return lName != ERROR_SUCCESS ? lName : GiveData(oValue, lpType, lpData, lpcbData);
    };
    return CRegistry::Instance().Read(hKey, KEY_QUERY_VALUE, fnEnum);
}

EXTERN_C LSTATUS WINAPI RegNotifyChangeKeyValue(HKEY hKey, BOOL bWatchSubtree, DWORD dwNotifyFilter, HANDLE hEvent,
                                                BOOL fAsynchronous)
{
    LSTATUS lResult = ERROR_SUCCESS;
    if (IsToldTo("RegNotifyChangeKeyValue", lResult))
        return lResult;
    const DWORD dwFilter = dwNotifyFilter & ~c_dwThreadAgnostic;
    if (dwFilter == 0 || (dwFilter & ~c_dwLegalFilter) != 0 || (fAsynchronous != FALSE && hEvent == nullptr))
        return ERROR_INVALID_PARAMETER;
    const auto pEvent =
        fAsynchronous != FALSE ? KernelObjectAs<CKernelEvent>(hEvent) : std::make_shared<CKernelEvent>(true, false);
    if (pEvent == nullptr)
        return ERROR_INVALID_HANDLE;
    lResult = CRegistry::Instance().Watch(hKey, bWatchSubtree != FALSE, dwFilter, pEvent);
    if (lResult == ERROR_SUCCESS && fAsynchronous == FALSE)
        pEvent->Wait(INFINITE);
    return lResult;
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
