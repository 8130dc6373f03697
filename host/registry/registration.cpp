// Registers the module on the machine.
#include "host/registry/registration.h"

#include "host/host_error.h"
#include "host/machine/host_machine.h"

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <objbase.h>

namespace
{

constexpr const char* MODULE_NAME = "KelvaneAPO.dll";

void CallExport(const std::string& strModule, const char* pExport)
{
    const std::string strShown = strModule.empty() ? MODULE_NAME : strModule;
    std::error_code oError;
    if (!strModule.empty() && !std::filesystem::is_regular_file(strModule, oError))
        throw CHostError(strShown + ": " + (oError ? oError.message() : "not a file"));
    const std::string strLoad =
        strModule.empty() ? MODULE_NAME : host::PlatformPath(std::filesystem::absolute(strModule).string());
    const HMODULE hModule = LoadLibraryA(strLoad.c_str());
    if (hModule == nullptr)
        throw CHostError(strShown + ": the module can't be loaded, error " + std::to_string(GetLastError()));
    using ExportCall = HRESULT(STDMETHODCALLTYPE*)();
    const auto pCall = reinterpret_cast<ExportCall>(reinterpret_cast<void*>(GetProcAddress(hModule, pExport)));
    const HRESULT hResult = pCall != nullptr ? pCall() : S_OK;
    FreeLibrary(hModule);
    if (pCall == nullptr)
        throw CHostError(strShown + ": has no " + pExport);
    char strCode[16];
    std::snprintf(strCode, sizeof(strCode), "0x%08X", static_cast<unsigned>(hResult));
    if (hResult != S_OK)
        throw CHostError(strShown + ": " + pExport + " failed with " + strCode);
}

} // namespace

void RegisterModule(const std::string& strModule)
{
    CallExport(strModule, "DllRegisterServer");
}

void UnregisterModule(const std::string& strModule)
{
    CallExport(strModule, "DllUnregisterServer");
}
