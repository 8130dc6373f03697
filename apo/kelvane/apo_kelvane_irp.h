// One power amplifier behind its driver: told whether to run active, under the algorithm's protection, or at low gain.
#pragma once

#include "apo/kelvane/apo_kelvane_device.h"
#include "audioapi/audio_api_lock.h"

#include <windows.h>

#include <winioctl.h>

#include <string>

inline constexpr DWORD KELVANE_STATUS_ACTIVE = 0;
inline constexpr DWORD KELVANE_STATUS_DEACTIVE = 2;

inline constexpr DWORD IOCTL_KELVANE_SET_STATUS = CTL_CODE(0x0400U, 0x705U, METHOD_BUFFERED, FILE_ANY_ACCESS);

// Opens its device once; without one every request is a success without effect.
class CKelvaneIRP
{
public:
    // strDeviceName as AUDIO_KELVANE_DEVICE0. Sets the amplifier active when the device opens.
    explicit CKelvaneIRP(const std::string& strDeviceName);
    // Sets the amplifier low first.
    virtual ~CKelvaneIRP();
    CKelvaneIRP(const CKelvaneIRP&) = delete;
    CKelvaneIRP& operator=(const CKelvaneIRP&) = delete;

    // Sends the status and waits until the driver has taken it, 2 s at most, and 200 ms more until it has let go of a
    // request that is cancelled. 0, the driver's error code, ERROR_TIMEOUT, or ERROR_OUTOFMEMORY, which one that was
    // set before doesn't give unless its driver kept a request. Throws nothing. Any thread but the processing thread;
    // one request at a time.
    DWORD SetKelvaneStatus(const DWORD& dwStatusCtrl);

private:
    // The result of a request that the driver has; one that is late beyond the wait is cancelled.
    DWORD WaitForCompletion(CKelvaneRequest& oRequest);

    CKelvaneDevice m_oDevice;  // overlapped, exclusive
    HANDLE m_hEvent = nullptr; // manual reset; of the request in flight
    CAudioLock m_csRequest;    // guards all of the above
};
