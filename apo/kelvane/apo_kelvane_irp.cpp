// The amplifier's one request: sent, waited for within bounds, and given up without harm.
#include "apo/kelvane/apo_kelvane_irp.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_string.h"

#include <algorithm>
#include <mutex>

namespace
{
constexpr int OPEN_ATTEMPTS = 4;
constexpr DWORD OPEN_PAUSE = 3;      // milliseconds
constexpr DWORD REQUEST_WAIT = 2000; // milliseconds
constexpr DWORD CANCEL_WAIT = 500;   // milliseconds
constexpr INT64 NO_HANDLE = 6;

// What the driver takes.
struct StatusRecord
{
    DWORD dwReserved;
    DWORD dwStatusCtrl;
};
static_assert(sizeof(StatusRecord) == 8);

void LogRequestFailure(const char* pText, const DWORD& dwStatusCtrl, DWORD dwError)
{
    AUDIOLOG_ERROR(dwError, pText + std::to_string(dwStatusCtrl));
}
} // namespace

CKelvaneIRP::CKelvaneIRP(const std::string& strDeviceName)
{
    Initialize(strDeviceName);
}

CKelvaneIRP::~CKelvaneIRP()
{
    try
    {
        SetKelvaneStatus(KELVANE_STATUS_DEACTIVE);
    }
    catch (...) // no memory for a line or a record; the handles go all the same
    {
    }
    if (m_hEvent != nullptr)
        CloseHandle(m_hEvent);
    if (m_hDevice == INVALID_HANDLE_VALUE)
        return;
    CancelIoEx(m_hDevice, nullptr);
    ForgetCompleted();
    CloseHandle(m_hDevice);
    for (CRequest& pRequest : m_vecAbandoned)
        static_cast<void>(pRequest.release()); // the system's for good: it may still write there
}

void CKelvaneIRP::Initialize(const std::string& strDeviceName)
{
    DWORD dwReason = 0;
    for (int i = 0; i < OPEN_ATTEMPTS && m_hDevice == INVALID_HANDLE_VALUE; ++i)
    {
        m_hDevice = CreateFileA(strDeviceName.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                FILE_FLAG_OVERLAPPED, nullptr);
        if (m_hDevice != INVALID_HANDLE_VALUE)
            continue;
        dwReason = GetLastError();
        Sleep(OPEN_PAUSE);
    }
    if (m_hDevice == INVALID_HANDLE_VALUE)
    {
        AUDIOLOG_WARN("IRP interface: " + strDeviceName + " not support! reason:" + std::to_string(dwReason));
        return;
    }
    AUDIOLOG_INFO("Success to Initialize IRP interface:" + strDeviceName);
    m_hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (AUDIO_MISSING(m_hEvent, NO_HANDLE))
        return;
    AUDIO_CHECK(SetKelvaneStatus(KELVANE_STATUS_ACTIVE));
}

DWORD CKelvaneIRP::SetKelvaneStatus(const DWORD& dwStatusCtrl)
{
    const std::lock_guard<CAudioLock> oGuard(m_csRequest);
    if (m_hDevice == INVALID_HANDLE_VALUE || m_hEvent == nullptr)
        return 0;
    ForgetCompleted();
    m_vecAbandoned.reserve(m_vecAbandoned.size() + 1); // so that a pending record is never lost for want of memory
    CRequest pRequest = std::make_unique<OVERLAPPED>();
    pRequest->hEvent = m_hEvent;
    StatusRecord stRecord = {0, dwStatusCtrl};
    DWORD dwBytes = 0;
    if (!DeviceIoControl(m_hDevice, IOCTL_KELVANE_SET_STATUS, &stRecord, sizeof(stRecord), nullptr, 0, &dwBytes,
                         pRequest.get()))
    {
        const DWORD dwError = GetLastError();
        if (dwError != ERROR_IO_PENDING)
        {
            LogRequestFailure("Execute DeviceIoControl failed! dwStatusCtrl:", dwStatusCtrl, dwError);
            SetEvent(m_hEvent);
            return dwError;
        }
        if (const DWORD dwResult = WaitForCompletion(*pRequest))
        {
            AbandonRequest(pRequest);
            LogRequestFailure("Execute GetOverlappedResult failed! dwStatusCtrl:", dwStatusCtrl, dwResult);
            return dwResult;
        }
    }
    AUDIOLOG_INFO(
        "Set Kelvane Interface: " + CAudioSTR::ToHexTag(static_cast<INT64>(reinterpret_cast<UINT_PTR>(m_hDevice))) +
        " Status Success! dwStatusCtrl:" + std::to_string(dwStatusCtrl));
    return 0;
}

// A driver that is late beyond the wait is asked to let the request go. One that finishes it all the same was in time.
DWORD CKelvaneIRP::WaitForCompletion(OVERLAPPED& oRequest)
{
    DWORD dwBytes = 0;
    if (GetOverlappedResultEx(m_hDevice, &oRequest, &dwBytes, REQUEST_WAIT, FALSE))
        return 0;
    if (const DWORD dwError = GetLastError(); dwError != WAIT_TIMEOUT)
        return dwError;
    CancelIoEx(m_hDevice, &oRequest);
    if (GetOverlappedResultEx(m_hDevice, &oRequest, &dwBytes, CANCEL_WAIT, FALSE))
        return 0;
    const DWORD dwError = GetLastError();
    return dwError == WAIT_TIMEOUT || dwError == ERROR_OPERATION_ABORTED ? ERROR_TIMEOUT : dwError;
}

// Keeps the record for the system while the request is pending. Its late completion signals the event that it was sent
// with, so the next request gets one of its own.
void CKelvaneIRP::AbandonRequest(CRequest& pRequest)
{
    m_vecAbandoned.push_back(std::move(pRequest));
    ForgetCompleted();
    if (m_vecAbandoned.empty())
        return;
    CloseHandle(m_hEvent);
    m_hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    AUDIO_MISSING(m_hEvent, NO_HANDLE);
}

// Frees the abandoned records that the driver has completed by now.
void CKelvaneIRP::ForgetCompleted()
{
    const auto fCompleted = [this](const CRequest& pRequest)
    {
        DWORD dwBytes = 0;
        return GetOverlappedResult(m_hDevice, pRequest.get(), &dwBytes, FALSE) || GetLastError() != ERROR_IO_INCOMPLETE;
    };
    m_vecAbandoned.erase(std::remove_if(m_vecAbandoned.begin(), m_vecAbandoned.end(), fCompleted),
                         m_vecAbandoned.end());
}
