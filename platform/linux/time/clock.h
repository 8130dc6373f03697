// The machine's clock, as the layer itself sets it.
#pragma once

// This system's time again, running.
void ResetClock();
