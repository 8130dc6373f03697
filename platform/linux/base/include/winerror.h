// Error and result codes with their published values.
#pragma once

#include <windef.h>

#define ERROR_SUCCESS 0
#define ERROR_INVALID_FUNCTION 1
#define ERROR_FILE_NOT_FOUND 2
#define ERROR_PATH_NOT_FOUND 3
#define ERROR_TOO_MANY_OPEN_FILES 4
#define ERROR_ACCESS_DENIED 5
#define ERROR_INVALID_HANDLE 6
#define ERROR_NOT_ENOUGH_MEMORY 8
#define ERROR_OUTOFMEMORY 14
#define ERROR_NO_MORE_FILES 18
#define ERROR_WRITE_PROTECT 19
#define ERROR_BAD_LENGTH 24
#define ERROR_GEN_FAILURE 31
#define ERROR_SHARING_VIOLATION 32
#define ERROR_HANDLE_EOF 38
#define ERROR_NOT_SUPPORTED 50
#define ERROR_FILE_EXISTS 80
#define ERROR_INVALID_PARAMETER 87
#define ERROR_DISK_FULL 112
#define ERROR_INSUFFICIENT_BUFFER 122
#define ERROR_INVALID_NAME 123
#define ERROR_INVALID_LEVEL 124
#define ERROR_MOD_NOT_FOUND 126
#define ERROR_PROC_NOT_FOUND 127
#define ERROR_DIR_NOT_EMPTY 145
#define ERROR_BAD_PATHNAME 161
#define ERROR_ALREADY_EXISTS 183
#define ERROR_BAD_EXE_FORMAT 193
#define ERROR_ENVVAR_NOT_FOUND 203
#define ERROR_FILENAME_EXCED_RANGE 206
#define ERROR_FILE_TOO_LARGE 223
#define ERROR_MORE_DATA 234
#define ERROR_NO_MORE_ITEMS 259
#define ERROR_OPERATION_ABORTED 995
#define ERROR_IO_INCOMPLETE 996
#define ERROR_IO_PENDING 997
#define ERROR_NOACCESS 998
#define ERROR_NO_TOKEN 1008
#define ERROR_KEY_DELETED 1018
#define ERROR_DLL_INIT_FAILED 1114
#define ERROR_NOT_FOUND 1168
#define ERROR_PRIVILEGE_NOT_HELD 1314
#define ERROR_NONE_MAPPED 1332
#define ERROR_INVALID_SID 1337
#define ERROR_TIMEOUT 1460
#define ERROR_INVALID_USER_BUFFER 1784

#define S_OK static_cast<HRESULT>(0)
#define S_FALSE static_cast<HRESULT>(1)
#define E_UNEXPECTED static_cast<HRESULT>(0x8000FFFFU)
#define E_NOTIMPL static_cast<HRESULT>(0x80004001U)
#define E_NOINTERFACE static_cast<HRESULT>(0x80004002U)
#define E_POINTER static_cast<HRESULT>(0x80004003U)
#define E_FAIL static_cast<HRESULT>(0x80004005U)
#define E_OUTOFMEMORY static_cast<HRESULT>(0x8007000EU)
#define E_INVALIDARG static_cast<HRESULT>(0x80070057U)
#define CLASS_E_NOAGGREGATION static_cast<HRESULT>(0x80040110U)
#define REGDB_E_CLASSNOTREG static_cast<HRESULT>(0x80040154U)
#define CO_E_NOTINITIALIZED static_cast<HRESULT>(0x800401F0U)
#define CO_E_CLASSSTRING static_cast<HRESULT>(0x800401F3U)
#define CO_E_DLLNOTFOUND static_cast<HRESULT>(0x800401F8U)
#define CO_E_ERRORINDLL static_cast<HRESULT>(0x800401F9U)
#define RPC_E_CHANGED_MODE static_cast<HRESULT>(0x80010106U)
#define RPC_E_TOO_LATE static_cast<HRESULT>(0x80010119U)
#define DISP_E_BADVARTYPE static_cast<HRESULT>(0x80020008U)
#define DISP_E_BADINDEX static_cast<HRESULT>(0x8002000BU)
#define DISP_E_ARRAYISLOCKED static_cast<HRESULT>(0x8002000DU)

#define FACILITY_WIN32 7
#define SEVERITY_ERROR 1
#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)
#define MAKE_HRESULT(sev, fac, code)                                                                                   \
    static_cast<HRESULT>((static_cast<UINT32>(sev) << 31) | (static_cast<UINT32>(fac) << 16) |                         \
                         static_cast<UINT32>(code))

inline HRESULT HRESULT_FROM_WIN32(DWORD dwError)
{
    return static_cast<HRESULT>(dwError) <= 0 ? static_cast<HRESULT>(dwError)
                                              : MAKE_HRESULT(SEVERITY_ERROR, FACILITY_WIN32, dwError & 0xFFFF);
}
