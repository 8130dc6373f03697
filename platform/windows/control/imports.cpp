// Refusals and the count of calls that may wait, and the imports that nothing else happens to.
#include "platform/control/machine.h"
#include "platform/windows/control/guard.h"
#include "platform/windows/control/import.h"

#include <map>

namespace
{
struct Refusal
{
    DWORD dwError = 0;
    int iTimes = 0;
    int iSkip = 0;
};

// Found without a heap block, for tests count those.
using RefusalMap = std::map<std::string, Refusal, std::less<>>;
RefusalMap& Refusals()
{
    static RefusalMap mapRefusals;
    return mapRefusals;
}

// Calls that may wait, by thread: the slot holds their number.
const DWORD g_dwMayWait = TlsAlloc() + 1; // one more than the slot; 0 for calls before this file's start

size_t CountOfThread()
{
    return g_dwMayWait != 0 ? reinterpret_cast<UINT_PTR>(TlsGetValue(g_dwMayWait - 1)) : 0;
}

template <class F> struct Pass;
template <class R, class... A> struct Pass<R (*)(A...)>
{
    static R Call(R (*fnReal)(A...), A... oArguments)
    {
        CountCallThatMayWait();
        return fnReal(oArguments...);
    }
};
} // namespace

bool IsRefused(const char* pCall, DWORD& dwError)
{
    const CGuard oGuard;
    const auto itRefusal = Refusals().find(std::string_view(pCall));
    if (itRefusal == Refusals().end() || itRefusal->second.iTimes == 0)
        return false;
    Refusal& oRefusal = itRefusal->second;
    if (oRefusal.iSkip > 0)
    {
        --oRefusal.iSkip;
        return false;
    }
    if (oRefusal.iTimes > 0)
        --oRefusal.iTimes;
    dwError = oRefusal.dwError;
    return true;
}

void CountCallThatMayWait()
{
    if (g_dwMayWait != 0)
        TlsSetValue(g_dwMayWait - 1, reinterpret_cast<void*>(static_cast<UINT_PTR>(CountOfThread() + 1)));
}

IMPORT(Pass, "kernel32", DeleteFileA, 0, false)
IMPORT(Pass, "kernel32", GetModuleFileNameA, 0, false)
IMPORT(Pass, "kernel32", GetFileAttributesA, -1, false)
IMPORT(Pass, "kernel32", Sleep, 0, false)
IMPORT(Pass, "msvcrt", fopen_s, 0, true)
IMPORT(Pass, "advapi32", RegOpenKeyExA, 0, true)
IMPORT(Pass, "advapi32", RegQueryValueExA, 0, true)
IMPORT(Pass, "advapi32", RegNotifyChangeKeyValue, 0, true)
IMPORT(Pass, "advapi32", RegSetValueExW, 0, true)

void machine::FailNext(const std::string& strCall, DWORD dwError, int iTimes, int iSkip)
{
    const CGuard oGuard;
    Refusals()[strCall] = {dwError, iTimes, iSkip};
}

void machine::ClearFailures()
{
    const CGuard oGuard;
    Refusals().clear();
}

size_t machine::CallsThatMayWait()
{
    return CountOfThread();
}
