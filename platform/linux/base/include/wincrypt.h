// Random bytes of a cryptographic provider.
#pragma once

#include <windef.h>
#include <winerror.h>
#include <winnt.h>

typedef ULONG_PTR HCRYPTPROV;

#define PROV_RSA_FULL 1
#define CRYPT_VERIFYCONTEXT 0xF0000000
#define CRYPT_SILENT 0x00000040

// Any provider is the system's source of random bytes, at most 256 a call. Any thread.
EXTERN_C BOOL WINAPI CryptAcquireContextW(HCRYPTPROV* phProv, LPCWSTR szContainer, LPCWSTR szProvider, DWORD dwProvType,
                                          DWORD dwFlags);
EXTERN_C BOOL WINAPI CryptReleaseContext(HCRYPTPROV hProv, DWORD dwFlags);
EXTERN_C BOOL WINAPI CryptGenRandom(HCRYPTPROV hProv, DWORD dwLen, BYTE* pbBuffer);
