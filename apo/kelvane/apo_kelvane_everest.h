// The Everest codec's hardware gain.
#pragma once

#include "apo/kelvane/apo_kelvane_codec.h"
#include "audioapi/audio_api_singleton.h"

#include <memory>

class CEverestGainConfig : public CCodecGainConfig, public CAudioSingleton<CEverestGainConfig>
{
public:
    // Finds and opens the device.
    DWORD FindEverestCodecRes() { return FindCodecRes(); }
    DWORD SetHighEverestHWGain() { return SetHighHWGain(); }
    DWORD SetLowEverestHWGain() { return SetLowHWGain(); }

private:
    friend class CAudioSingleton<CEverestGainConfig>;
    friend std::default_delete<CEverestGainConfig>;
    CEverestGainConfig();
    ~CEverestGainConfig() = default;
};
