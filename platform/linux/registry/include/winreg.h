// The registry's names: keys, values, rights, types and change notification.
#pragma once

#include <winbase.h>
#include <windef.h>
#include <winnt.h>

typedef LONG LSTATUS;
typedef DWORD REGSAM;

#define HKEY_CLASSES_ROOT ((HKEY)(ULONG_PTR)((LONG)0x80000000))
#define HKEY_CURRENT_USER ((HKEY)(ULONG_PTR)((LONG)0x80000001))
#define HKEY_LOCAL_MACHINE ((HKEY)(ULONG_PTR)((LONG)0x80000002))
#define HKEY_USERS ((HKEY)(ULONG_PTR)((LONG)0x80000003))
#define HKEY_CURRENT_CONFIG ((HKEY)(ULONG_PTR)((LONG)0x80000005))

// Rights of an open key.
#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_WOW64_64KEY 0x0100
#define KEY_READ 0x20019
#define KEY_ALL_ACCESS 0xF003F

// Types of a value.
#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11

#define REG_OPTION_NON_VOLATILE 0x0

#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2

#define REG_NOTIFY_CHANGE_NAME 0x1
#define REG_NOTIFY_CHANGE_ATTRIBUTES 0x2
#define REG_NOTIFY_CHANGE_LAST_SET 0x4
#define REG_NOTIFY_CHANGE_SECURITY 0x8

// Every operation gives an error code, 0 for success. Any thread. The narrow forms take UTF-8.
EXTERN_C LSTATUS WINAPI RegOpenKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD ulOptions, REGSAM samDesired, PHKEY phkResult);
EXTERN_C LSTATUS WINAPI RegCreateKeyExA(HKEY hKey, LPCSTR lpSubKey, DWORD Reserved, LPSTR lpClass, DWORD dwOptions,
                                        REGSAM samDesired, const LPSECURITY_ATTRIBUTES lpSecurityAttributes,
                                        PHKEY phkResult, LPDWORD lpdwDisposition);
EXTERN_C LSTATUS WINAPI RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD Reserved, LPWSTR lpClass, DWORD dwOptions,
                                        REGSAM samDesired, const LPSECURITY_ATTRIBUTES lpSecurityAttributes,
                                        PHKEY phkResult, LPDWORD lpdwDisposition);
EXTERN_C LSTATUS WINAPI RegCloseKey(HKEY hKey);

// A null buffer asks for the size alone; a short one gives ERROR_MORE_DATA and the size that is needed.
EXTERN_C LSTATUS WINAPI RegQueryValueExA(HKEY hKey, LPCSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                                         LPBYTE lpData, LPDWORD lpcbData);
EXTERN_C LSTATUS WINAPI RegSetValueExA(HKEY hKey, LPCSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData,
                                       DWORD cbData);
EXTERN_C LSTATUS WINAPI RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData,
                                       DWORD cbData);
EXTERN_C LSTATUS WINAPI RegDeleteValueA(HKEY hKey, LPCSTR lpValueName);

// Deletes a key without subkeys; one with subkeys gives ERROR_ACCESS_DENIED.
EXTERN_C LSTATUS WINAPI RegDeleteKeyExA(HKEY hKey, LPCSTR lpSubKey, REGSAM samDesired, DWORD Reserved);
EXTERN_C LSTATUS WINAPI RegDeleteKeyExW(HKEY hKey, LPCWSTR lpSubKey, REGSAM samDesired, DWORD Reserved);

// Names alone are told. Lengths are characters: on the way in with the end's zero, on the way out without it.
EXTERN_C LSTATUS WINAPI RegEnumKeyExA(HKEY hKey, DWORD dwIndex, LPSTR lpName, LPDWORD lpcchName, LPDWORD lpReserved,
                                      LPSTR lpClass, LPDWORD lpcchClass, LPFILETIME lpftLastWriteTime);
EXTERN_C LSTATUS WINAPI RegEnumValueA(HKEY hKey, DWORD dwIndex, LPSTR lpValueName, LPDWORD lpcchValueName,
                                      LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData);

// Signals the event once, at the first change of names or values in the key and below, or when it is closed or deleted.
// Subtree, both of these kinds and fAsynchronous must be asked for.
EXTERN_C LSTATUS WINAPI RegNotifyChangeKeyValue(HKEY hKey, BOOL bWatchSubtree, DWORD dwNotifyFilter, HANDLE hEvent,
                                                BOOL fAsynchronous);
