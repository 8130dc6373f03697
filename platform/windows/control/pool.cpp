// Pool threads: one that waits for an object is at rest until the object is signalled.
#include "platform/control/machine.h"
#include "platform/windows/control/guard.h"
#include "platform/windows/control/import.h"

#include <map>
#include <memory>

namespace
{
struct Work
{
    PTP_WORK_CALLBACK fnCallback = nullptr;
    void* pContext = nullptr;
    int iOutstanding = 0; // callbacks submitted and not over
    bool bClosed = false; // gone with its last callback
};

std::map<PTP_WORK, std::unique_ptr<Work>>& Works()
{
    static std::map<PTP_WORK, std::unique_ptr<Work>> mapWorks;
    return mapWorks;
}
std::multimap<HANDLE, bool*> g_mapWaiting; // the object, and whether its waiter is still at rest
int g_iBusy = 0;                           // callbacks submitted that are not over and not at rest
const DWORD g_dwIsPoolThread = TlsAlloc();

void DropIfOver(PTP_WORK pWork)
{
    const auto itWork = Works().find(pWork);
    if (itWork != Works().end() && itWork->second->bClosed && itWork->second->iOutstanding == 0)
        Works().erase(itWork);
}

// Wait gives what it waited for; Ready is asked first, under the lock that also orders SetEvent.
template <class FReady, class FWait> auto RestWhile(HANDLE hObject, FReady fnReady, FWait fnWait)
{
    bool bAtRest = true; // until a signal of ours says otherwise, under the lock
    bool bReady = false;
    std::multimap<HANDLE, bool*>::iterator itWaiting;
    {
        const CGuard oGuard;
        bReady = fnReady();
        if (!bReady)
        {
            --g_iBusy;
            itWaiting = g_mapWaiting.emplace(hObject, &bAtRest);
        }
    }
    if (bReady)
        return fnWait();
    const auto oResult = fnWait();
    const CGuard oGuard;
    if (bAtRest)
        ++g_iBusy;
    g_mapWaiting.erase(itWaiting);
    return oResult;
}

bool IsPoolThread()
{
    return TlsGetValue(g_dwIsPoolThread) != nullptr;
}

void CALLBACK RunWork(PTP_CALLBACK_INSTANCE pInstance, void* pContext, PTP_WORK pWork)
{
    Work& oWork = *static_cast<Work*>(pContext);
    TlsSetValue(g_dwIsPoolThread, &oWork);
    oWork.fnCallback(pInstance, oWork.pContext, pWork);
    TlsSetValue(g_dwIsPoolThread, nullptr);
    const CGuard oGuard;
    --g_iBusy;
    --oWork.iOutstanding;
    DropIfOver(pWork);
}

template <class F> struct Create
{
    static PTP_WORK Call(F fnReal, PTP_WORK_CALLBACK fnCallback, void* pContext, PTP_CALLBACK_ENVIRON pEnviron)
    {
        auto pRecord = std::make_unique<Work>(Work{fnCallback, pContext});
        const PTP_WORK pWork = fnReal(RunWork, pRecord.get(), pEnviron);
        const CGuard oGuard;
        if (pWork != nullptr)
            Works()[pWork] = std::move(pRecord);
        return pWork;
    }
};

template <class F> struct Submit
{
    static void Call(F fnReal, PTP_WORK pWork)
    {
        {
            const CGuard oGuard;
            ++g_iBusy;
            ++Works()[pWork]->iOutstanding;
        }
        fnReal(pWork);
    }
};

// What is cancelled before it began never gets to its end.
template <class F> struct Join
{
    static void Call(F fnReal, PTP_WORK pWork, BOOL bCancel)
    {
        fnReal(pWork, bCancel);
        const CGuard oGuard;
        int& iOutstanding = Works()[pWork]->iOutstanding;
        g_iBusy -= iOutstanding;
        iOutstanding = 0;
    }
};

template <class F> struct Free
{
    static void Call(F fnReal, PTP_WORK pWork)
    {
        {
            const CGuard oGuard;
            Works()[pWork]->bClosed = true;
            DropIfOver(pWork);
        }
        fnReal(pWork);
    }
};

template <class F> struct Wait
{
    static DWORD Call(F fnReal, HANDLE hObject, DWORD dwMilliseconds)
    {
        CountCallThatMayWait();
        if (!IsPoolThread())
            return fnReal(hObject, dwMilliseconds);
        DWORD dwResult = WAIT_TIMEOUT; // of the first asking, which may have taken the signal
        const auto fnReady = [&] { return (dwResult = fnReal(hObject, 0)) != WAIT_TIMEOUT; };
        return RestWhile(hObject, fnReady,
                         [&] { return dwResult != WAIT_TIMEOUT ? dwResult : fnReal(hObject, dwMilliseconds); });
    }
};

template <class F> struct Signal
{
    static BOOL Call(F fnReal, HANDLE hEvent)
    {
        const CGuard oGuard;
        const auto oWaiters = g_mapWaiting.equal_range(hEvent);
        for (auto it = oWaiters.first; it != oWaiters.second; ++it)
            if (*it->second)
            {
                *it->second = false;
                ++g_iBusy;
            }
        return fnReal(hEvent);
    }
};

template <class F> struct Watch;
template <class... A> struct Watch<BOOL (*)(HANDLE, A...)>
{
    static BOOL Call(BOOL (*fnReal)(HANDLE, A...), HANDLE hFolder, A... oArguments)
    {
        const auto fnWait = [&] { return fnReal(hFolder, oArguments...); };
        return IsPoolThread() ? RestWhile(
                                    hFolder, [] { return false; }, fnWait)
                              : fnWait();
    }
};
} // namespace

IMPORT(Create, "kernel32", CreateThreadpoolWork, 0, false)
IMPORT(Submit, "kernel32", SubmitThreadpoolWork, 0, false)
IMPORT(Join, "kernel32", WaitForThreadpoolWorkCallbacks, 0, false)
IMPORT(Free, "kernel32", CloseThreadpoolWork, 0, false)
IMPORT(Wait, "kernel32", WaitForSingleObject, -1, false)
IMPORT(Signal, "kernel32", SetEvent, 0, false)
IMPORT(Watch, "kernel32", ReadDirectoryChangesW, 0, false)

// A signal of ours makes its waiter busy at once. One of the platform's own (a changed key or folder) is on its way for
// a moment that nobody sees: so rest counts only when it has lasted.
bool machine::WaitUntilIdle(DWORD dwMilliseconds)
{
    constexpr int iLasting = 10;
    const ULONGLONG ullEnd = GetTickCount64() + dwMilliseconds;
    for (int iQuiet = 0; iQuiet < iLasting; ++iQuiet)
    {
        {
            const CGuard oGuard;
            if (g_iBusy != 0)
                iQuiet = 0;
        }
        if (GetTickCount64() > ullEnd)
            return false;
        Sleep(1);
    }
    return true;
}

size_t machine::LiveWork()
{
    const CGuard oGuard;
    return Works().size();
}
