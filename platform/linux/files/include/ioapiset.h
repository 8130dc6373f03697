// Requests to devices: sent, waited for, cancelled.
#pragma once

#include <minwinbase.h>

extern "C"
{
    // On a handle without FILE_FLAG_OVERLAPPED the call returns when the device has completed the request. On one with
    // it, FALSE and ERROR_IO_PENDING mean that the record, its event and the output buffer are the system's until then.
    BOOL DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize,
                         LPVOID lpOutBuffer, DWORD nOutBufferSize, LPDWORD lpBytesReturned, LPOVERLAPPED lpOverlapped);

    // The request's result. Not completed yet: ERROR_IO_INCOMPLETE without bWait, WAIT_TIMEOUT after a time-out.
    BOOL GetOverlappedResult(HANDLE hFile, LPOVERLAPPED lpOverlapped, LPDWORD lpNumberOfBytesTransferred, BOOL bWait);
    BOOL GetOverlappedResultEx(HANDLE hFile, LPOVERLAPPED lpOverlapped, LPDWORD lpNumberOfBytesTransferred,
                               DWORD dwMilliseconds, BOOL bAlertable);

    // Asks for the end of one pending request of the handle, or of all (null); each completes with
    // ERROR_OPERATION_ABORTED, if its device heeds the call. ERROR_NOT_FOUND when nothing is pending.
    BOOL CancelIoEx(HANDLE hFile, LPOVERLAPPED lpOverlapped);
}

#define STATUS_PENDING 0x00000103

// Whether the system is done with the record: it touches neither this nor the buffers any more.
inline bool HasOverlappedIoCompleted(const OVERLAPPED* lpOverlapped)
{
    return __atomic_load_n(&lpOverlapped->Internal, __ATOMIC_ACQUIRE) != STATUS_PENDING;
}
