// Registration of processing objects with the platform: the key that the audio engine reads.
#include <audioenginebaseapo.h>

#include <cwchar>
#include <new>
#include <string>

namespace
{
class CScopedKey
{
public:
    CScopedKey() = default;
    CScopedKey(const CScopedKey&) = delete;
    CScopedKey& operator=(const CScopedKey&) = delete;
    ~CScopedKey()
    {
        if (m_hKey != nullptr)
            RegCloseKey(m_hKey);
    }

    HKEY m_hKey = nullptr;
};

HRESULT IdText(REFGUID oGuid, std::wstring& strText)
{
    LPOLESTR pText = nullptr;
    const HRESULT hResult = StringFromCLSID(oGuid, &pText);
    if (FAILED(hResult))
        return hResult;
    strText = pText;
    CoTaskMemFree(pText);
    return S_OK;
}

HRESULT ApoKeyPath(REFCLSID clsid, std::wstring& strPath)
{
    std::wstring strId;
    const HRESULT hResult = IdText(clsid, strId);
    strPath = L"AudioEngine\\AudioProcessingObjects\\" + strId;
    return hResult;
}

LSTATUS WriteText(HKEY hKey, const wchar_t* pName, const std::wstring& strText)
{
    const BYTE* pBytes = reinterpret_cast<const BYTE*>(strText.c_str());
    return RegSetValueExW(hKey, pName, 0, REG_SZ, pBytes, static_cast<DWORD>((strText.size() + 1) * sizeof(wchar_t)));
}

// A field of the record need not be closed by a zero.
template <size_t iLen> std::wstring FieldText(const WCHAR (&cText)[iLen])
{
    const WCHAR* pEnd = wmemchr(cText, 0, iLen);
    return pEnd == nullptr ? std::wstring(cText, iLen) : std::wstring(cText);
}

LSTATUS WriteProperties(HKEY hKey, const APO_REG_PROPERTIES& oProperties)
{
    const struct
    {
        const wchar_t* pName;
        DWORD dwValue;
    } oNumbers[] = {
        {L"MajorVersion", oProperties.u32MajorVersion},
        {L"MinorVersion", oProperties.u32MinorVersion},
        {L"Flags", static_cast<DWORD>(oProperties.Flags)},
        {L"MinInputConnections", oProperties.u32MinInputConnections},
        {L"MaxInputConnections", oProperties.u32MaxInputConnections},
        {L"MinOutputConnections", oProperties.u32MinOutputConnections},
        {L"MaxOutputConnections", oProperties.u32MaxOutputConnections},
        {L"MaxInstances", oProperties.u32MaxInstances},
        {L"NumAPOInterfaces", oProperties.u32NumAPOInterfaces},
    };
    LSTATUS lResult = WriteText(hKey, L"FriendlyName", FieldText(oProperties.szFriendlyName));
    if (lResult == ERROR_SUCCESS)
        lResult = WriteText(hKey, L"Copyright", FieldText(oProperties.szCopyrightInfo));
    for (const auto& oNumber : oNumbers)
    {
        if (lResult == ERROR_SUCCESS)
            lResult = RegSetValueExW(hKey, oNumber.pName, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&oNumber.dwValue),
                                     sizeof(oNumber.dwValue));
    }
    return lResult;
}

HRESULT WriteInterfaces(HKEY hKey, const APO_REG_PROPERTIES& oProperties)
{
    const IID* pInterfaces = oProperties.iidAPOInterfaceList;
    for (UINT32 i = 0; i < oProperties.u32NumAPOInterfaces; i++)
    {
        std::wstring strId;
        const HRESULT hResult = IdText(pInterfaces[i], strId);
        if (FAILED(hResult))
            return hResult;
        const LSTATUS lResult = WriteText(hKey, (L"APOInterface" + std::to_wstring(i)).c_str(), strId);
        if (lResult != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(static_cast<DWORD>(lResult));
    }
    return S_OK;
}
} // namespace

STDAPI RegisterAPO(const APO_REG_PROPERTIES* pProperties)
try
{
    if (pProperties == nullptr)
        return E_POINTER;
    std::wstring strPath;
    const HRESULT hResult = ApoKeyPath(pProperties->clsid, strPath);
    if (FAILED(hResult))
        return hResult;
    LSTATUS lResult = RegDeleteKeyExW(HKEY_CLASSES_ROOT, strPath.c_str(), KEY_WOW64_64KEY, 0);
    if (lResult != ERROR_SUCCESS && lResult != ERROR_FILE_NOT_FOUND)
        return HRESULT_FROM_WIN32(static_cast<DWORD>(lResult));
    CScopedKey oKey;
    lResult = RegCreateKeyExW(HKEY_CLASSES_ROOT, strPath.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                              KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr, &oKey.m_hKey, nullptr);
    if (lResult == ERROR_SUCCESS)
        lResult = WriteProperties(oKey.m_hKey, *pProperties);
    if (lResult != ERROR_SUCCESS)
        return HRESULT_FROM_WIN32(static_cast<DWORD>(lResult));
    return WriteInterfaces(oKey.m_hKey, *pProperties);
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

STDAPI UnregisterAPO(REFCLSID clsid)
try
{
    std::wstring strPath;
    const HRESULT hResult = ApoKeyPath(clsid, strPath);
    if (FAILED(hResult))
        return hResult;
    const LSTATUS lResult = RegDeleteKeyExW(HKEY_CLASSES_ROOT, strPath.c_str(), KEY_WOW64_64KEY, 0);
    return lResult == ERROR_SUCCESS ? S_OK : HRESULT_FROM_WIN32(static_cast<DWORD>(lResult));
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
