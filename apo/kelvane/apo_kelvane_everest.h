// The Everest codec's hardware gain.
#pragma once

#include "apo/kelvane/apo_kelvane_codec.h"
#include "audioapi/audio_api_singleton.h"

#include <memory>

// {F27CDC00-203E-4107-A503-21211537EA43}
inline constexpr GUID GUID_KELVANE_EVEREST_INTERFACE = {
    0xF27CDC00, 0x203E, 0x4107, {0xA5, 0x03, 0x21, 0x21, 0x15, 0x37, 0xEA, 0x43}};
inline constexpr DWORD IOCTL_EVEREST_SET_HWGAIN_HIGHLOW =
    CTL_CODE(FILE_DEVICE_UNKNOWN, 0x10BU, METHOD_OUT_DIRECT, FILE_ANY_ACCESS);

class CEverestGainConfig : public CCodecGainConfig, public CAudioSingleton<CEverestGainConfig>
{
public:
    // Finds the device and sets the gain high. Once.
    void Initialize();
    // Finds and opens the device.
    DWORD FindEverestCodecRes() { return FindCodecRes(); }
    DWORD SetHighEverestHWGain() { return SetHighHWGain(); }
    DWORD SetLowEverestHWGain() { return SetLowHWGain(); }

private:
    friend class CAudioSingleton<CEverestGainConfig>;
    CEverestGainConfig();
    ~CEverestGainConfig() = default;
};
