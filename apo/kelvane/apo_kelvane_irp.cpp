// The amplifier's one request: sent, waited for within bounds, and given up without harm.
#include "apo/kelvane/apo_kelvane_irp.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <mutex>

namespace
{
constexpr int OPEN_ATTEMPTS = 4;
constexpr DWORD OPEN_PAUSE = 3;    // milliseconds
constexpr DWORD CANCEL_WAIT = 200; // milliseconds

// What the driver takes: a reserved word, the status.
constexpr size_t STATUS_WORD = 1;
constexpr DWORD STATUS_RECORD_SIZE = 8;
} // namespace

// Without memory for its first request it is as one whose driver refused: there, and asked again at the next start.
CKelvaneIRP::CKelvaneIRP(const std::string& strDeviceName)
{
    DWORD dwReason = 0;
    for (int i = 0; i < OPEN_ATTEMPTS && !m_oDevice.IsOpen(); ++i)
    {
        m_oDevice.Open(CreateFileA(strDeviceName.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                   FILE_FLAG_OVERLAPPED, nullptr));
        if (m_oDevice.IsOpen())
            continue;
        dwReason = AudioLastError();
        Sleep(OPEN_PAUSE);
    }
    if (!m_oDevice.IsOpen())
    {
        AUDIOLOG_WARN("IRP interface: " + strDeviceName + " not support! reason:" + std::to_string(dwReason));
        return;
    }
    AUDIOLOG_INFO("Success to Initialize IRP interface:" + strDeviceName);
    m_hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (AUDIO_MISSING(m_hEvent, AUDIO_NO_HANDLE))
        return;
    AUDIO_CHECK(SetKelvaneStatus(KELVANE_STATUS_ACTIVE));
}

CKelvaneIRP::~CKelvaneIRP()
{
    SetKelvaneStatus(KELVANE_STATUS_DEACTIVE);
    if (m_hEvent != nullptr)
        CloseHandle(m_hEvent);
}

DWORD CKelvaneIRP::SetKelvaneStatus(const DWORD& dwStatusCtrl)
{
    const std::lock_guard<CAudioLock> oGuard(m_csRequest);
    if (!m_oDevice.IsOpen() || m_hEvent == nullptr)
        return 0;
    CKelvaneRequest* const pRequest = m_oDevice.NewRequest();
    if (AUDIO_MISSING(pRequest, ERROR_OUTOFMEMORY))
        return ERROR_OUTOFMEMORY;
    pRequest->stRecord.hEvent = m_hEvent;
    pRequest->dwCode = IOCTL_KELVANE_SET_STATUS;
    pRequest->aInput[STATUS_WORD] = dwStatusCtrl;
    pRequest->dwInputSize = STATUS_RECORD_SIZE;
    if (const DWORD dwError = m_oDevice.Send(*pRequest); dwError == ERROR_IO_PENDING)
    {
        if (const DWORD dwResult = WaitForCompletion(*pRequest))
        {
            AUDIOLOG_ERROR(dwResult,
                           "Execute GetOverlappedResult failed! dwStatusCtrl:" + std::to_string(dwStatusCtrl));
            return dwResult;
        }
    }
    else if (dwError != 0)
    {
        AUDIOLOG_ERROR(dwError, "Execute DeviceIoControl failed! dwStatusCtrl:" + std::to_string(dwStatusCtrl));
        SetEvent(m_hEvent);
        return dwError;
    }
    const auto iHandle = static_cast<INT64>(reinterpret_cast<UINT_PTR>(m_oDevice.Handle()));
    AUDIOLOG_INFO("Set Kelvane Interface: " + CAudioSTR::ToHexTag(iHandle) +
                  " Status Success! dwStatusCtrl:" + std::to_string(dwStatusCtrl));
    return 0;
}

// A driver that is late beyond the wait is asked to let the request go; one that finishes it all the same was in time.
// What it holds on to will signal its event some day, so the next request gets another.
DWORD CKelvaneIRP::WaitForCompletion(CKelvaneRequest& oRequest)
{
    DWORD dwResult = m_oDevice.Wait(oRequest, DEVICE_CALL_WAIT);
    if (dwResult == ERROR_TIMEOUT)
    {
        m_oDevice.Cancel(oRequest);
        dwResult = m_oDevice.Wait(oRequest, CANCEL_WAIT);
        if (dwResult == ERROR_OPERATION_ABORTED)
            dwResult = ERROR_TIMEOUT;
    }
    if (!m_oDevice.IsPending())
        return dwResult;
    const HANDLE hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (AUDIO_MISSING(hEvent, AUDIO_NO_HANDLE))
        return dwResult; // with the old one a wait may end early, as a failure
    CloseHandle(m_hEvent);
    m_hEvent = hEvent;
    return dwResult;
}
