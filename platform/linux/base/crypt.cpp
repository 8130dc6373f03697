// Random bytes under the cryptographic provider's names, from this system's own source.
#include "base/error.h"
#include "base/failure.h"

#include <windows.h>

#include <wincrypt.h>

#include <cerrno>
#include <unistd.h>

// The one provider there is keeps no keys, so that its handle stands for nothing.
EXTERN_C BOOL WINAPI CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR, LPCWSTR, DWORD, DWORD)
{
    if (IsToldToFail("CryptAcquireContextW"))
        return FALSE;
    *phProv = 1;
    return TRUE;
}

EXTERN_C BOOL WINAPI CryptReleaseContext(HCRYPTPROV, DWORD)
{
    return TRUE;
}

EXTERN_C BOOL WINAPI CryptGenRandom(HCRYPTPROV, DWORD dwLen, BYTE* pbBuffer)
{
    if (IsToldToFail("CryptGenRandom"))
        return FALSE;
    return getentropy(pbBuffer, dwLen) == 0 ? TRUE : FailWithErrno(errno);
}
