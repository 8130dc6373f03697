// Requests to a driver: sent, waited for, given up without harm.
#include "apo/kelvane/apo_kelvane_device.h"

#include "audioapi/audio_api_log.h"

#include <algorithm>
#include <new>
#include <utility>

namespace
{
// The system's own mark, for a call that asks for the result may itself fail.
bool IsWithDriver(const std::unique_ptr<CKelvaneRequest>& pRequest)
{
    return pRequest != nullptr && !HasOverlappedIoCompleted(&pRequest->stRecord);
}
} // namespace

CKelvaneDevice::~CKelvaneDevice()
{
    if (!IsOpen())
        return;
    CancelIoEx(m_hDevice, nullptr);
    CloseHandle(m_hDevice);
    // What the driver has still the system may write to at any time.
    if (IsWithDriver(m_pRequest))
        static_cast<void>(m_pRequest.release());
    for (CRequest& pRequest : m_vecGivenUp)
        if (IsWithDriver(pRequest))
            static_cast<void>(pRequest.release());
}

bool CKelvaneDevice::IsPending() const
{
    return IsWithDriver(m_pRequest);
}

CKelvaneRequest* CKelvaneDevice::NewRequest() noexcept
try
{
    if (IsPending())
        GiveUp();
    if (m_pRequest == nullptr)
        m_pRequest = std::make_unique<CKelvaneRequest>();
    *m_pRequest = {};
    return m_pRequest.get();
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

// Keeps the last request until it completes.
void CKelvaneDevice::GiveUp()
{
    m_vecGivenUp.erase(std::partition(m_vecGivenUp.begin(), m_vecGivenUp.end(), IsWithDriver), m_vecGivenUp.end());
    m_vecGivenUp.push_back(std::move(m_pRequest));
}

DWORD CKelvaneDevice::Send(CKelvaneRequest& oRequest)
{
    void* const pOutput = oRequest.dwOutputSize != 0 ? &oRequest.ulOutput : nullptr;
    if (DeviceIoControl(m_hDevice, oRequest.dwCode, oRequest.aInput, oRequest.dwInputSize, pOutput,
                        oRequest.dwOutputSize, &oRequest.dwReturned, &oRequest.stRecord))
        return 0;
    const DWORD dwError = AudioLastError();
    if (dwError != ERROR_IO_PENDING)
        oRequest.stRecord.Internal = 0; // the mark of a request that was refused may be left at pending
    return dwError;
}

DWORD CKelvaneDevice::Wait(CKelvaneRequest& oRequest, DWORD dwMilliseconds)
{
    if (GetOverlappedResultEx(m_hDevice, &oRequest.stRecord, &oRequest.dwReturned, dwMilliseconds, FALSE))
        return 0;
    const DWORD dwError = AudioLastError();
    return dwError == WAIT_TIMEOUT ? ERROR_TIMEOUT : dwError;
}
