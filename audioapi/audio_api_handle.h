// Owners of what the platform hands out: handles, local memory.
#pragma once

#include <windows.h>

#include <memory>

struct CAudioHandleCloser
{
    void operator()(HANDLE hObject) const { CloseHandle(hObject); }
};
// Null stands for none: INVALID_HANDLE_VALUE must not come in.
using CAudioHandle = std::unique_ptr<void, CAudioHandleCloser>;

struct CAudioLocalFree
{
    void operator()(HLOCAL hMemory) const { LocalFree(hMemory); }
};
using CAudioLocalMemory = std::unique_ptr<void, CAudioLocalFree>;
