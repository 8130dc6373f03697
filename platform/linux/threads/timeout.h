// How long the time-outs and sleeps of the platform's calls take here.
#pragma once

#include <windows.h>

// Nanoseconds for so many milliseconds of the caller's. Any thread.
long long TimeoutNanoseconds(DWORD dwMilliseconds);

// The calling thread has waited that long for nothing.
void CountExpiredTimeout(DWORD dwMilliseconds);
