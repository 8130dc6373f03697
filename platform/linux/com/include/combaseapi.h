// The component object model's base: task memory, ids as text, finding and building classes.
#pragma once

#include <rpcdce.h>
#include <unknwn.h>
#include <wtypesbase.h>

#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
#define STDAPI EXTERN_C HRESULT STDMETHODCALLTYPE
#define PURE = 0

#define CLSCTX_INPROC_SERVER 0x1

#define COINIT_MULTITHREADED 0x0
#define COINIT_APARTMENTTHREADED 0x2

// Memory that one side of a call gives and the other frees. Any thread.
EXTERN_C LPVOID WINAPI CoTaskMemAlloc(SIZE_T cb);
EXTERN_C void WINAPI CoTaskMemFree(LPVOID pv);

// Text of an id in braces, upper-case; the caller frees it with CoTaskMemFree.
EXTERN_C HRESULT WINAPI StringFromCLSID(REFCLSID rclsid, LPOLESTR* lplpsz);
// Number of characters with the end's zero, 39, or 0 if the room is too small.
EXTERN_C int WINAPI StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax);
// A new random id.
EXTERN_C HRESULT WINAPI CoCreateGuid(GUID* pguid);
// Takes the text form in braces only; CO_E_CLASSSTRING otherwise.
EXTERN_C HRESULT WINAPI CLSIDFromString(LPCOLESTR lpsz, CLSID* pclsid);

EXTERN_C HRESULT WINAPI CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit);
EXTERN_C void WINAPI CoUninitialize(void);

typedef PVOID PSECURITY_DESCRIPTOR;
typedef struct tagSOLE_AUTHENTICATION_SERVICE SOLE_AUTHENTICATION_SERVICE;
enum tagEOLE_AUTHENTICATION_CAPABILITIES
{
    EOAC_NONE = 0
};

// The process's own settings, once: RPC_E_TOO_LATE afterwards. Nothing here depends on them.
EXTERN_C HRESULT WINAPI CoInitializeSecurity(PSECURITY_DESCRIPTOR pSecDesc, LONG cAuthSvc,
                                             SOLE_AUTHENTICATION_SERVICE* asAuthSvc, void* pReserved1,
                                             DWORD dwAuthnLevel, DWORD dwImpLevel, void* pAuthList,
                                             DWORD dwCapabilities, void* pReserved3);
EXTERN_C HRESULT WINAPI CoSetProxyBlanket(IUnknown* pProxy, DWORD dwAuthnSvc, DWORD dwAuthzSvc,
                                          OLECHAR* pServerPrincName, DWORD dwAuthnLevel, DWORD dwImpLevel,
                                          RPC_AUTH_IDENTITY_HANDLE pAuthInfo, DWORD dwCapabilities);

// Finds the class through HKEY_CLASSES_ROOT\CLSID\<id>\InprocServer32 and asks its module. The locator of the embedded
// controller's method is the layer's own, where the machine has a controller.
// CO_E_NOTINITIALIZED before CoInitializeEx, REGDB_E_CLASSNOTREG for an unknown class, CO_E_DLLNOTFOUND for a missing
// module, CO_E_ERRORINDLL for one without DllGetClassObject, else the module's own result.
EXTERN_C HRESULT WINAPI CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, LPVOID pvReserved, REFIID riid,
                                         LPVOID* ppv);
EXTERN_C HRESULT WINAPI CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid,
                                         LPVOID* ppv);
// Unloads the modules that say they can be.
EXTERN_C void WINAPI CoFreeUnusedLibraries(void);
