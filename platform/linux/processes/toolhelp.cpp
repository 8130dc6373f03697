// The list of processes, from /proc.
#include "base/error.h"
#include "base/failure.h"
#include "processes/process.h"
#include "text/wide.h"

#include <tlhelp32.h>

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <mutex>
#include <vector>

namespace
{
class CProcessList : public CKernelObject
{
public:
    std::mutex m_oMutex;
    std::vector<PROCESSENTRY32W> m_vecEntries;
    size_t m_iNext = 0;
};

// False for a process that has ended, its parent not knowing yet, and for one that ends meanwhile.
bool Describe(DWORD dwProcessID, PROCESSENTRY32W& stEntry)
{
    const CProcessFolder oFolder(dwProcessID);
    const std::string strStatus = oFolder.Read("status");
    if (strStatus.empty() || strStatus.find("\nState:\tZ") != std::string::npos)
        return false;
    stEntry.dwSize = sizeof(stEntry);
    stEntry.th32ProcessID = dwProcessID;
    const std::wstring strName = WideOf(oFolder.Name()).substr(0, MAX_PATH - 1);
    std::copy(strName.begin(), strName.end(), stEntry.szExeFile);
    return !strName.empty();
}

BOOL Tell(HANDLE hSnapshot, LPPROCESSENTRY32W lppe, bool bFirst)
{
    const std::shared_ptr<CProcessList> pList = KernelObjectAs<CProcessList>(hSnapshot);
    if (pList == nullptr)
        return FALSE;
    if (lppe == nullptr || lppe->dwSize < sizeof(PROCESSENTRY32W))
        return FailWith(ERROR_BAD_LENGTH);
    const std::lock_guard<std::mutex> oLock(pList->m_oMutex);
    if (bFirst)
        pList->m_iNext = 0;
    if (pList->m_iNext == pList->m_vecEntries.size())
        return FailWith(ERROR_NO_MORE_FILES);
    *lppe = pList->m_vecEntries[pList->m_iNext++];
    return TRUE;
}
} // namespace

HANDLE CreateToolhelp32Snapshot(DWORD dwFlags, DWORD)
{
    if (IsToldToFail("CreateToolhelp32Snapshot"))
        return INVALID_HANDLE_VALUE;
    const std::unique_ptr<DIR, int (*)(DIR*)> pFolder(opendir("/proc"), closedir);
    if (dwFlags != TH32CS_SNAPPROCESS || pFolder == nullptr)
    {
        SetLastError(pFolder == nullptr ? ErrorOfErrno(errno) : ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    auto pList = std::make_shared<CProcessList>();
    while (const dirent* pEntry = readdir(pFolder.get()))
    {
        const unsigned long ulProcessID = std::strtoul(pEntry->d_name, nullptr, 10); // 0 for what is no process
        PROCESSENTRY32W stEntry{};
        if (ulProcessID != 0 && Describe(static_cast<DWORD>(ulProcessID), stEntry))
            pList->m_vecEntries.push_back(stEntry);
    }
    return OpenKernelHandle(std::move(pList));
}

BOOL Process32FirstW(HANDLE hSnapshot, LPPROCESSENTRY32W lppe)
{
    return Tell(hSnapshot, lppe, true);
}

BOOL Process32NextW(HANDLE hSnapshot, LPPROCESSENTRY32W lppe)
{
    return Tell(hSnapshot, lppe, false);
}
