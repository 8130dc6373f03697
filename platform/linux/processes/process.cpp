// Processes of this system: their files in /proc, handles of them, their memory.
#include "processes/process.h"

#include "base/error.h"
#include "base/failure.h"
#include "platform/control/machine.h"

#include <psapi.h>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

CProcessFolder::CProcessFolder(DWORD dwProcessID)
    : m_iFolder(open(("/proc/" + std::to_string(dwProcessID)).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC))
{
}

CProcessFolder::~CProcessFolder()
{
    if (IsOpen())
        close(m_iFolder);
}

std::string CProcessFolder::Read(const char* pFile) const
{
    std::string strContent;
    const int iFile = openat(m_iFolder, pFile, O_RDONLY | O_CLOEXEC);
    if (iFile < 0)
        return strContent;
    char aBlock[4096];
    for (ssize_t iRead = 0; (iRead = read(iFile, aBlock, sizeof(aBlock))) > 0;)
        strContent.append(aBlock, static_cast<size_t>(iRead));
    close(iFile);
    return strContent;
}

std::string CProcessFolder::Name() const
{
    char aTarget[PATH_MAX];
    const ssize_t iLength = readlinkat(m_iFolder, "exe", aTarget, sizeof(aTarget));
    if (iLength <= 0)
    {
        const std::string strName = Read("comm");
        return strName.substr(0, strName.find('\n'));
    }
    std::string strPath(aTarget, static_cast<size_t>(iLength));
    constexpr char GONE[] = " (deleted)";
    constexpr size_t GONE_LENGTH = sizeof(GONE) - 1;
    if (strPath.size() > GONE_LENGTH && strPath.compare(strPath.size() - GONE_LENGTH, GONE_LENGTH, GONE) == 0)
        strPath.resize(strPath.size() - GONE_LENGTH);
    return strPath.substr(strPath.rfind('/') + 1);
}

bool CProcessFolder::Field(const char* pName, unsigned long long& iValue) const
{
    const std::string strName = std::string("\n") + pName + ":";
    const std::string strStatus = Read("status");
    const size_t iField = strStatus.find(strName);
    if (iField == std::string::npos)
        return false;
    iValue = std::strtoull(strStatus.c_str() + iField + strName.size(), nullptr, 10);
    return true;
}

HANDLE OpenProcess(DWORD, BOOL, DWORD dwProcessId)
{
    if (IsToldToFail("OpenProcess"))
        return nullptr;
    DWORD dwError = ERROR_INVALID_PARAMETER;
    if (dwProcessId != 0 && dwProcessId <= INT_MAX)
    {
        auto pProcess = std::make_shared<CProcess>(dwProcessId);
        const bool bGranted = kill(static_cast<pid_t>(dwProcessId), 0) == 0;
        if (bGranted && pProcess->oFolder.IsOpen())
            return OpenKernelHandle(std::move(pProcess));
        if (!bGranted && errno == EPERM)
            dwError = ERROR_ACCESS_DENIED;
    }
    SetLastError(dwError);
    return nullptr;
}

BOOL K32GetProcessMemoryInfo(HANDLE Process, PPROCESS_MEMORY_COUNTERS ppsmemCounters, DWORD cb)
{
    if (IsToldToFail("K32GetProcessMemoryInfo"))
        return FALSE;
    const std::shared_ptr<CProcess> pProcess = KernelObjectAs<CProcess>(Process);
    if (pProcess == nullptr)
        return FALSE;
    if (cb < sizeof(PROCESS_MEMORY_COUNTERS))
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    // In kilobytes. A process that has ended, or one of the kernel's own, holds none.
    unsigned long long iResident = 0;
    unsigned long long iOwn = 0; // asked for, touched or not
    pProcess->oFolder.Field("VmRSS", iResident);
    pProcess->oFolder.Field("VmData", iOwn);
    *ppsmemCounters = PROCESS_MEMORY_COUNTERS{};
    ppsmemCounters->cb = sizeof(PROCESS_MEMORY_COUNTERS);
    ppsmemCounters->WorkingSetSize = iResident * 1024;
    ppsmemCounters->PagefileUsage = iOwn * 1024;
    return TRUE;
}

machine::Footprint machine::GetFootprint()
{
    unsigned long long iResident = 0;
    CProcessFolder(GetCurrentProcessId()).Field("VmRSS", iResident);
    return {iResident * 1024, LiveHandles() + LiveWork()};
}
