// Sessions: who is logged in, and who at the console.
#pragma once

#include <windows.h>

#define WTS_CURRENT_SERVER_HANDLE (static_cast<HANDLE>(nullptr))

typedef enum _WTS_CONNECTSTATE_CLASS
{
    WTSActive,
    WTSConnected,
    WTSConnectQuery,
    WTSShadow,
    WTSDisconnected,
    WTSIdle,
    WTSListen,
    WTSReset,
    WTSDown,
    WTSInit
} WTS_CONNECTSTATE_CLASS;

typedef enum _WTS_INFO_CLASS
{
    WTSUserName = 5
} WTS_INFO_CLASS;

typedef enum _WTS_TYPE_CLASS
{
    WTSTypeProcessInfoLevel0,
    WTSTypeProcessInfoLevel1,
    WTSTypeSessionInfoLevel1
} WTS_TYPE_CLASS;

typedef struct _WTS_SESSION_INFO_1W
{
    DWORD ExecEnvId;
    WTS_CONNECTSTATE_CLASS State;
    DWORD SessionId;
    LPWSTR pSessionName;
    LPWSTR pHostName;
    LPWSTR pUserName;
    LPWSTR pDomainName;
    LPWSTR pFarmName;
} WTS_SESSION_INFO_1W, *PWTS_SESSION_INFO_1W;

#define WTSQuerySessionInformation WTSQuerySessionInformationW
#define WTSEnumerateSessionsEx WTSEnumerateSessionsExW

extern "C"
{
    // WTSUserName only, *pBytesReturned with the zero; a session without a user has an empty name. ERROR_FILE_NOT_FOUND
    // for a session that isn't. The caller frees the text with WTSFreeMemory.
    BOOL WTSQuerySessionInformationW(HANDLE hServer, DWORD SessionId, WTS_INFO_CLASS WTSInfoClass, LPWSTR* ppBuffer,
                                     DWORD* pBytesReturned);
    // Level 1 only. The caller frees the list with WTSFreeMemoryExW. Users' names and states are set, other texts null.
    BOOL WTSEnumerateSessionsExW(HANDLE hServer, DWORD* pLevel, DWORD Filter, PWTS_SESSION_INFO_1W* ppSessionInfo,
                                 DWORD* pCount);
    // Only for the superuser and the session's user: ERROR_PRIVILEGE_NOT_HELD for others. ERROR_NO_TOKEN for a session
    // without a user.
    BOOL WTSQueryUserToken(ULONG SessionId, PHANDLE phToken);
    void WTSFreeMemory(PVOID pMemory);
    BOOL WTSFreeMemoryExW(WTS_TYPE_CLASS WTSTypeClass, PVOID pMemory, ULONG NumberOfEntries);
}
