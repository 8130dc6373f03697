// The event log: a text file of the machine to which every process appends.
#include "base/error.h"
#include "base/failure.h"
#include "eventlog/eventlog_text.h"
#include "threads/kernel.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

namespace
{
struct CEventSource : public CKernelObject
{
    explicit CEventSource(const char* pName) : strName(pName) {}
    const std::string strName;
};

std::string Record(const CEventSource& oSource, const char* pType, DWORD dwEventID)
{
    SYSTEMTIME stTime{};
    GetLocalTime(&stTime);
    char strTime[64];
    std::snprintf(strTime, sizeof(strTime), "%04d-%02d-%02d %02d:%02d:%02d.%03d", stTime.wYear, stTime.wMonth,
                  stTime.wDay, stTime.wHour, stTime.wMinute, stTime.wSecond, stTime.wMilliseconds);
    char strNumber[16];
    std::snprintf(strNumber, sizeof(strNumber), "0x%08X", dwEventID);
    return std::string(strTime) + "\t" + EscapeEventField(oSource.strName.c_str()) + "\t" + pType + "\t" + strNumber;
}

// In one write, so that records of several processes don't mix.
BOOL Append(const std::string& strRecord)
{
    const int iFile = open((EventLogFile()).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (iFile < 0)
        return FailWithErrno(errno);
    const ssize_t iWritten = write(iFile, strRecord.data(), strRecord.size());
    const int iErrno = iWritten < 0 ? errno : ENOSPC;
    close(iFile);
    return iWritten == static_cast<ssize_t>(strRecord.size()) ? TRUE : FailWithErrno(iErrno);
}
} // namespace

HANDLE RegisterEventSourceA(LPCSTR lpUNCServerName, LPCSTR lpSourceName)
{
    if (IsToldToFail("RegisterEventSourceA"))
        return nullptr;
    if (lpUNCServerName != nullptr || lpSourceName == nullptr || lpSourceName[0] == 0)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return OpenKernelHandle(std::make_shared<CEventSource>(lpSourceName));
}

BOOL ReportEventA(HANDLE hEventLog, WORD wType, WORD, DWORD dwEventID, PVOID lpUserSid, WORD wNumStrings,
                  DWORD dwDataSize, LPCSTR* lpStrings, LPVOID)
{
    if (IsToldToFail("ReportEventA"))
        return FALSE;
    const std::shared_ptr<CEventSource> pSource = KernelObjectAs<CEventSource>(hEventLog);
    if (pSource == nullptr)
        return FALSE;
    const char* const pType = EventTypeWord(wType);
    if (pType == nullptr || lpUserSid != nullptr || dwDataSize != 0 || (wNumStrings > 0 && lpStrings == nullptr))
        return FailWith(ERROR_INVALID_PARAMETER);
    std::string strRecord = Record(*pSource, pType, dwEventID);
    for (WORD i = 0; i < wNumStrings; ++i)
        strRecord += "\t" + EscapeEventField(lpStrings[i] != nullptr ? lpStrings[i] : "");
    return Append(strRecord + "\n");
}

BOOL DeregisterEventSource(HANDLE hEventLog)
{
    return KernelObjectAs<CEventSource>(hEventLog) != nullptr && CloseKernelHandle(hEventLog) ? TRUE : FALSE;
}
