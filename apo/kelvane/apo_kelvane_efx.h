// A processing object that watches the system: bypass and parameter changes are decided from the monitor's status
// record.
#pragma once

#include "apo/base/apo_base_class.h"

class CKelvaneEFX : public CBaseAPO
{
public:
    using CBaseAPO::CBaseAPO;

protected:
    // 1 without the algorithm library, at a rate it doesn't take, with bypass asked by engine or system, or on a
    // headset.
    int IsNeedByPass() override;
    // 1 if volume or, with sound effects on, a sound mode changed since the last call; brings the engine's mirrors up
    // to date.
    int IsNeedUpdataPara() override;
};
