// Armed failures: what a system call asks first, so that a test can make it fail.
#pragma once

// True if the call was told to fail this time: the last error is set then. One load while nothing is armed. Any thread.
bool IsToldToFail(const char* pCall);
