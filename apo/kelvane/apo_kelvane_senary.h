// The Senary codec's hardware gain.
#pragma once

#include "apo/kelvane/apo_kelvane_codec.h"
#include "audioapi/audio_api_singleton.h"

#include <memory>

class CSenaryGainConfig : public CCodecGainConfig, public CAudioSingleton<CSenaryGainConfig>
{
public:
    // Finds and opens the device.
    DWORD FindSenaryCodecRes() { return FindCodecRes(); }
    DWORD SetHighSenaryHWGain() { return SetHighHWGain(); }
    DWORD SetLowSenaryHWGain() { return SetLowHWGain(); }

private:
    friend class CAudioSingleton<CSenaryGainConfig>;
    friend std::default_delete<CSenaryGainConfig>;
    CSenaryGainConfig();
    ~CSenaryGainConfig() = default;
};
