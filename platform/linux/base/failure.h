// What a system call asks first, so that a test can make it fail, and see which threads make it.
#pragma once

#include <windows.h>

// Counts a call that may wait, or asks a file, the registry, a device or another process, for the calling thread.
void CountCallThatMayWait();

// True if the call was told to fail this time: the last error is set then. One load while nothing is armed. Counts the
// call as one that may wait unless told that it can't. Any thread.
bool IsToldToFail(const char* pCall, bool bMayWait = true);
// The same for a call whose result is the code.
bool IsToldToFailWith(const char* pCall, LONG& lResult);
