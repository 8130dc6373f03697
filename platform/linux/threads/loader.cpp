// Modules: shared objects found by the platform's rules, told of attach and detach, gone when the last user frees them.
#include "base/error.h"
#include "base/failure.h"
#include "platform/control/machine_native.h"
#include "platform/hostpath.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string>

namespace
{
using PFN_DLL_MAIN = BOOL (*)(HINSTANCE hInstance, DWORD dwReason, LPVOID pReserved);

struct CModule
{
    std::string strHostPath;
    int iUsers = 0;
};

// Two locks: loading and DllMain happen under the first, which a module may enter again from its own DllMain; the
// second guards the table alone, so that workers can ask for names while a detach waits for them.
struct CLoader
{
    std::recursive_mutex oLoadMutex;
    std::mutex oTableMutex;
    std::map<HMODULE, CModule> oModules;
};

CLoader& Loader()
{
    static CLoader* const pLoader = new CLoader;
    return *pLoader;
}

void* NativeOf(HMODULE hModule)
{
    return reinterpret_cast<void*>(hModule);
}

std::string ProgramPath()
{
    char aPath[PATH_MAX];
    const ssize_t iLength = readlink("/proc/self/exe", aPath, sizeof(aPath));
    return iLength > 0 ? std::string(aPath, static_cast<size_t>(iLength)) : "";
}

bool IsFile(const std::string& strHostPath)
{
    std::error_code oError;
    return std::filesystem::is_regular_file(strHostPath, oError);
}

// A name without a point in its last part gets the ending of a module. Empty if there is no such file.
std::string FindModule(const std::string& strName)
{
    const size_t iBase = strName.find_last_of("\\/:") + 1; // npos + 1 is 0
    const std::string strFile = strName.find('.', iBase) == std::string::npos ? strName + ".dll" : strName;
    if (iBase > 0)
    {
        const std::string strHostPath = HostPath(strFile);
        return IsFile(strHostPath) ? strHostPath : "";
    }
    const std::string strProgramFolder = std::filesystem::path(ProgramPath()).parent_path().string();
    for (const std::string& strFolder : {strProgramFolder, std::string("C:\\windows\\system32")})
    {
        std::string strHostPath = HostPath(strFolder + "\\" + strFile);
        if (IsFile(strHostPath))
            return strHostPath;
    }
    return "";
}

bool IsSharedObject(const std::string& strHostPath)
{
    char aMagic[4] = {};
    std::ifstream(strHostPath, std::ios::binary).read(aMagic, sizeof(aMagic));
    return std::memcmp(aMagic, "\177ELF", sizeof(aMagic)) == 0;
}

// A symbol of the module itself; those of the libraries it uses don't count. Null if it has none of that name.
void* ExportOf(HMODULE hModule, const char* pName)
{
    void* const pSymbol = dlsym(NativeOf(hModule), pName);
    link_map* pModule = nullptr;
    link_map* pOwner = nullptr;
    Dl_info stInfo{};
    if (pSymbol == nullptr || dlinfo(NativeOf(hModule), RTLD_DI_LINKMAP, &pModule) != 0 ||
        dladdr1(pSymbol, &stInfo, reinterpret_cast<void**>(&pOwner), RTLD_DL_LINKMAP) == 0)
        return nullptr;
    return pOwner == pModule ? pSymbol : nullptr;
}

bool CallDllMain(HMODULE hModule, DWORD dwReason)
{
    const auto pfnDllMain = reinterpret_cast<PFN_DLL_MAIN>(ExportOf(hModule, "DllMain"));
    return pfnDllMain == nullptr || pfnDllMain(hModule, dwReason, nullptr);
}

// Counts one user more; true for the first.
bool AddUser(HMODULE hModule, const std::string& strHostPath)
{
    CLoader& oLoader = Loader();
    const std::lock_guard<std::mutex> oLock(oLoader.oTableMutex);
    CModule& oModule = oLoader.oModules[hModule];
    oModule.strHostPath = strHostPath;
    return ++oModule.iUsers == 1;
}

void Unload(HMODULE hModule)
{
    CallDllMain(hModule, DLL_PROCESS_DETACH);
    CLoader& oLoader = Loader();
    {
        const std::lock_guard<std::mutex> oLock(oLoader.oTableMutex);
        oLoader.oModules.erase(hModule);
    }
    dlclose(NativeOf(hModule));
}

HMODULE NoModule(DWORD dwError)
{
    SetLastError(dwError);
    return nullptr;
}
} // namespace

HMODULE LoadLibraryA(LPCSTR lpLibFileName)
{
    if (IsToldToFail("LoadLibraryA"))
        return nullptr;
    if (lpLibFileName == nullptr || lpLibFileName[0] == 0)
        return NoModule(ERROR_INVALID_PARAMETER);
    const std::string strHostPath = FindModule(lpLibFileName);
    if (strHostPath.empty())
        return NoModule(ERROR_MOD_NOT_FOUND);

    const std::lock_guard<std::recursive_mutex> oLock(Loader().oLoadMutex);
    const HMODULE hModule = reinterpret_cast<HMODULE>(dlopen(strHostPath.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (hModule == nullptr)
        return NoModule(IsSharedObject(strHostPath) ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT);
    if (!AddUser(hModule, strHostPath))
    {
        dlclose(NativeOf(hModule)); // the first user's reference holds it
        return hModule;
    }
    if (CallDllMain(hModule, DLL_PROCESS_ATTACH))
        return hModule;
    Unload(hModule);
    return NoModule(ERROR_DLL_INIT_FAILED);
}

BOOL FreeLibrary(HMODULE hLibModule)
{
    CLoader& oLoader = Loader();
    const std::lock_guard<std::recursive_mutex> oLoadLock(oLoader.oLoadMutex);
    {
        const std::lock_guard<std::mutex> oLock(oLoader.oTableMutex);
        const auto itModule = oLoader.oModules.find(hLibModule);
        if (itModule == oLoader.oModules.end() || itModule->second.iUsers == 0)
            return FailWith(ERROR_MOD_NOT_FOUND);
        if (--itModule->second.iUsers > 0)
            return TRUE;
    }
    Unload(hLibModule);
    return TRUE;
}

BOOL GetModuleHandleExA(DWORD dwFlags, LPCSTR lpModuleName, HMODULE* phModule)
{
    if (phModule == nullptr || dwFlags != GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS)
        return FailWith(ERROR_INVALID_PARAMETER);
    *phModule = nullptr;
    Dl_info stInfo{};
    link_map* pOwner = nullptr;
    if (dladdr1(lpModuleName, &stInfo, reinterpret_cast<void**>(&pOwner), RTLD_DL_LINKMAP) == 0)
        return FailWith(ERROR_MOD_NOT_FOUND);
    CLoader& oLoader = Loader();
    const std::lock_guard<std::mutex> oLock(oLoader.oTableMutex);
    for (auto& [hModule, oModule] : oLoader.oModules)
    {
        link_map* pModule = nullptr;
        if (dlinfo(NativeOf(hModule), RTLD_DI_LINKMAP, &pModule) != 0 || pModule != pOwner || oModule.iUsers == 0)
            continue;
        ++oModule.iUsers;
        *phModule = hModule;
        return TRUE;
    }
    return FailWith(ERROR_MOD_NOT_FOUND);
}

FARPROC GetProcAddress(HMODULE hModule, LPCSTR lpProcName)
{
    if (IsToldToFail("GetProcAddress"))
        return nullptr;
    CLoader& oLoader = Loader();
    const std::lock_guard<std::mutex> oLock(oLoader.oTableMutex);
    const bool bOrdinal = reinterpret_cast<ULONG_PTR>(lpProcName) < 0x10000; // a shared object has none
    void* const pProc = oLoader.oModules.count(hModule) == 0 || bOrdinal ? nullptr : ExportOf(hModule, lpProcName);
    if (pProc == nullptr)
        SetLastError(ERROR_PROC_NOT_FOUND);
    return reinterpret_cast<FARPROC>(pProc);
}

// The length without the zero; a name that doesn't fit is cut, with nSize for the result and an error.
DWORD GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize)
{
    const bool bFail = IsToldToFail("GetModuleFileNameA");
    if (bFail && GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        return 0;
    std::string strHostPath = ProgramPath();
    if (hModule != nullptr)
    {
        CLoader& oLoader = Loader();
        const std::lock_guard<std::mutex> oLock(oLoader.oTableMutex);
        const auto itModule = oLoader.oModules.find(hModule);
        if (itModule == oLoader.oModules.end())
            return static_cast<DWORD>(FailWith(ERROR_MOD_NOT_FOUND));
        strHostPath = itModule->second.strHostPath;
    }
    const std::string strPath = machine::PlatformPath(strHostPath);
    const bool bFits = !bFail && strPath.size() < nSize;
    SetLastError(bFits ? ERROR_SUCCESS : ERROR_INSUFFICIENT_BUFFER);
    if (nSize == 0)
        return 0;
    const size_t iLength = std::min<size_t>(strPath.size(), nSize - 1);
    std::memcpy(lpFilename, strPath.c_str(), iLength);
    lpFilename[iLength] = 0;
    return bFits ? static_cast<DWORD>(iLength) : nSize;
}
