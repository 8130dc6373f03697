// The list of processes.
#pragma once

#include <windows.h>

#define TH32CS_SNAPPROCESS 0x00000002

typedef struct tagPROCESSENTRY32W
{
    DWORD dwSize;
    DWORD cntUsage;
    DWORD th32ProcessID;
    ULONG_PTR th32DefaultHeapID;
    DWORD th32ModuleID;
    DWORD cntThreads;
    DWORD th32ParentProcessID;
    LONG pcPriClassBase;
    DWORD dwFlags;
    WCHAR szExeFile[MAX_PATH];
} PROCESSENTRY32W, *LPPROCESSENTRY32W;

extern "C"
{
    // The processes of this system as they run at the call; of nothing but processes. INVALID_HANDLE_VALUE on failure.
    HANDLE CreateToolhelp32Snapshot(DWORD dwFlags, DWORD th32ProcessID);
    // ERROR_BAD_LENGTH for a record whose dwSize isn't its size, ERROR_NO_MORE_FILES behind the last process.
    BOOL Process32FirstW(HANDLE hSnapshot, LPPROCESSENTRY32W lppe);
    BOOL Process32NextW(HANDLE hSnapshot, LPPROCESSENTRY32W lppe);
}
