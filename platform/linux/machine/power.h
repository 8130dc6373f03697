// The power status: from what is known of the supply, and as it was told.
#pragma once

#include <windows.h>

// 255 for what isn't known, as on the platform.
SYSTEM_POWER_STATUS PowerStatusOf(BYTE iMains, BYTE iPercent);
// No longer what it was told.
void ResetPowerStatus();
