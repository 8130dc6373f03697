// The Senary codec's hardware gain.
#pragma once

#include "apo/kelvane/apo_kelvane_codec.h"
#include "audioapi/audio_api_singleton.h"

#include <memory>

// {54C9343C-2A17-42E8-B4FD-9F9DA27B94D6}
inline constexpr GUID GUID_KELVANE_SENARY_INTERFACE = {
    0x54C9343C, 0x2A17, 0x42E8, {0xB4, 0xFD, 0x9F, 0x9D, 0xA2, 0x7B, 0x94, 0xD6}};
inline constexpr DWORD IOCTL_SENARY_SET_HWGAIN_HIGHLOW =
    CTL_CODE(FILE_DEVICE_UNKNOWN, 0x219U, METHOD_BUFFERED, FILE_ANY_ACCESS);

class CSenaryGainConfig : public CCodecGainConfig, public CAudioSingleton<CSenaryGainConfig>
{
public:
    // Finds the device and sets the gain high. Once.
    void Initialize();
    // Finds and opens the device.
    DWORD FindSenaryCodecRes() { return FindCodecRes(); }
    DWORD SetHighSenaryHWGain() { return SetHighHWGain(); }
    DWORD SetLowSenaryHWGain() { return SetLowHWGain(); }

private:
    friend class CAudioSingleton<CSenaryGainConfig>;
    CSenaryGainConfig();
    ~CSenaryGainConfig() = default;
};
