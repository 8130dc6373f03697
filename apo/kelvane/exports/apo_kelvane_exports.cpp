// The module's face: its entry point and the four exports of an in-process COM server.
#include "apo/base/apo_base_module.h"
#include "apo/kelvane/apo_kelvane_manager.h"

#include <objbase.h>
#include <windows.h>

// The loader's call. Everything comes up at attach and goes down at detach; a failed step never keeps the module out.
// When the process ends (pReserved is set), the workers are gone already and may have held what the way down waits for.
extern "C" BOOL APIENTRY DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved)
try
{
    if (dwReason == DLL_PROCESS_ATTACH)
        CKelvaneManager::Instance()->Initialize(hInstance);
    else if (dwReason == DLL_PROCESS_DETACH && pReserved == nullptr)
        CKelvaneManager::DeleteInstance();
    return TRUE;
}
catch (...)
{
    return TRUE;
}

STDAPI DllCanUnloadNow()
{
    return g_lObjectCount != 0 || g_lServerLocks != 0 ? S_FALSE : S_OK;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv)
try
{
    return CKelvaneManager::Instance()->GetClassObject(rclsid, riid, ppv);
}
catch (...)
{
    return CaughtResult();
}

STDAPI DllRegisterServer()
try
{
    return CKelvaneManager::Instance()->RegisterAllFX();
}
catch (...)
{
    return CaughtResult();
}

STDAPI DllUnregisterServer()
try
{
    return CKelvaneManager::Instance()->UnregisterAllFX();
}
catch (...)
{
    return CaughtResult();
}
