// What the two makes of codec have in common: a driver found through its interface class, and a gain of two steps.
#pragma once

#include "apo/kelvane/apo_kelvane_device.h"
#include "audioapi/audio_api_lock.h"

#include <windows.h>

#include <setupapi.h>
#include <winioctl.h>

#include <string>

// What tells one make from the other: its numbers, and its texts in the log.
struct CodecDesign
{
    GUID guidInterface;
    DWORD dwRequest;
    DWORD dwSize; // bytes of the request's input, and of its output
    ULONG ulHigh;
    ULONG ulLow;
    bool bTellReturned; // the number of bytes returned ends the success texts
    const char* pFindGuid;
    const char* pRequest;
    const char* pHigh;
    const char* pLow;
};

// Opens the first device of the interface class; without one every gain call is a success without effect. Codes are
// Windows error codes, 0 for success. A gain call ends within DEVICE_CALL_WAIT, with ERROR_TIMEOUT when the driver
// hasn't answered; it goes on there, and until it has ended every further one fails so at once. Found on the thread
// that loads the module; gain calls from that and any that locks a stream.
class CCodecGainConfig
{
public:
    // AUDIO_NO_OBJECT, without a line, when there is no device of the class; else leaves the first one in
    // pDevInterfaceData and the size of its detail record, in bytes, in ulSize.
    DWORD FindTargetGuid(const GUID& guidInterface, PSP_DEVICE_INTERFACE_DATA pDevInterfaceData, DWORD& ulSize);
    DWORD OpenDeviceInterface(SP_DEVICE_INTERFACE_DATA& oDevInterfaceData, SP_DEVINFO_DATA& oDevInfoData,
                              const DWORD& ulSize);

    CCodecGainConfig(const CCodecGainConfig&) = delete;
    CCodecGainConfig& operator=(const CCodecGainConfig&) = delete;

protected:
    explicit CCodecGainConfig(const CodecDesign& oDesign) : m_oDesign(oDesign) {}
    // Sets the gain low first.
    ~CCodecGainConfig();

    DWORD FindCodecRes();
    DWORD SetHWGain(ULONG ulGain, const char* pDone);
    DWORD SetHighHWGain() { return SetHWGain(m_oDesign.ulHigh, m_oDesign.pHigh); }
    DWORD SetLowHWGain() { return SetHWGain(m_oDesign.ulLow, m_oDesign.pLow); }

private:
    DWORD Request(ULONG ulGain, DWORD& dwReturned);

    CKelvaneDevice m_oDevice; // overlapped, shared
    HDEVINFO m_hDevInfo = INVALID_HANDLE_VALUE;
    CAudioLock m_csRequest; // guards m_oDevice: one gain call at a time
    const CodecDesign& m_oDesign;
};
