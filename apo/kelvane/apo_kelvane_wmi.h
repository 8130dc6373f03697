// The embedded controller as an engine sees it: temperatures asked for and reported, each within bounds.
#pragma once

#include "apo/kelvane/apo_kelvane_call_thread.h"
#include "apo/kelvane/apo_kelvane_wmi_method.h"
#include "audioapi/audio_api_log.h"

#include <memory>

// Codes: 0; AUDIO_NO_HANDLE not connected; AUDIO_NO_OBJECT no memory, or a pointer stayed null; AUDIO_BAD_DATA word out
// of range, or the controller's refusal; AUDIO_BAD_COPY no output; ERROR_TIMEOUT; else the platform's HRESULT. The
// calls run on a thread of this object's own, in the multithreaded apartment, whatever apartment the caller's thread
// has. One that the controller doesn't answer within DEVICE_CALL_WAIT goes on there, and until it has ended every
// further one gives ERROR_TIMEOUT at once. The next one then is handed over without a wait, with ERROR_TIMEOUT: its
// time tells whether the controller is waited for again. One thread at a time; throws nothing.
class CKelvaneWMI
{
public:
    CKelvaneWMI() = default;
    virtual ~CKelvaneWMI() = default;
    CKelvaneWMI(const CKelvaneWMI&) = delete;
    CKelvaneWMI& operator=(const CKelvaneWMI&) = delete;

    // Connects to the method, once. After a failure both operations below give AUDIO_NO_HANDLE; after ERROR_TIMEOUT
    // because a thread of an earlier object is out still, the first of them behind its end has the connection made in
    // the background.
    HRESULT Initialize();
    // Hundredths of a degree Celsius of the sensor in the word; iTemperature is written on success only.
    HRESULT QueryTemperature(const INT64& ulCmd, INT32& iTemperature);
    // Sends a word that the controller only acknowledges.
    HRESULT SetECTemperature(const INT64& ulCmd);

private:
    // Runs the operation on the thread. The step of it that isn't answered in time is logged, with the caller's site.
    template <class Operation> HRESULT Call(Operation fOperation, const AudioLogSite& oSite);
    DWORD Start();
    DWORD StartLate();

    std::shared_ptr<CKelvaneWMIMethod> m_pMethod;
    CKelvaneCallThread m_oCallThread;
    bool m_bStartDue = false; // a thread that was left behind kept this one's from starting
};
