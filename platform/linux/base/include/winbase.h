// Events, threads, modules, files, time: the system calls, with their published results and error codes.
#pragma once

#include <fileapi.h>
#include <ioapiset.h>
#include <minwinbase.h>
#include <winnt.h>

#define INVALID_HANDLE_VALUE reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1))
#define INVALID_FILE_ATTRIBUTES static_cast<DWORD>(-1)
#define INFINITE 0xFFFFFFFF
#define WAIT_OBJECT_0 0x00000000
#define WAIT_TIMEOUT 258
#define WAIT_FAILED 0xFFFFFFFF

#define FILE_FLAG_OVERLAPPED 0x40000000
#define FILE_FLAG_BACKUP_SEMANTICS 0x02000000

#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004

#define LPTR 0x0040

#define THREAD_PRIORITY_NORMAL 0
#define THREAD_PRIORITY_HIGHEST 2
#define THREAD_PRIORITY_TIME_CRITICAL 15
#define THREAD_PRIORITY_ERROR_RETURN 0x7fffffff

typedef struct _SYSTEM_POWER_STATUS
{
    BYTE ACLineStatus;
    BYTE BatteryFlag;
    BYTE BatteryLifePercent;
    BYTE SystemStatusFlag;
    DWORD BatteryLifeTime;
    DWORD BatteryFullLifeTime;
} SYSTEM_POWER_STATUS, *LPSYSTEM_POWER_STATUS;

#define TIME_ZONE_ID_STANDARD 1
#define TIME_ZONE_ID_DAYLIGHT 2
#define TIME_ZONE_ID_INVALID 0xFFFFFFFF

typedef struct _TIME_ZONE_INFORMATION
{
    LONG Bias; // minutes: UTC is local standard time plus this
    WCHAR StandardName[32];
    SYSTEMTIME StandardDate;
    LONG StandardBias;
    WCHAR DaylightName[32];
    SYSTEMTIME DaylightDate;
    LONG DaylightBias;
} TIME_ZONE_INFORMATION, *LPTIME_ZONE_INFORMATION;

#define LookupAccountSid LookupAccountSidW
#define LookupAccountName LookupAccountNameW

extern "C"
{
    DWORD GetLastError();
    void SetLastError(DWORD dwErrCode);

    // Events. A named event is shared within the process; its name's case counts.
    HANDLE CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState, LPCWSTR lpName);
    HANDLE OpenEventW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName);
    BOOL SetEvent(HANDLE hEvent);
    BOOL ResetEvent(HANDLE hEvent);
    DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
    BOOL CloseHandle(HANDLE hObject);

    void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
    void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
    void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
    void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection);

    // The default pool. Every submitted callback gets a thread at once; pcbe must be null.
    PTP_WORK CreateThreadpoolWork(PTP_WORK_CALLBACK pfnwk, PVOID pv, PTP_CALLBACK_ENVIRON pcbe);
    void SubmitThreadpoolWork(PTP_WORK pwk);
    void WaitForThreadpoolWorkCallbacks(PTP_WORK pwk, BOOL fCancelPendingCallbacks);
    void CloseThreadpoolWork(PTP_WORK pwk);
    // Frees the module when the callback has left it.
    void FreeLibraryWhenCallbackReturns(PTP_CALLBACK_INSTANCE pci, HMODULE mod);

    void Sleep(DWORD dwMilliseconds);
    HANDLE GetCurrentThread();
    DWORD GetCurrentThreadId();
    DWORD GetCurrentProcessId();
    // Time-critical asks for real-time scheduling, the others for a nice value. Where the system grants neither, the
    // thread keeps what it has and the call succeeds.
    BOOL SetThreadPriority(HANDLE hThread, int nPriority);
    // What was last asked for.
    int GetThreadPriority(HANDLE hThread);

    // All times are those of the machine's clock.
    void GetLocalTime(LPSYSTEMTIME lpSystemTime);
    void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime);
    BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime);
    BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime);
    BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, LPFILETIME lpLocalFileTime);

    // Bias as of now; daylight time and the days of change are not told.
    DWORD GetTimeZoneInformation(LPTIME_ZONE_INFORMATION lpTimeZoneInformation);

    BOOL GetSystemPowerStatus(LPSYSTEM_POWER_STATUS lpSystemPowerStatus);
    DWORD GetEnvironmentVariableA(LPCSTR lpName, LPSTR lpBuffer, DWORD nSize);

    // Zeroed memory. LocalFree gives null.
    HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes);
    HLOCAL LocalFree(HLOCAL hMem);

    // Files.
    HANDLE FindFirstFileA(LPCSTR lpFileName, LPWIN32_FIND_DATAA lpFindFileData);
    BOOL FindNextFileA(HANDLE hFindFile, LPWIN32_FIND_DATAA lpFindFileData);
    BOOL FindClose(HANDLE hFindFile);
    DWORD GetFileAttributesA(LPCSTR lpFileName);
    BOOL CreateDirectoryA(LPCSTR lpPathName, LPSECURITY_ATTRIBUTES lpSecurityAttributes);
    BOOL DeleteFileA(LPCSTR lpFileName);
    BOOL CopyFileA(LPCSTR lpExistingFileName, LPCSTR lpNewFileName, BOOL bFailIfExists);

    // Waits for a change of names in a folder that CreateFile opened and in those below, of files and folders whatever
    // the filter, and gives one a call; none, with no bytes, when changes were lost. A folder that is removed or moved
    // away is told as the removal of its own name. lpOverlapped and lpCompletionRoutine must be null: CancelIoEx ends
    // the wait, with ERROR_OPERATION_ABORTED.
    BOOL ReadDirectoryChangesW(HANDLE hDirectory, LPVOID lpBuffer, DWORD nBufferLength, BOOL bWatchSubtree,
                               DWORD dwNotifyFilter, LPDWORD lpBytesReturned, LPOVERLAPPED lpOverlapped,
                               LPOVERLAPPED_COMPLETION_ROUTINE lpCompletionRoutine);

    // The event log: eventlog.txt in the machine's folder, one record a line. A server's name, a user's id and raw data
    // are refused.
    HANDLE RegisterEventSourceA(LPCSTR lpUNCServerName, LPCSTR lpSourceName);
    BOOL ReportEventA(HANDLE hEventLog, WORD wType, WORD wCategory, DWORD dwEventID, PVOID lpUserSid, WORD wNumStrings,
                      DWORD dwDataSize, LPCSTR* lpStrings, LPVOID lpRawData);
    BOOL DeregisterEventSource(HANDLE hEventLog);
    // Every log's name opens that one file, as it stands at the call. Read newest record first (sequential and
    // backwards) only; as many whole records a call as the buffer takes. ERROR_INSUFFICIENT_BUFFER, and the next
    // record's size, when it takes none; ERROR_HANDLE_EOF behind the oldest.
    HANDLE OpenEventLogA(LPCSTR lpUNCServerName, LPCSTR lpSourceName);
    BOOL ReadEventLogW(HANDLE hEventLog, DWORD dwReadFlags, DWORD dwRecordOffset, LPVOID lpBuffer,
                       DWORD nNumberOfBytesToRead, DWORD* pnBytesRead, DWORD* pnMinNumberOfBytesNeeded);
    BOOL CloseEventLog(HANDLE hEventLog);

    // Processes and the users behind them: this system's own. A process of another user is refused to all but the
    // superuser. The handle keeps naming this process when its id is given to another one.
    HANDLE OpenProcess(DWORD dwDesiredAccess, BOOL bInheritHandle, DWORD dwProcessId);
    BOOL OpenProcessToken(HANDLE ProcessHandle, DWORD DesiredAccess, PHANDLE TokenHandle);
    // TokenUser only.
    BOOL GetTokenInformation(HANDLE TokenHandle, TOKEN_INFORMATION_CLASS TokenInformationClass, LPVOID TokenInformation,
                             DWORD TokenInformationLength, PDWORD ReturnLength);
    // Name and host's name of a user. Sizes count characters: on the way in the room, on the way out the length, or for
    // ERROR_INSUFFICIENT_BUFFER the room needed.
    BOOL LookupAccountSidW(LPCWSTR lpSystemName, PSID Sid, LPWSTR Name, LPDWORD cchName, LPWSTR ReferencedDomainName,
                           LPDWORD cchReferencedDomainName, PSID_NAME_USE peUse);
    // The id of a user, named with or without the host and a backslash before.
    BOOL LookupAccountNameW(LPCWSTR lpSystemName, LPCWSTR lpAccountName, PSID Sid, LPDWORD cbSid,
                            LPWSTR ReferencedDomainName, LPDWORD cchReferencedDomainName, PSID_NAME_USE peUse);
    // The calling thread is asked for under another user's name; what it may do stays the process's.
    BOOL ImpersonateLoggedOnUser(HANDLE hToken);
    BOOL RevertToSelf();
    // The calling thread's user. *pcbBuffer counts characters with the zero.
    BOOL GetUserNameW(LPWSTR lpBuffer, LPDWORD pcbBuffer);
    // The session at the first seat's screen; 0xFFFFFFFF when there is none.
    DWORD WTSGetActiveConsoleSessionId();

    // Modules: shared objects whose exported DllMain, if any, is told of attach and detach.
    HMODULE LoadLibraryA(LPCSTR lpLibFileName);
    BOOL FreeLibrary(HMODULE hLibModule);
    FARPROC GetProcAddress(HMODULE hModule, LPCSTR lpProcName);
    DWORD GetModuleFileNameA(HMODULE hModule, LPSTR lpFilename, DWORD nSize);
    // By an address in the module (GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) only; counts one user more.
    // ERROR_MOD_NOT_FOUND for one that wasn't loaded by LoadLibraryA, as the program itself.
    BOOL GetModuleHandleExA(DWORD dwFlags, LPCSTR lpModuleName, HMODULE* phModule);
}

inline LONG InterlockedIncrement(LONG volatile* lpAddend)
{
    return __atomic_add_fetch(lpAddend, 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedDecrement(LONG volatile* lpAddend)
{
    return __atomic_sub_fetch(lpAddend, 1, __ATOMIC_SEQ_CST);
}
