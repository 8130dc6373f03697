// Local memory: the heap.
#include "base/failure.h"

#include <windows.h>

#include <cstdlib>

HLOCAL LocalAlloc(UINT, SIZE_T uBytes)
{
    if (IsToldToFail("LocalAlloc"))
        return nullptr;
    void* const pMemory = std::calloc(1, uBytes > 0 ? uBytes : 1);
    if (pMemory == nullptr)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return pMemory;
}

HLOCAL LocalFree(HLOCAL hMem)
{
    std::free(hMem);
    return nullptr;
}
