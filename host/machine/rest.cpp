// Waits for the module's threads, and looks for an interrupt meanwhile.
#include "host/machine/rest.h"

#include "host/machine/host_machine.h"
#include "host/machine/interrupt.h"

#include <chrono>

bool WaitForRest(int iLimitS)
{
    constexpr unsigned SLICE_MS = 100;
    const auto tLimit = std::chrono::steady_clock::now() + std::chrono::seconds(iLimitS);
    while (!host::WaitUntilIdle(SLICE_MS))
    {
        if (IsInterrupted())
            return true;
        if (std::chrono::steady_clock::now() >= tLimit)
            return false;
    }
    return true;
}
