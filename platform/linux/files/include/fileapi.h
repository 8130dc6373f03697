// Opening by name: devices and what else CreateFile opens.
#pragma once

#include <minwinbase.h>

#define OPEN_EXISTING 3

extern "C"
{
    // Opens a device of the machine: "\\.\NAME" or the path of a device interface; case doesn't count. Sharing mode 0
    // is exclusive. INVALID_HANDLE_VALUE on failure: ERROR_FILE_NOT_FOUND for a device that isn't there,
    // ERROR_SHARING_VIOLATION for one that is open against either side's sharing mode, else the device's own refusal.
    HANDLE CreateFileA(LPCSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode,
                       LPSECURITY_ATTRIBUTES lpSecurityAttributes, DWORD dwCreationDisposition,
                       DWORD dwFlagsAndAttributes, HANDLE hTemplateFile);
    HANDLE CreateFileW(LPCWSTR lpFileName, DWORD dwDesiredAccess, DWORD dwShareMode,
                       LPSECURITY_ATTRIBUTES lpSecurityAttributes, DWORD dwCreationDisposition,
                       DWORD dwFlagsAndAttributes, HANDLE hTemplateFile);
}
