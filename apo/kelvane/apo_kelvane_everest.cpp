// The Everest codec's numbers and texts.
#include "apo/kelvane/apo_kelvane_everest.h"

#include "audioapi/audio_api_log.h"

namespace
{
constexpr CodecDesign EVEREST_DESIGN = {
    GUID_KELVANE_EVEREST_INTERFACE,
    IOCTL_EVEREST_SET_HWGAIN_HIGHLOW,
    1,
    1, // HWGAIN_HIGH
    0, // HWGAIN_LOW
    true,
    "FindTargetGuid(GUID_KELVANE_EVEREST_INTERFACE, &oDevInterfaceData, ulSize)",
    "DeviceIoControl(m_hDevicePath, IOCTL_EVEREST_SET_HWGAIN_HIGHLOW, (LPVOID)(&iGainStatus), sizeof(iGainStatus), "
    "(LPVOID)(&ulResult), sizeof(ulResult), &cbBytesReturned, NULL)",
    "Set Everest Gain Status to HWGAIN_HIGH,ReturnCode:",
    "Set Everest Gain Status to HWGAIN_LOW,ReturnCode:"};
} // namespace

CEverestGainConfig::CEverestGainConfig() : CCodecGainConfig(EVEREST_DESIGN)
{
}

void CEverestGainConfig::Initialize()
{
    if (AUDIO_CHECK(FindEverestCodecRes()) == 0)
        SetHighEverestHWGain();
}
