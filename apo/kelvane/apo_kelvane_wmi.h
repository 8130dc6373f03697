// The embedded controller as an engine sees it: temperatures asked for and reported, each within bounds.
#pragma once

#include "apo/kelvane/apo_kelvane_call_thread.h"
#include "apo/kelvane/apo_kelvane_wmi_method.h"
#include "audioapi/audio_api_log.h"

#include <memory>

// Codes: 0; 6 not connected; 12 no memory, or a pointer stayed null; 13 word out of range, or the controller's refusal;
// 22 no output; ERROR_TIMEOUT; else the platform's HRESULT. The calls run on a thread of this object's own, in the
// multithreaded apartment, whatever apartment the caller's thread has. One that the controller doesn't answer within
// DEVICE_CALL_WAIT goes on there, and until it has ended every further one gives ERROR_TIMEOUT at once. One thread at a
// time; throws nothing.
class CKelvaneWMI
{
public:
    CKelvaneWMI() = default;
    virtual ~CKelvaneWMI() = default;
    CKelvaneWMI(const CKelvaneWMI&) = delete;
    CKelvaneWMI& operator=(const CKelvaneWMI&) = delete;

    // Connects to the method, once. After a failure both operations below give 6.
    HRESULT Initialize();
    // Hundredths of a degree Celsius of the sensor in the word; iTemperature is written on success only.
    HRESULT QueryTemperature(const INT64& ulCmd, INT32& iTemperature);
    // Sends a word that the controller only acknowledges.
    HRESULT SetECTemperature(const INT64& ulCmd);

private:
    // Runs the operation on the thread. The step of it that isn't answered in time is logged, with the caller's site.
    template <class Operation> HRESULT Call(Operation fOperation, const AudioLogSite& oSite);

    std::shared_ptr<CKelvaneWMIMethod> m_pMethod;
    CKelvaneCallThread m_oCallThread;
};
