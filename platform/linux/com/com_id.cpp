// Ids of the component object model as text, and memory that crosses its interfaces.
#include "base/failure.h"

#include <combaseapi.h>
#include <windows.h>

#include <sys/random.h>

#include <cstdio>
#include <cstdlib>

EXTERN_C const IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
EXTERN_C const IID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

namespace
{
constexpr int c_iIdTextLen = 38; // "{D3BDE93A-50C2-439A-B238-44F1CB5055B0}"
constexpr char c_strIdForm[] = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";

// -1 if the character is no hexadecimal digit.
int HexDigit(OLECHAR cDigit)
{
    if (cDigit >= L'0' && cDigit <= L'9')
        return static_cast<int>(cDigit - L'0');
    if (cDigit >= L'A' && cDigit <= L'F')
        return static_cast<int>(cDigit - L'A') + 10;
    if (cDigit >= L'a' && cDigit <= L'f')
        return static_cast<int>(cDigit - L'a') + 10;
    return -1;
}
} // namespace

EXTERN_C LPVOID WINAPI CoTaskMemAlloc(SIZE_T cb)
{
    return malloc(cb > 0 ? cb : 1);
}

EXTERN_C void WINAPI CoTaskMemFree(LPVOID pv)
{
    free(pv);
}

EXTERN_C int WINAPI StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax)
{
    if (lpsz == nullptr || cchMax <= c_iIdTextLen)
        return 0;
    const BYTE* p = rguid.Data4;
    swprintf(lpsz, static_cast<size_t>(cchMax), L"{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", rguid.Data1,
             rguid.Data2, rguid.Data3, p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]);
    return c_iIdTextLen + 1;
}

EXTERN_C HRESULT WINAPI StringFromCLSID(REFCLSID rclsid, LPOLESTR* lplpsz)
{
    if (lplpsz == nullptr)
        return E_INVALIDARG;
    *lplpsz = static_cast<LPOLESTR>(CoTaskMemAlloc((c_iIdTextLen + 1) * sizeof(OLECHAR)));
    if (*lplpsz == nullptr)
        return E_OUTOFMEMORY;
    StringFromGUID2(rclsid, *lplpsz, c_iIdTextLen + 1);
    return S_OK;
}

EXTERN_C HRESULT WINAPI CoCreateGuid(GUID* pguid)
{
    if (IsToldToFail("CoCreateGuid"))
        return HRESULT_FROM_WIN32(GetLastError());
    if (pguid == nullptr)
        return E_INVALIDARG;
    if (getrandom(pguid, sizeof(GUID), 0) != static_cast<ssize_t>(sizeof(GUID)))
        return E_FAIL;
    pguid->Data3 = static_cast<USHORT>((pguid->Data3 & 0x0FFF) | 0x4000); // a random id, and
    pguid->Data4[0] = static_cast<BYTE>((pguid->Data4[0] & 0x3F) | 0x80); // in the form that says so
    return S_OK;
}

EXTERN_C HRESULT WINAPI CLSIDFromString(LPCOLESTR lpsz, CLSID* pclsid)
{
    if (pclsid == nullptr)
        return E_INVALIDARG;
    *pclsid = CLSID{};
    if (lpsz == nullptr)
        return S_OK;

    BYTE cBytes[16] = {};
    size_t iDigits = 0;
    for (int i = 0; i < c_iIdTextLen; i++)
    {
        const int iDigit = HexDigit(lpsz[i]);
        const bool bFits = c_strIdForm[i] == 'x' ? iDigit >= 0 : lpsz[i] == static_cast<OLECHAR>(c_strIdForm[i]);
        if (!bFits)
            return CO_E_CLASSSTRING;
        if (c_strIdForm[i] != 'x')
            continue;
        cBytes[iDigits / 2] = static_cast<BYTE>(cBytes[iDigits / 2] * 16 + iDigit);
        iDigits++;
    }
    if (lpsz[c_iIdTextLen] != 0)
        return CO_E_CLASSSTRING;
    pclsid->Data1 = static_cast<UINT>(cBytes[0]) << 24 | static_cast<UINT>(cBytes[1]) << 16 |
                    static_cast<UINT>(cBytes[2]) << 8 | cBytes[3];
    pclsid->Data2 = static_cast<USHORT>(cBytes[4] << 8 | cBytes[5]);
    pclsid->Data3 = static_cast<USHORT>(cBytes[6] << 8 | cBytes[7]);
    std::memcpy(pclsid->Data4, cBytes + 8, 8);
    return S_OK;
}
