// The module's face: its entry point and the four exports of an in-process COM server.
#include "apo/base/apo_base_module.h"
#include "apo/kelvane/apo_kelvane_manager.h"
#include "audioapi/audio_api_worker.h"

#include <objbase.h>
#include <windows.h>

// The loader's call. Everything comes up at attach and goes down at detach; a failed step never keeps the module out.
// At the process's end, where pReserved is set, the workers are gone already; the devices get their last commands
// still.
extern "C" BOOL APIENTRY DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved)
try
{
    if (dwReason == DLL_PROCESS_ATTACH)
        CKelvaneManager::Instance()->Initialize(hInstance);
    else if (dwReason == DLL_PROCESS_DETACH)
    {
        if (pReserved != nullptr)
            CAudioWorker::SetProcessEnding();
        CKelvaneManager::DeleteInstance();
    }
    return TRUE;
}
catch (...)
{
    return TRUE;
}

STDAPI DllCanUnloadNow()
try
{
    return CKelvaneManager::Instance()->CanUnloadNow();
}
catch (...)
{
    return CaughtResult();
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
