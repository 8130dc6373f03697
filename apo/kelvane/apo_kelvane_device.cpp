// Requests to a driver: sent, waited for, given up without harm.
#include "apo/kelvane/apo_kelvane_device.h"

#include "audioapi/audio_api_log.h"

#include <algorithm>

namespace
{
// The system's own mark, for a call that asks for the result may itself fail.
bool IsPending(const CKelvaneDevice::CRequest& pRequest)
{
    return !HasOverlappedIoCompleted(&pRequest->stRecord);
}
} // namespace

CKelvaneDevice::~CKelvaneDevice()
{
    if (!IsOpen())
        return;
    CancelIoEx(m_hDevice, nullptr);
    ForgetCompleted();
    CloseHandle(m_hDevice);
    for (CRequest& pRequest : m_vecGivenUp)
        static_cast<void>(pRequest.release()); // the system may write there at any time
}

DWORD CKelvaneDevice::Send(CKelvaneRequest& oRequest)
{
    ForgetCompleted();
    m_vecGivenUp.reserve(m_vecGivenUp.size() + 1); // so that a pending request is never lost for want of memory
    void* const pOutput = oRequest.dwOutputSize != 0 ? &oRequest.ulOutput : nullptr;
    if (DeviceIoControl(m_hDevice, oRequest.dwCode, oRequest.aInput, oRequest.dwInputSize, pOutput,
                        oRequest.dwOutputSize, &oRequest.dwReturned, &oRequest.stRecord))
        return 0;
    return AudioLastError();
}

DWORD CKelvaneDevice::Wait(CKelvaneRequest& oRequest, DWORD dwMilliseconds)
{
    if (GetOverlappedResultEx(m_hDevice, &oRequest.stRecord, &oRequest.dwReturned, dwMilliseconds, FALSE))
        return 0;
    const DWORD dwError = AudioLastError();
    return dwError == WAIT_TIMEOUT ? ERROR_TIMEOUT : dwError;
}

bool CKelvaneDevice::GiveUp(CRequest pRequest)
{
    if (!IsPending(pRequest))
        return false;
    m_vecGivenUp.push_back(std::move(pRequest));
    return true;
}

bool CKelvaneDevice::HasGivenUp()
{
    ForgetCompleted();
    return !m_vecGivenUp.empty();
}

void CKelvaneDevice::ForgetCompleted()
{
    m_vecGivenUp.erase(std::partition(m_vecGivenUp.begin(), m_vecGivenUp.end(), IsPending), m_vecGivenUp.end());
}
