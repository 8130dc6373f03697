// From this system's error numbers to the platform's.
#pragma once

#include <windows.h>

// The platform's code for an errno value; ERROR_GEN_FAILURE for one that has none.
DWORD ErrorOfErrno(int iErrno);
// Sets the last error for an errno value and gives FALSE.
BOOL FailWithErrno(int iErrno);
// Sets the last error and gives FALSE.
BOOL FailWith(DWORD dwError);
