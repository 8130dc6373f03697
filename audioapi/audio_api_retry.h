// Attempts that wait for the system to be ready.
#pragma once

#include <windows.h>

// Makes the attempt once and, until it gives true, up to iTryTimes times more, 100 ms apart. Whether one gave true.
template <class Attempt> bool AudioRetry(INT32 iTryTimes, Attempt fAttempt)
{
    for (INT32 iTry = 0; !fAttempt(); ++iTry)
    {
        if (iTry >= iTryTimes)
            return false;
        Sleep(100);
    }
    return true;
}
