// Random bytes under the cryptographic provider's names, from this system's own source.
#include "base/error.h"
#include "base/failure.h"

#include <windows.h>

#include <wincrypt.h>

#include <algorithm>
#include <mutex>
#include <set>
#include <sys/random.h>

namespace
{
struct CryptProviders
{
    std::mutex oLock;
    std::set<HCRYPTPROV> setOpen;
    HCRYPTPROV hNext = 0x5000;
};

CryptProviders& Providers()
{
    static CryptProviders* pProviders = new CryptProviders; // threads may still come after the program's end began
    return *pProviders;
}
} // namespace

EXTERN_C BOOL WINAPI CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR, LPCWSTR, DWORD dwProvType, DWORD dwFlags)
{
    if (IsToldToFail("CryptAcquireContextW"))
        return FALSE;
    if (phProv == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (dwProvType != PROV_RSA_FULL)
        return FailWith(static_cast<DWORD>(NTE_PROV_TYPE_NOT_DEF));
    if ((dwFlags & CRYPT_VERIFYCONTEXT) == 0)
        return FailWith(static_cast<DWORD>(NTE_BAD_KEYSET)); // this machine keeps no keys
    std::lock_guard<std::mutex> oGuard(Providers().oLock);
    *phProv = Providers().hNext++;
    Providers().setOpen.insert(*phProv);
    return TRUE;
}

EXTERN_C BOOL WINAPI CryptReleaseContext(HCRYPTPROV hProv, DWORD)
{
    std::lock_guard<std::mutex> oGuard(Providers().oLock);
    return Providers().setOpen.erase(hProv) > 0 ? TRUE : FailWith(ERROR_INVALID_PARAMETER);
}

EXTERN_C BOOL WINAPI CryptGenRandom(HCRYPTPROV hProv, DWORD dwLen, BYTE* pbBuffer)
{
    if (IsToldToFail("CryptGenRandom"))
        return FALSE;
    {
        std::lock_guard<std::mutex> oGuard(Providers().oLock);
        if (Providers().setOpen.count(hProv) == 0 || (pbBuffer == nullptr && dwLen > 0))
            return FailWith(ERROR_INVALID_PARAMETER);
    }
    while (dwLen > 0)
    {
        const ssize_t iGot = getrandom(pbBuffer, std::min<DWORD>(dwLen, 256), 0); // whole up to 256 bytes
        if (iGot <= 0)
            return FailWith(static_cast<DWORD>(NTE_FAIL));
        pbBuffer += iGot;
        dwLen -= static_cast<DWORD>(iGot);
    }
    return TRUE;
}
