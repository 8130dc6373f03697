// The reading of the power status.
#include "apo/kelvane/engine/apo_kelvane_power.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

int CKelvanePower::AudioKelvaneSetBatteryInfo(const CKelvaneInstance& oInstance)
{
    if (!oInstance.HasBatteryInfo())
        return AUDIO_NO_HANDLE;
    SYSTEM_POWER_STATUS oSysPower;
    if (!GetSystemPowerStatus(&oSysPower))
    {
        AUDIOLOG_ERROR(AUDIO_NO_OBJECT, "GetSystemPowerStatus(&oSysPower)");
        return AUDIO_NO_OBJECT;
    }
    if (oSysPower.BatteryLifePercent > 100)
        oSysPower.BatteryLifePercent = 0;
    if (oSysPower.ACLineStatus > 1)
        oSysPower.ACLineStatus = 0;
    m_oSysPower = oSysPower;
    m_iSysPower = static_cast<UINT32>(oSysPower.BatteryLifePercent | oSysPower.ACLineStatus << 8);
    return 0;
}

void CKelvanePower::Tell(KelvaneDataStruct& oDataStruct) const
{
    const UINT32 iSysPower = m_iSysPower;
    oDataStruct.BatteryLifePercent = static_cast<UINT8>(iSysPower);
    oDataStruct.ACLineStatus = static_cast<UINT8>(iSysPower >> 8);
}
