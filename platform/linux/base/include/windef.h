// The platform's basic types at their published widths, whatever this system's own are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cwchar>

#define WINAPI
#define CALLBACK
#define APIENTRY
#define STDMETHODCALLTYPE
#define NTAPI
#define EXTERN_C extern "C"
#ifndef CONST
#define CONST const
#endif

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260

// A handle of one kind can't be taken for one of another.
#define DECLARE_HANDLE(name)                                                                                           \
    struct name##__                                                                                                    \
    {                                                                                                                  \
        int unused;                                                                                                    \
    };                                                                                                                 \
    typedef struct name##__* name

typedef void VOID;
typedef void* PVOID;
typedef void* LPVOID;

typedef char CHAR;
typedef unsigned char UCHAR;
typedef unsigned char BYTE;
typedef unsigned char BOOLEAN;
typedef unsigned short USHORT;
typedef unsigned short WORD;
typedef unsigned int UINT;
typedef int32_t BOOL;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint32_t DWORD;
typedef float FLOAT;
typedef LONG HRESULT;

// 64-bit values are `long long` as on the platform, so that one number format serves both builds.
typedef long long LONGLONG;
typedef unsigned long long ULONGLONG;
typedef unsigned char UINT8;
typedef short INT16;
typedef unsigned short UINT16;
typedef int INT32;
typedef unsigned int UINT32;
typedef long long INT64;
typedef unsigned long long UINT64;
typedef long long INT_PTR;
typedef unsigned long long UINT_PTR;
typedef long long LONG_PTR;
typedef unsigned long long ULONG_PTR;
typedef ULONG_PTR SIZE_T;

typedef BYTE* LPBYTE;
typedef BOOL* LPBOOL;
typedef ULONG* PULONG;
typedef DWORD* PDWORD;
typedef DWORD* LPDWORD;

typedef wchar_t WCHAR;
typedef CHAR* LPSTR;
typedef const CHAR* LPCSTR;
typedef const CHAR* LPCCH;
typedef WCHAR* LPWSTR;
typedef const WCHAR* PCWSTR;
typedef const WCHAR* LPCWSTR;
typedef const WCHAR* LPCWCH;

typedef void* HANDLE;
typedef HANDLE* PHANDLE;
typedef HANDLE HLOCAL;
DECLARE_HANDLE(HINSTANCE);
DECLARE_HANDLE(HKEY);
DECLARE_HANDLE(HWND);
typedef HINSTANCE HMODULE;
typedef HKEY* PHKEY;
typedef INT_PTR(WINAPI* FARPROC)();

typedef struct _FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
} FILETIME, *LPFILETIME;
