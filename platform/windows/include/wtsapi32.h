// The platform's sessions header, with what the cross compiler's copy lacks.
#pragma once

#include_next <wtsapi32.h>

#ifndef WTSEnumerateSessionsEx
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

#define WTSEnumerateSessionsEx WTSEnumerateSessionsExW
extern "C"
{
    BOOL WINAPI WTSEnumerateSessionsExW(HANDLE hServer, DWORD* pLevel, DWORD Filter,
                                        PWTS_SESSION_INFO_1W* ppSessionInfo, DWORD* pCount);
    BOOL WINAPI WTSFreeMemoryExW(WTS_TYPE_CLASS WTSTypeClass, PVOID pMemory, ULONG NumberOfEntries);
}
#endif
