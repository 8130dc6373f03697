// Opening by name, and what all that is opened so has in common: results of pending requests, and their cancelling.
#include "files/iofile.h"

#include "base/error.h"
#include "base/failure.h"
#include "files/folder_watch.h"
#include "text/wide.h"

namespace
{
constexpr ULONG_PTR STATUS_OF_ERROR = 0xC0070000; // the system's status that stands for an error code

HANDLE OpenByName(const char* pCall, const COpenCall& oCall)
{
    if (IsToldToFail(pCall))
        return INVALID_HANDLE_VALUE;
    if (IsDeviceName(oCall.strName))
        return OpenDevice(oCall);
    else if (!oCall.strName.empty())
        return OpenFolder(oCall);
    else
        SetLastError(ERROR_PATH_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
}
} // namespace

void MarkPending(OVERLAPPED& stRecord)
{
    stRecord.InternalHigh = 0;
    __atomic_store_n(&stRecord.Internal, ULONG_PTR{STATUS_PENDING}, __ATOMIC_RELEASE);
}

void MarkCompleted(OVERLAPPED& stRecord, DWORD dwError, DWORD dwBytes)
{
    stRecord.InternalHigh = dwBytes;
    __atomic_store_n(&stRecord.Internal, dwError == ERROR_SUCCESS ? 0 : STATUS_OF_ERROR | dwError, __ATOMIC_RELEASE);
}

BOOL ResultOf(const OVERLAPPED& stRecord, LPDWORD pBytes)
{
    const ULONG_PTR iStatus = __atomic_load_n(&stRecord.Internal, __ATOMIC_ACQUIRE);
    *pBytes = static_cast<DWORD>(stRecord.InternalHigh);
    return iStatus == 0 ? TRUE : FailWith(static_cast<DWORD>(iStatus & 0xFFFF));
}

HANDLE CreateFileA(LPCSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode, LPSECURITY_ATTRIBUTES,
                   DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes, HANDLE)
{
    const std::string strName = lpFileName == nullptr ? "" : lpFileName;
    return OpenByName("CreateFileA",
                      {strName, dwDesiredAccess, dwShareMode, dwCreationDisposition, dwFlagsAndAttributes});
}

HANDLE CreateFileW(LPCWSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode, LPSECURITY_ATTRIBUTES,
                   DWORD dwCreationDisposition, DWORD dwFlagsAndAttributes, HANDLE)
{
    return OpenByName("CreateFileW", {NarrowOf(lpFileName), dwDesiredAccess, dwShareMode, dwCreationDisposition,
                                      dwFlagsAndAttributes});
}

BOOL GetOverlappedResult(HANDLE hFile, LPOVERLAPPED lpOverlapped, LPDWORD lpNumberOfBytesTransferred, BOOL bWait)
{
    if (IsToldToFail("GetOverlappedResult"))
        return FALSE;
    return GetOverlappedResultEx(hFile, lpOverlapped, lpNumberOfBytesTransferred, bWait ? INFINITE : 0, FALSE);
}

// No callbacks are queued to a waiting thread here, so an alertable wait is like any other.
BOOL GetOverlappedResultEx(HANDLE hFile, LPOVERLAPPED lpOverlapped, LPDWORD lpNumberOfBytesTransferred,
                           DWORD dwMilliseconds, BOOL)
{
    if (IsToldToFail("GetOverlappedResultEx"))
        return FALSE;
    const std::shared_ptr<CIoFile> pFile = KernelObjectAs<CIoFile>(hFile);
    if (pFile == nullptr)
        return FALSE;
    if (lpOverlapped == nullptr || lpNumberOfBytesTransferred == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (!HasOverlappedIoCompleted(lpOverlapped))
    {
        if (dwMilliseconds == 0)
            return FailWith(ERROR_IO_INCOMPLETE);
        const HANDLE hEvent = lpOverlapped->hEvent;
        const auto pEvent = hEvent == nullptr ? pFile->DoneEvent() : KernelObjectAs<CKernelEvent>(hEvent);
        if (pEvent == nullptr)
            return FALSE;
        if (pEvent->Wait(dwMilliseconds) == WAIT_TIMEOUT)
            return FailWith(WAIT_TIMEOUT);
        if (!HasOverlappedIoCompleted(lpOverlapped)) // someone else signalled the event
            return FailWith(ERROR_IO_INCOMPLETE);
    }
    return ResultOf(*lpOverlapped, lpNumberOfBytesTransferred);
}

BOOL CancelIoEx(HANDLE hFile, LPOVERLAPPED lpOverlapped)
{
    if (IsToldToFail("CancelIoEx"))
        return FALSE;
    const std::shared_ptr<CIoFile> pFile = KernelObjectAs<CIoFile>(hFile);
    if (pFile == nullptr)
        return FALSE;
    return pFile->Cancel(lpOverlapped) ? TRUE : FailWith(ERROR_NOT_FOUND);
}
