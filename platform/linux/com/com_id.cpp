// Ids of the component object model as text, and memory that crosses its interfaces.
#include "base/failure.h"

#include <combaseapi.h>
#include <windows.h>

#include <sys/random.h>

#include <cstdio>
#include <cstdlib>
#include <cwchar>

EXTERN_C const IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
EXTERN_C const IID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

namespace
{
constexpr int c_iIdTextLen = 38; // "{D3BDE93A-50C2-439A-B238-44F1CB5055B0}"
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
    if (lpsz == nullptr || pclsid == nullptr)
        return E_INVALIDARG;
    BYTE* const p = pclsid->Data4;
    *pclsid = CLSID{};
    swscanf(lpsz, L"{%8x-%4hx-%4hx-%2hhx%2hhx-%2hhx%2hhx%2hhx%2hhx%2hhx%2hhx}", &pclsid->Data1, &pclsid->Data2,
            &pclsid->Data3, p, p + 1, p + 2, p + 3, p + 4, p + 5, p + 6, p + 7);
    OLECHAR strForm[c_iIdTextLen + 1];
    StringFromGUID2(*pclsid, strForm, c_iIdTextLen + 1);
    return wcscasecmp(lpsz, strForm) == 0 ? S_OK : CO_E_CLASSSTRING; // the scan is more lenient than the form
}
