// Component object model: apartments, and classes found through the registry.
#include "com/wmi_objects.h"
#include "text/wide.h"

#include <windows.h>

#include <objbase.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>

namespace
{
typedef HRESULT(STDMETHODCALLTYPE* DllGetClassObjectCall)(REFCLSID, REFIID, LPVOID*);
typedef HRESULT(STDMETHODCALLTYPE* DllCanUnloadNowCall)();

// One loaded server module.
struct ComServer
{
    HMODULE hModule = nullptr;
    DllGetClassObjectCall pGetClassObject = nullptr;
    DllCanUnloadNowCall pCanUnloadNow = nullptr;
    int iCallsInside = 0; // a class is being asked for; not to be unloaded meanwhile
};

// Servers by the name that the registry gives. Of a module's code only DllCanUnloadNow runs under the lock.
struct ComServers
{
    std::mutex oLock;
    std::map<std::string, ComServer> mapServers;
};

ComServers& Servers()
{
    static ComServers* pServers = new ComServers; // threads may still come after the program's end began
    return *pServers;
}

thread_local int t_iInitCount = 0;
thread_local DWORD t_dwApartment = 0;
std::atomic<int> g_iMultiThreaded{0}; // threads in the multithreaded apartment, which every other thread may then use
std::atomic<bool> g_bSecuritySet{false};

bool IsInApartment()
{
    return t_iInitCount > 0 || g_iMultiThreaded > 0;
}

// The server's name in the registry, or empty.
std::string ServerName(REFCLSID rclsid)
{
    OLECHAR strId[40] = {};
    StringFromGUID2(rclsid, strId, 40);
    const std::string strPath = "CLSID\\" + NarrowOf(strId) + "\\InprocServer32";

    HKEY hKey = nullptr;
    if (RegOpenKeyExA(HKEY_CLASSES_ROOT, strPath.c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &hKey) != ERROR_SUCCESS)
        return "";
    char strName[1024] = {};
    DWORD dwType = REG_NONE;
    DWORD dwSize = sizeof(strName) - 1;
    const LSTATUS lResult =
        RegQueryValueExA(hKey, nullptr, nullptr, &dwType, reinterpret_cast<LPBYTE>(strName), &dwSize);
    RegCloseKey(hKey);
    return lResult == ERROR_SUCCESS && (dwType == REG_SZ || dwType == REG_EXPAND_SZ) ? strName : "";
}

template <typename Call> Call ModuleCall(HMODULE hModule, const char* pName)
{
    return reinterpret_cast<Call>(reinterpret_cast<void*>(GetProcAddress(hModule, pName)));
}

// Loads the server or finds it loaded, and marks it as in use.
HRESULT EnterServer(const std::string& strName, DllGetClassObjectCall& pGetClassObject)
{
    const HMODULE hModule = LoadLibraryA(strName.c_str());
    if (hModule == nullptr)
        return CO_E_DLLNOTFOUND;
    std::lock_guard<std::mutex> oGuard(Servers().oLock);
    ComServer& oServer = Servers().mapServers[strName];
    if (oServer.hModule != nullptr)
        FreeLibrary(hModule); // the table holds one reference
    else
    {
        oServer.hModule = hModule;
        oServer.pGetClassObject = ModuleCall<DllGetClassObjectCall>(hModule, "DllGetClassObject");
        oServer.pCanUnloadNow = ModuleCall<DllCanUnloadNowCall>(hModule, "DllCanUnloadNow");
    }
    if (oServer.pGetClassObject == nullptr)
    {
        FreeLibrary(oServer.hModule);
        Servers().mapServers.erase(strName);
        return CO_E_ERRORINDLL;
    }
    oServer.iCallsInside++;
    pGetClassObject = oServer.pGetClassObject;
    return S_OK;
}

void LeaveServer(const std::string& strName)
{
    std::lock_guard<std::mutex> oGuard(Servers().oLock);
    Servers().mapServers[strName].iCallsInside--;
}
} // namespace

EXTERN_C HRESULT WINAPI CoInitializeEx(LPVOID, DWORD dwCoInit)
{
    const DWORD dwApartment = dwCoInit & COINIT_APARTMENTTHREADED;
    if (t_iInitCount > 0 && t_dwApartment != dwApartment)
        return RPC_E_CHANGED_MODE;
    t_dwApartment = dwApartment;
    if (dwApartment == COINIT_MULTITHREADED)
        g_iMultiThreaded++;
    return t_iInitCount++ == 0 ? S_OK : S_FALSE;
}

EXTERN_C void WINAPI CoUninitialize(void)
{
    if (t_iInitCount == 0)
        return;
    t_iInitCount--;
    if (t_dwApartment == COINIT_MULTITHREADED)
        g_iMultiThreaded--;
}

EXTERN_C HRESULT WINAPI CoInitializeSecurity(PSECURITY_DESCRIPTOR, LONG, SOLE_AUTHENTICATION_SERVICE*, void*, DWORD,
                                             DWORD, void*, DWORD, void*)
{
    if (!IsInApartment())
        return CO_E_NOTINITIALIZED;
    return g_bSecuritySet.exchange(true) ? RPC_E_TOO_LATE : S_OK;
}

// Server and caller are one process, so that there is nothing to set.
EXTERN_C HRESULT WINAPI CoSetProxyBlanket(IUnknown* pProxy, DWORD, DWORD, OLECHAR*, DWORD, DWORD,
                                          RPC_AUTH_IDENTITY_HANDLE, DWORD)
{
    HRESULT hResult = S_OK;
    if (pProxy == nullptr)
        return E_INVALIDARG;
    return IsRefused("CoSetProxyBlanket", hResult) ? hResult : S_OK;
}

EXTERN_C HRESULT WINAPI CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, LPVOID, REFIID riid, LPVOID* ppv)
{
    if (ppv == nullptr)
        return E_INVALIDARG;
    *ppv = nullptr;
    if (!IsInApartment())
        return CO_E_NOTINITIALIZED;
    const std::string strName = (dwClsContext & CLSCTX_INPROC_SERVER) != 0 ? ServerName(rclsid) : "";
    if (strName.empty())
        return REGDB_E_CLASSNOTREG;
    DllGetClassObjectCall pGetClassObject = nullptr;
    HRESULT hResult = EnterServer(strName, pGetClassObject);
    if (FAILED(hResult))
        return hResult;
    hResult = pGetClassObject(rclsid, riid, ppv);
    LeaveServer(strName);
    return hResult;
}

EXTERN_C HRESULT WINAPI CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid,
                                         LPVOID* ppv)
{
    if (ppv == nullptr)
        return E_POINTER;
    *ppv = nullptr;
    if (rclsid == CLSID_WbemLocator && IsInApartment() && (dwClsContext & CLSCTX_INPROC_SERVER) != 0)
        return CreateWbemLocator(pUnkOuter, riid, ppv);
    IClassFactory* pFactory = nullptr;
    HRESULT hResult =
        CoGetClassObject(rclsid, dwClsContext, nullptr, IID_IClassFactory, reinterpret_cast<LPVOID*>(&pFactory));
    if (FAILED(hResult))
        return hResult;
    hResult = pFactory->CreateInstance(pUnkOuter, riid, ppv);
    pFactory->Release();
    return hResult;
}

EXTERN_C void WINAPI CoFreeUnusedLibraries(void)
{
    // A server can be asked only while no one enters it, and the last FreeLibrary runs its code.
    std::map<std::string, ComServer> mapUnused;
    {
        std::lock_guard<std::mutex> oGuard(Servers().oLock);
        std::map<std::string, ComServer>& mapServers = Servers().mapServers;
        for (auto it = mapServers.begin(); it != mapServers.end();)
        {
            const ComServer& oServer = it->second;
            const bool bUnused =
                oServer.iCallsInside == 0 && oServer.pCanUnloadNow != nullptr && oServer.pCanUnloadNow() == S_OK;
            if (bUnused)
                mapUnused.insert(*it);
            it = bUnused ? mapServers.erase(it) : std::next(it);
        }
    }
    for (const auto& oUnused : mapUnused)
        FreeLibrary(oUnused.second.hModule);
}
