// An open driver and its requests, each of which ends in time even when the driver doesn't answer.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

inline constexpr DWORD DEVICE_CALL_WAIT = 2000; // milliseconds that a device has for an answer

// One request with all that the system touches while it is pending.
struct CKelvaneRequest
{
    OVERLAPPED stRecord = {};
    DWORD dwCode = 0;
    ULONG aInput[2] = {};
    DWORD dwInputSize = 0; // bytes
    ULONG ulOutput = 0;
    DWORD dwOutputSize = 0; // bytes; 0: the request has no output buffer
    DWORD dwReturned = 0;   // bytes
};

// The handle, the request of the moment, and those that were given up while the driver had them. No thread of ours is
// in such a request: it needs its memory alone. One thread at a time; throws nothing.
class CKelvaneDevice
{
public:
    CKelvaneDevice() = default;
    // Asks the driver to let go of everything, and closes. What it doesn't let go of stays the system's for good.
    ~CKelvaneDevice();
    CKelvaneDevice(const CKelvaneDevice&) = delete;
    CKelvaneDevice& operator=(const CKelvaneDevice&) = delete;

    // Takes the handle over: one for overlapped requests, or INVALID_HANDLE_VALUE for no device.
    void Open(HANDLE hDevice) { m_hDevice = hDevice; }
    bool IsOpen() const { return m_hDevice != INVALID_HANDLE_VALUE; }
    HANDLE Handle() const { return m_hDevice; }

    // The next request, empty, in the last one's place; one that the driver has still is given up for it. Stays the
    // device's. Null without memory, which a device that was sent a request needs no more unless that was given up.
    CKelvaneRequest* NewRequest() noexcept;
    // 0: completed. ERROR_IO_PENDING: the driver has it, wait. Else the code with which it was refused.
    DWORD Send(CKelvaneRequest& oRequest);
    // The result of a pending request: 0, the driver's code, or ERROR_TIMEOUT.
    DWORD Wait(CKelvaneRequest& oRequest, DWORD dwMilliseconds);
    void Cancel(CKelvaneRequest& oRequest) { CancelIoEx(m_hDevice, &oRequest.stRecord); }
    // Whether the driver has the last request still.
    bool IsPending() const;

private:
    using CRequest = std::unique_ptr<CKelvaneRequest>;
    void GiveUp();

    HANDLE m_hDevice = INVALID_HANDLE_VALUE;
    CRequest m_pRequest; // the last one; kept, so that the next needs no memory
    std::vector<CRequest> m_vecGivenUp;
};
