// The environment, which is this process's own, and the constants of the GUID header.
#include "platform/linux/error.h"

#include <cstdlib>
#include <cstring>

const GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

// The length without the zero; if it doesn't fit, the room needed with it; 0 for a name that isn't set.
DWORD GetEnvironmentVariableA(LPCSTR lpName, LPSTR lpBuffer, DWORD nSize)
{
    const char* const pValue = lpName == nullptr ? nullptr : std::getenv(lpName);
    if (pValue == nullptr)
        return static_cast<DWORD>(FailWith(ERROR_ENVVAR_NOT_FOUND));
    const size_t iLength = std::strlen(pValue);
    if (lpBuffer == nullptr || nSize <= iLength)
        return static_cast<DWORD>(iLength + 1);
    std::memcpy(lpBuffer, pValue, iLength + 1);
    return static_cast<DWORD>(iLength);
}
