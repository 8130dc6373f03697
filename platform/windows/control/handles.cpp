// What this program holds: open handles, memory, threads.
#include "platform/control/machine.h"
#include "platform/windows/control/guard.h"
#include "platform/windows/control/import.h"

#include <algorithm>
#include <set>
#include <tlhelp32.h>

namespace
{
std::set<HANDLE>& Handles()
{
    static std::set<HANDLE> setHandles;
    return setHandles;
}

template <class T> T Opened(T pResult)
{
    if (pResult != nullptr && pResult != INVALID_HANDLE_VALUE)
    {
        const CGuard oGuard;
        Handles().insert(pResult);
    }
    return pResult;
}

void Closed(HANDLE hHandle)
{
    const CGuard oGuard;
    Handles().erase(hHandle);
}

template <class F> struct Open;
template <class R, class... A> struct Open<R (*)(A...)>
{
    static R Call(R (*fnReal)(A...), A... oArguments)
    {
        CountCallThatMayWait();
        return Opened(fnReal(oArguments...));
    }
};

template <class F> struct Close
{
    static BOOL Call(F fnReal, HANDLE hHandle)
    {
        Closed(hHandle);
        return fnReal(hHandle);
    }
};
} // namespace

IMPORT(Open, "kernel32", CreateEventW, 0, false)
IMPORT(Open, "kernel32", CreateFileA, -1, false)
IMPORT(Open, "kernel32", FindFirstFileA, -1, false)
IMPORT(Open, "kernel32", OpenProcess, 0, false)
IMPORT(Close, "kernel32", CloseHandle, 0, false)
IMPORT(Close, "kernel32", FindClose, 0, false)

size_t machine::LiveHandles()
{
    const CGuard oGuard;
    return Handles().size();
}

machine::Footprint machine::GetFootprint()
{
    // Blocks of the heaps, the C runtime's own too: what the system holds of threads comes and goes by its own rules.
    size_t iBytes = 0;
    HANDLE aHeaps[16];
    const DWORD dwHeaps = std::min<DWORD>(GetProcessHeaps(16, aHeaps), 16);
    for (DWORD i = 0; i < dwHeaps; ++i)
    {
        PROCESS_HEAP_ENTRY stEntry{};
        HeapLock(aHeaps[i]);
        while (HeapWalk(aHeaps[i], &stEntry))
            iBytes += (stEntry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? stEntry.cbData : 0;
        HeapUnlock(aHeaps[i]);
    }
    size_t iThreads = 0;
    const HANDLE hSnapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 stThread{};
    stThread.dwSize = sizeof(stThread);
    for (BOOL bFound = Thread32First(hSnapshot, &stThread); bFound; bFound = Thread32Next(hSnapshot, &stThread))
        iThreads += stThread.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(hSnapshot);
    return {iBytes, iThreads};
}
