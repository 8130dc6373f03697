// Interrupts by the console, which calls its handler on a thread of its own.
#include "host/machine/interrupt.h"

#include <windows.h>

#include <atomic>
#include <cstdio>

namespace
{

constexpr DWORD END_LIMIT_MS = 30000;

std::atomic<bool> g_bInterrupted{false};
bool g_bTell = false;

// Without telling the libraries, one of which may be what hangs.
void EndAtOnce(UINT iExit)
{
    TerminateProcess(GetCurrentProcess(), iExit);
}

DWORD WINAPI LimitThread(void*)
{
    Sleep(END_LIMIT_MS);
    std::fputs("apohost: it didn't end in order within 30 s\n", stderr);
    EndAtOnce(1);
    return 0;
}

BOOL WINAPI OnControl(DWORD dwControl)
{
    if (dwControl != CTRL_C_EVENT && dwControl != CTRL_BREAK_EVENT)
        return FALSE;
    if (g_bInterrupted.exchange(true))
        EndAtOnce(STATUS_CONTROL_C_EXIT);
    const HANDLE hThread = CreateThread(nullptr, 0, LimitThread, nullptr, 0, nullptr);
    if (hThread != nullptr)
        CloseHandle(hThread);
    if (g_bTell)
        std::fputs("apohost: stopping; once more ends it at once\n", stderr);
    return TRUE;
}

} // namespace

void CatchInterrupts(bool bTell)
{
    g_bTell = bTell;
    SetConsoleCtrlHandler(OnControl, TRUE);
}

bool IsInterrupted()
{
    return g_bInterrupted;
}
