// The environment, which is this process's own.
#include "base/error.h"

#include <strings.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace
{
// A name's letter case counts only between names that differ in nothing else. Null for one that isn't set.
const char* FindVariable(const char* pName)
{
    if (const char* const pValue = std::getenv(pName))
        return pValue;
    const size_t iLength = std::strlen(pName);
    for (char** ppEntry = environ; ppEntry != nullptr && *ppEntry != nullptr; ++ppEntry)
        if (strncasecmp(*ppEntry, pName, iLength) == 0 && (*ppEntry)[iLength] == '=')
            return *ppEntry + iLength + 1;
    return nullptr;
}
} // namespace

// The length without the zero; if it doesn't fit, the room needed with it; 0 for a name that isn't set.
DWORD GetEnvironmentVariableA(LPCSTR lpName, LPSTR lpBuffer, DWORD nSize)
{
    const char* const pValue = lpName == nullptr ? nullptr : FindVariable(lpName);
    if (pValue == nullptr)
        return static_cast<DWORD>(FailWith(ERROR_ENVVAR_NOT_FOUND));
    const size_t iLength = std::strlen(pValue);
    if (lpBuffer == nullptr || nSize <= iLength)
        return static_cast<DWORD>(iLength + 1);
    std::memcpy(lpBuffer, pValue, iLength + 1);
    return static_cast<DWORD>(iLength);
}
