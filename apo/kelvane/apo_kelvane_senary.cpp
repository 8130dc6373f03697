// The Senary codec's numbers and texts. Its scale runs the other way: the smaller value is the higher gain.
#include "apo/kelvane/apo_kelvane_senary.h"

#include "audioapi/audio_api_log.h"

namespace
{
constexpr CodecDesign SENARY_DESIGN = {
    GUID_KELVANE_SENARY_INTERFACE,
    IOCTL_SENARY_SET_HWGAIN_HIGHLOW,
    4,
    0, // HWGAIN_HIGH
    2, // HWGAIN_LOW
    false,
    "FindTargetGuid(GUID_KELVANE_SENARY_INTERFACE, &oDevInterfaceData, ulSize)",
    "DeviceIoControl(m_hDevicePath, IOCTL_SENARY_SET_HWGAIN_HIGHLOW, (LPVOID)(&iGainStatus), sizeof(ULONG), "
    "(LPVOID)(&ulResult), sizeof(ULONG), &cbBytesReturned, NULL)",
    "Set Senary Gain Status to HWGAIN_HIGH",
    "Set Senary Gain Status to HWGAIN_LOW"};
} // namespace

CSenaryGainConfig::CSenaryGainConfig() : CCodecGainConfig(SENARY_DESIGN)
{
}

void CSenaryGainConfig::Initialize()
{
    if (AUDIO_CHECK(FindSenaryCodecRes()) == 0)
        SetHighSenaryHWGain();
}
