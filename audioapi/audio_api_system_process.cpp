// Processes by name, by id and by the user at the console.
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_retry.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"
#include "audioapi/audio_api_trace.h"

#include <psapi.h>
#include <tlhelp32.h>

#include <utility>

namespace
{

// Shows each process to fVisit until it gives true. 0, or AUDIO_NO_HANDLE without a list.
template <class Visit> DWORD VisitProcesses(Visit fVisit)
{
    const HANDLE hSnapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (AUDIO_FAIL_IF((hSnapshot == INVALID_HANDLE_VALUE), AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    const CAudioHandle oSnapshot(hSnapshot);
    PROCESSENTRY32W stEntry{};
    stEntry.dwSize = sizeof(stEntry);
    BOOL bFound = Process32FirstW(hSnapshot, &stEntry);
    while (bFound && !fVisit(stEntry))
        bFound = Process32NextW(hSnapshot, &stEntry);
    return 0;
}

// Shows the id of each process of that name to fVisit until it gives true.
template <class Visit> DWORD VisitNamed(const std::wstring& strProcessName, Visit fVisit)
{
    const std::wstring strWanted = CAudioSTR::ToUpper(strProcessName);
    return VisitProcesses(
        [&](const PROCESSENTRY32W& stEntry)
        { return CAudioSTR::ToUpper(std::wstring(stEntry.szExeFile)) == strWanted && fVisit(stEntry.th32ProcessID); });
}

std::string Narrow(const std::wstring& strText)
{
    return CAudioSTR::ToString(strText, CP_ACP);
}

// "100MB(104857600)".
std::string MemoryText(UINT64 iBytes)
{
    return std::to_string(iBytes >> 20) + "MB(" + std::to_string(iBytes) + ")";
}
} // namespace

DWORD CAudioSYS::GetProcessIDByName(const std::wstring& strProcessName, DWORD& dwProcessID)
{
    dwProcessID = 0;
    VisitNamed(strProcessName,
               [&](DWORD dwID)
               {
                   dwProcessID = dwID;
                   return true;
               });
    return dwProcessID != 0 ? 0 : AUDIO_NO_HANDLE;
}

DWORD CAudioSYS::GetProcessIDByName(const std::wstring& strProcessName, std::vector<DWORD>& oVctProcessID)
{
    const DWORD dwResult = VisitNamed(strProcessName,
                                      [&](DWORD dwID)
                                      {
                                          oVctProcessID.push_back(dwID);
                                          return false;
                                      });
    return oVctProcessID.empty() ? AUDIO_NO_HANDLE : dwResult;
}

std::string CAudioSYS::GetProcessNameByID(DWORD dwProcessID)
{
    std::wstring strName;
    VisitProcesses(
        [&](const PROCESSENTRY32W& stEntry)
        {
            if (stEntry.th32ProcessID != dwProcessID)
                return false;
            strName = stEntry.szExeFile;
            return true;
        });
    return Narrow(strName);
}

CAudioHandle CAudioSYS::OpenUserToken(DWORD dwProcessID, std::wstring& strTokenUserName)
{
    const HANDLE hProcess = OpenProcess(PROCESS_ALL_ACCESS, FALSE, dwProcessID);
    if (AUDIO_MISSING(hProcess, AUDIO_NO_HANDLE))
        return nullptr;
    CAudioHandle oProcess(hProcess);
    HANDLE hToken = nullptr;
    if (AUDIO_CHECK_WIN(OpenProcessToken(hProcess, TOKEN_ALL_ACCESS, &hToken)) != 0)
        return nullptr;
    oProcess.reset();
    CAudioHandle oToken(hToken);
    return AUDIO_CHECK(GetTokenUserName(hToken, strTokenUserName)) == 0 ? std::move(oToken) : nullptr;
}

bool CAudioSYS::WalkUserTokens(const std::wstring& strProcessName, const std::vector<DWORD>& oVctProcessID,
                               const std::wstring& strConsoleUserName,
                               const std::function<bool(DWORD, CAudioHandle)>& fTake)
{
    for (const DWORD dwProcessID : oVctProcessID)
    {
        std::wstring strTokenUserName;
        CAudioHandle oToken = OpenUserToken(dwProcessID, strTokenUserName);
        if (oToken == nullptr)
            continue;
        AUDIOLOG_DEBUG("ProcessName:" + Narrow(strProcessName) + ",ProcessID:" + CAudioSTR::ToString(dwProcessID) +
                       ",TokenUserName:" + Narrow(strTokenUserName) + ",ConsoleUserName=" + Narrow(strConsoleUserName));
        if (CAudioSTR::ToLower(strTokenUserName) == CAudioSTR::ToLower(strConsoleUserName) &&
            fTake(dwProcessID, std::move(oToken)))
            return true;
    }
    return false;
}

DWORD CAudioSYS::GetProcessIDByUserName(const std::wstring& strProcessName, std::vector<DWORD>& oVctProcessID,
                                        INT32 iTryTimes)
{
    const auto fTake = [&](DWORD dwProcessID, CAudioHandle)
    {
        oVctProcessID.push_back(dwProcessID);
        return false;
    };
    AudioRetry(iTryTimes,
               [&]
               {
                   std::vector<DWORD> vecNamed;
                   std::wstring strConsoleUserName;
                   if (GetProcessIDByName(strProcessName, vecNamed) != 0)
                       return true;
                   if (QueryConsoleUserName(strConsoleUserName) != 0)
                       return false;
                   WalkUserTokens(strProcessName, vecNamed, strConsoleUserName, fTake);
                   return true;
               });
    return 0;
}

DWORD CAudioSYS::GetTokenHandleByName(const std::wstring& strProcessName, HANDLE& hUserToken, INT32 iTryTimes)
{
    const CTraceLog oTrace(__FUNCTION__, __FILE__, __LINE__, AUDIO_LEVEL_TRACE, {});
    hUserToken = nullptr;
    const auto fTake = [&](DWORD, CAudioHandle oToken)
    {
        hUserToken = oToken.release();
        return true;
    };
    const bool bFound = AudioRetry(iTryTimes,
                                   [&]
                                   {
                                       std::vector<DWORD> vecNamed;
                                       std::wstring strConsoleUserName;
                                       return QueryConsoleUserName(strConsoleUserName) == 0 &&
                                              GetProcessIDByName(strProcessName, vecNamed) == 0 &&
                                              WalkUserTokens(strProcessName, vecNamed, strConsoleUserName, fTake);
                                   });
    return bFound ? 0 : AUDIO_NO_HANDLE;
}

bool CAudioSYS::CheckProcessInvalidByName(const std::wstring& strProcessName)
{
    DWORD dwProcessID = 0;
    if (GetProcessIDByName(strProcessName, dwProcessID) == 0)
        return true;
    AUDIOLOG_WARN(Narrow(strProcessName) + " is not exist!");
    return false;
}

bool CAudioSYS::CheckProcessInvalidByUserName(const std::wstring& strProcessName)
{
    std::vector<DWORD> oVctProcessID;
    return AUDIO_CHECK(GetProcessIDByUserName(strProcessName, oVctProcessID)) == 0 && !oVctProcessID.empty();
}

bool CAudioSYS::CheckProcessInvalidByID(DWORD dwProcessID)
{
    return dwProcessID != 0 && !GetProcessNameByID(dwProcessID).empty();
}

bool CAudioSYS::CheckProcessMemory(const std::wstring& strProcessName, UINT32 iMemoryLimit)
{
    const UINT32 iLimit = iMemoryLimit << 20;
    DWORD dwProcessID = 0;
    if (GetProcessIDByName(strProcessName, dwProcessID) != 0)
        return false;
    const HANDLE hProcess = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, dwProcessID);
    if (AUDIO_MISSING(hProcess, AUDIO_NO_HANDLE))
        return false;
    const CAudioHandle oProcess(hProcess);
    PROCESS_MEMORY_COUNTERS pMemCountr{};
    if (AUDIO_CHECK_WIN(GetProcessMemoryInfo(hProcess, &pMemCountr, sizeof(PROCESS_MEMORY_COUNTERS))) != 0)
        return false;
    if (iLimit > pMemCountr.WorkingSetSize && iLimit > pMemCountr.PagefileUsage)
        return false;
    AUDIOLOG_EVENT_WARN("Current Memory beyond limit " + MemoryText(iLimit) +
                        ",PagefileUsage:" + MemoryText(pMemCountr.PagefileUsage) +
                        ",WorkingSetSize:" + MemoryText(pMemCountr.WorkingSetSize));
    return true;
}
