// Controls of the real platform: the imports of this program that matter to tests go through functions of ours.
#include "platform/control/control.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <tlhelp32.h>
#include <type_traits>

namespace
{
class CGuard
{
public:
    CGuard() { AcquireSRWLockExclusive(&m_oLock); }
    ~CGuard() { ReleaseSRWLockExclusive(&m_oLock); }
    CGuard(const CGuard&) = delete;
    CGuard& operator=(const CGuard&) = delete;

private:
    static inline SRWLOCK m_oLock = SRWLOCK_INIT;
};

// --- Refusals

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

// Whether this call of the function is one that fails; with the error code as the platform leaves it.
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

// --- What is open

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

// --- Pool threads: one that waits for an object is at rest until the object is signalled

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

// --- The clock

constexpr ULONGLONG FILE_TIME_PER_MS = 10000;
bool g_bClockSet = false;
bool g_bFrozen = false;
ULONGLONG g_ullTime = 0;  // local time where the clock was set or stopped, in units of FILETIME
ULONGLONG g_ullSince = 0; // tick count then

ULONGLONG ToFileTime(const SYSTEMTIME& stTime)
{
    FILETIME stFileTime{};
    SystemTimeToFileTime(&stTime, &stFileTime);
    return static_cast<ULONGLONG>(stFileTime.dwHighDateTime) << 32 | stFileTime.dwLowDateTime;
}

SYSTEMTIME RealTime()
{
    static const auto fnReal = reinterpret_cast<decltype(&GetLocalTime)>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleA("kernel32"), "GetLocalTime")));
    SYSTEMTIME stTime{};
    fnReal(&stTime);
    return stTime;
}

// Under the lock. Where the clock stands, which from now on is where it was set.
void Rebase()
{
    const ULONGLONG ullNow = GetTickCount64();
    if (!g_bClockSet)
        g_ullTime = ToFileTime(RealTime());
    else if (!g_bFrozen)
        g_ullTime += (ullNow - g_ullSince) * FILE_TIME_PER_MS;
    g_ullSince = ullNow;
    g_bClockSet = true;
}

bool g_bPowerSet = false;
SYSTEM_POWER_STATUS g_stPower{};
std::vector<std::string> g_vecReports;
std::map<HANDLE, std::string> g_mapSources;

std::string Escape(const std::string& strText)
{
    std::string strEscaped;
    for (const char c : strText)
        if (c == '\n')
            strEscaped += "\\n";
        else if (c == '\t')
            strEscaped += "\\t";
        else
            strEscaped += c == '\\' ? std::string("\\\\") : std::string(1, c);
    return strEscaped;
}

// --- Calls that may wait, by thread: the slot holds their number

const DWORD g_dwMayWait = TlsAlloc() + 1; // one more than the slot; 0 for calls before this file's start

size_t CountOfThread()
{
    return g_dwMayWait != 0 ? reinterpret_cast<UINT_PTR>(TlsGetValue(g_dwMayWait - 1)) : 0;
}

void CountCallThatMayWait()
{
    if (g_dwMayWait != 0)
        TlsSetValue(g_dwMayWait - 1, reinterpret_cast<void*>(static_cast<UINT_PTR>(CountOfThread() + 1)));
}

// --- What each import does on its way: nothing, but for these

template <class F> struct Pass;
template <class R, class... A> struct Pass<R (*)(A...)>
{
    static R Call(R (*fnReal)(A...), A... oArguments)
    {
        CountCallThatMayWait();
        return fnReal(oArguments...);
    }
};

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

template <class F> struct Clock
{
    static void Call(F, SYSTEMTIME* pTime)
    {
        const CGuard oGuard;
        if (!g_bClockSet)
        {
            *pTime = RealTime();
            return;
        }
        Rebase();
        const FILETIME stFileTime{static_cast<DWORD>(g_ullTime), static_cast<DWORD>(g_ullTime >> 32)};
        FileTimeToSystemTime(&stFileTime, pTime);
    }
};

template <class F> struct Power
{
    static BOOL Call(F fnReal, SYSTEM_POWER_STATUS* pStatus)
    {
        const CGuard oGuard;
        if (!g_bPowerSet)
            return fnReal(pStatus);
        *pStatus = g_stPower;
        return TRUE;
    }
};

template <class F> struct Source
{
    static HANDLE Call(F fnReal, const char* pServer, const char* pName)
    {
        const HANDLE hSource = fnReal(pServer, pName);
        const CGuard oGuard;
        g_mapSources[hSource] = pName;
        return hSource;
    }
};

template <class F> struct Report
{
    static BOOL Call(F fnReal, HANDLE hSource, WORD wType, WORD wCategory, DWORD dwNumber, PSID pUser, WORD wTexts,
                     DWORD dwDataSize, const char** pTexts, void* pData)
    {
        const char* const pType = wType == EVENTLOG_ERROR_TYPE     ? "error"
                                  : wType == EVENTLOG_WARNING_TYPE ? "warning"
                                                                   : "information";
        char aNumber[16];
        snprintf(aNumber, sizeof aNumber, "0x%08lX", dwNumber);
        if (!fnReal(hSource, wType, wCategory, dwNumber, pUser, wTexts, dwDataSize, pTexts, pData))
            return FALSE;
        const CGuard oGuard;
        g_vecReports.push_back(g_mapSources[hSource] + "\t" + pType + "\t" + aNumber + "\t" +
                               Escape(pTexts[0] != nullptr ? pTexts[0] : ""));
        return TRUE;
    }
};

// --- An import of ours

template <template <class> class TWay, class TName, class F> struct Import;
template <template <class> class TWay, class TName, class R, class... A> struct Import<TWay, TName, R (*)(A...)>
{
    static R Call(A... oArguments)
    {
        using Function = R (*)(A...);
        static const auto fnReal = reinterpret_cast<Function>(
            reinterpret_cast<void (*)()>(GetProcAddress(LoadLibraryA(TName::pModule), TName::pCall)));
        DWORD dwError = 0;
        if constexpr (!std::is_void_v<R>)
            if (IsRefused(TName::pCall, dwError))
                return Fail<R>(dwError);
        return TWay<Function>::Call(fnReal, oArguments...);
    }

private:
    template <class T> static T Fail(DWORD dwError)
    {
        if constexpr (TName::bResult)
            return static_cast<T>(dwError);
        SetLastError(dwError);
        return (T)TName::iFailed; // an integer, a pointer or a handle
    }
};
} // namespace

// The linker takes these for the entries of the import table. iFailed is the call's value when refused; a call with
// bResult gives the error itself.
#define IMPORT(way, module, name, failed, result)                                                                      \
    namespace                                                                                                          \
    {                                                                                                                  \
    struct name##Name                                                                                                  \
    {                                                                                                                  \
        static constexpr const char* pModule = module;                                                                 \
        static constexpr const char* pCall = #name;                                                                    \
        static constexpr long long iFailed = failed;                                                                   \
        static constexpr bool bResult = result;                                                                        \
    };                                                                                                                 \
    }                                                                                                                  \
    extern "C"                                                                                                         \
    {                                                                                                                  \
        decltype(&name) __imp_##name = Import<way, name##Name, decltype(&name)>::Call;                                 \
    }

IMPORT(Open, "kernel32", CreateEventW, 0, false)
IMPORT(Open, "kernel32", CreateFileA, -1, false)
IMPORT(Open, "kernel32", FindFirstFileA, -1, false)
IMPORT(Open, "kernel32", OpenProcess, 0, false)
IMPORT(Close, "kernel32", CloseHandle, 0, false)
IMPORT(Close, "kernel32", FindClose, 0, false)
IMPORT(Create, "kernel32", CreateThreadpoolWork, 0, false)
IMPORT(Submit, "kernel32", SubmitThreadpoolWork, 0, false)
IMPORT(Join, "kernel32", WaitForThreadpoolWorkCallbacks, 0, false)
IMPORT(Free, "kernel32", CloseThreadpoolWork, 0, false)
IMPORT(Wait, "kernel32", WaitForSingleObject, -1, false)
IMPORT(Signal, "kernel32", SetEvent, 0, false)
IMPORT(Watch, "kernel32", ReadDirectoryChangesW, 0, false)
IMPORT(Clock, "kernel32", GetLocalTime, 0, false)
IMPORT(Power, "kernel32", GetSystemPowerStatus, 0, false)
IMPORT(Pass, "kernel32", DeleteFileA, 0, false)
IMPORT(Pass, "kernel32", GetModuleFileNameA, 0, false)
IMPORT(Pass, "kernel32", GetFileAttributesA, -1, false)
IMPORT(Pass, "kernel32", Sleep, 0, false)
IMPORT(Pass, "msvcrt", fopen_s, 0, true)
IMPORT(Pass, "advapi32", RegOpenKeyExA, 0, true)
IMPORT(Pass, "advapi32", RegQueryValueExA, 0, true)
IMPORT(Pass, "advapi32", RegNotifyChangeKeyValue, 0, true)
IMPORT(Pass, "advapi32", RegSetValueExW, 0, true)
IMPORT(Source, "advapi32", RegisterEventSourceA, 0, false)
IMPORT(Report, "advapi32", ReportEventA, 0, false)

void control::FailNext(const std::string& strCall, DWORD dwError, int iTimes, int iSkip)
{
    const CGuard oGuard;
    Refusals()[strCall] = {dwError, iTimes, iSkip};
}

void control::ClearFailures()
{
    const CGuard oGuard;
    Refusals().clear();
}

void control::SetClock(const SYSTEMTIME& stLocalTime)
{
    const CGuard oGuard;
    Rebase();
    g_ullTime = ToFileTime(stLocalTime);
}

void control::AdvanceClock(long long iMilliseconds)
{
    const CGuard oGuard;
    Rebase();
    g_ullTime += static_cast<ULONGLONG>(iMilliseconds) * FILE_TIME_PER_MS;
}

void control::FreezeClock()
{
    const CGuard oGuard;
    Rebase();
    g_bFrozen = true;
}

void control::SetPowerStatus(const SYSTEM_POWER_STATUS& stStatus)
{
    const CGuard oGuard;
    g_bPowerSet = true;
    g_stPower = stStatus;
}

void control::Reset()
{
    const CGuard oGuard;
    g_bClockSet = g_bFrozen = g_bPowerSet = false;
    g_vecReports.clear();
}

// A signal of ours makes its waiter busy at once. One of the platform's own (a changed key or folder) is on its way for
// a moment that nobody sees: so rest counts only when it has lasted.
bool control::WaitUntilIdle(DWORD dwMilliseconds)
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

size_t control::CallsThatMayWait()
{
    return CountOfThread();
}

size_t control::LiveWork()
{
    const CGuard oGuard;
    return Works().size();
}

size_t control::LiveHandles()
{
    const CGuard oGuard;
    return Handles().size();
}

control::Footprint control::GetFootprint()
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

std::vector<std::string> control::ReportedEvents()
{
    const CGuard oGuard;
    return g_vecReports;
}
