// The base of the protection engines: standard frames of 5 ms and the queue limits that go with them.
#pragma once

#include "apo/base/apo_base_engine.h"

inline constexpr int AUDIO_KELVANE_FRAME_LEN = 240; // sample frames, 5 ms at 48 kHz

class CKelvaneEngine : public CBaseEngine
{
public:
    CKelvaneEngine();
    ~CKelvaneEngine() override;
};
