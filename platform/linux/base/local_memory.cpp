// Local memory: the heap.
#include "base/failure.h"

#include <windows.h>

#include <cstdlib>

HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes)
{
    if (IsToldToFail("LocalAlloc"))
        return nullptr;
    const size_t iBytes = uBytes > 0 ? uBytes : 1;
    void* const pMemory = (uFlags & LMEM_ZEROINIT) != 0 ? std::calloc(1, iBytes) : std::malloc(iBytes);
    if (pMemory == nullptr)
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return pMemory;
}

HLOCAL LocalFree(HLOCAL hMem)
{
    std::free(hMem);
    return nullptr;
}
