// What CreateFile opens: an object that requests are sent to, and the record that a pending one reports to.
#pragma once

#include "threads/kernel.h"

#include <string>

class CIoFile : public CKernelObject
{
public:
    // Asks for the end of a pending request, or of all (null). False if there was none.
    virtual bool Cancel(LPOVERLAPPED pRecord) = 0;
    // What a request without an event of its own signals on its completion.
    const std::shared_ptr<CKernelEvent>& DoneEvent() const { return m_pDone; }

private:
    std::shared_ptr<CKernelEvent> m_pDone = std::make_shared<CKernelEvent>(true, false);
};

// The record's state as the system keeps it. Whoever sees it completed may free it at once.
void MarkPending(OVERLAPPED& stRecord);
void MarkCompleted(OVERLAPPED& stRecord, DWORD dwError, DWORD dwBytes); // last touch
// Of a completed record: gives the bytes, and FALSE with the last error if the request failed.
BOOL ResultOf(const OVERLAPPED& stRecord, LPDWORD pBytes);

// The open call without the narrow or wide name's conversion.
struct COpenCall
{
    std::string strName; // UTF-8
    DWORD dwAccess = 0;
    DWORD dwShare = 0;
    DWORD dwDisposition = 0;
    DWORD dwFlags = 0;
};

// Whether the name is one of the device namespace, "\\.\..." or "\\?\...".
bool IsDeviceName(const std::string& strName);
// INVALID_HANDLE_VALUE with the last error on failure.
HANDLE OpenDevice(const COpenCall& oCall);
