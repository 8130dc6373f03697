// The power status: read on the slow clock, told to the library with every frame.
#pragma once

#include "apo/kelvane/engine/apo_kelvane_instance.h"
#include "audioapi/audio_api_atomic.h"

#include <windows.h>

class CKelvanePower
{
public:
    // Reads the status, when the library has a place for it. A code. One thread: a start's, then the parameter job's.
    int AudioKelvaneSetBatteryInfo(const CKelvaneInstance& oInstance);
    // What was read last. That thread.
    const SYSTEM_POWER_STATUS& Status() const { return m_oSysPower; }
    // Into the frame record. Any thread.
    void Tell(KelvaneDataStruct& oDataStruct) const;

private:
    SYSTEM_POWER_STATUS m_oSysPower = {};
    CAudioRelaxed<UINT32> m_iSysPower = 0; // what a frame needs of it: percent, and the AC line in bit 8
};
