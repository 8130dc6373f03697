// What the system tells this program, time and power, and what it is told: events.
#include "platform/control/machine.h"
#include "platform/windows/control/guard.h"
#include "platform/windows/control/import.h"

#include <map>

namespace
{
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
} // namespace

IMPORT(Clock, "kernel32", GetLocalTime, 0, false)
IMPORT(Power, "kernel32", GetSystemPowerStatus, 0, false)
IMPORT(Source, "advapi32", RegisterEventSourceA, 0, false)
IMPORT(Report, "advapi32", ReportEventA, 0, false)

void machine::SetClock(const SYSTEMTIME& stLocalTime)
{
    const CGuard oGuard;
    Rebase();
    g_ullTime = ToFileTime(stLocalTime);
}

void machine::AdvanceClock(long long iMilliseconds)
{
    const CGuard oGuard;
    Rebase();
    g_ullTime += static_cast<ULONGLONG>(iMilliseconds) * FILE_TIME_PER_MS;
}

void machine::FreezeClock()
{
    const CGuard oGuard;
    Rebase();
    g_bFrozen = true;
}

void machine::SetPowerStatus(const SYSTEM_POWER_STATUS& stStatus)
{
    const CGuard oGuard;
    g_bPowerSet = true;
    g_stPower = stStatus;
}

void machine::Reset()
{
    const CGuard oGuard;
    g_bClockSet = g_bFrozen = g_bPowerSet = false;
    g_vecReports.clear();
}

std::vector<std::string> machine::ReportedEvents()
{
    const CGuard oGuard;
    return g_vecReports;
}
