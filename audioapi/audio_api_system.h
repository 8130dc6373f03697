// Questions to the system: files, this module's place, processes and their users, sessions, events, the machine itself.
#pragma once

#include "audioapi/audio_api_handle.h"

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

enum AudioCPUVendor : INT32
{
    AUDIO_CPU_UNKNOWN = 0,
    AUDIO_CPU_INTEL = 1,
    AUDIO_CPU_AMD = 2,
    AUDIO_CPU_SNAPDRAGON = 3,
};

// Operations without state, from any thread. Codes are the platform's error codes, 0 for success; failures are logged.
// A folder is given with its closing backslash. A pattern's first "*" parts it into two texts that a file's name must
// contain, wherever, in their letter case. Where a number of retries is taken, the attempt is made once and then up to
// that many times more, 100 ms apart: such a call is nothing for the processing thread.
class CAudioSYS
{
public:
    // --- Files and this module's place ---

    // The full path of the newest fitting file, by the later of creation and last write; empty if there is none.
    static std::string GetFuzzyMatchFile(const std::string& strDir, const std::string& strPattern);
    // Appends every fitting file to oFileList, in the folder's order. One of more than 16 megabytes is told and fits
    // neither search.
    static void GetMatchFileList(const std::string& strDir, const std::string& strPattern,
                                 std::vector<WIN32_FIND_DATAA>& oFileList);

    // The module's file name without folder and without what follows its first dot; empty on failure.
    static std::string GetModuleBaseName(HMODULE hModule);
    // The folder of the module's logs and dumps, without a closing backslash.
    static std::string GetDiagnosticsPath(const std::string& strModuleName);

    // --- Processes, by the executable's name in any letter case ---

    // The first such process. AUDIO_NO_HANDLE, and the id 0, when there is none.
    static DWORD GetProcessIDByName(const std::wstring& strProcessName, DWORD& dwProcessID);
    // Appends every such process. AUDIO_NO_HANDLE when the list is empty afterwards.
    static DWORD GetProcessIDByName(const std::wstring& strProcessName, std::vector<DWORD>& oVctProcessID);
    // The executable's name in the system's code page; empty when there is no such process.
    static std::string GetProcessNameByID(DWORD dwProcessID);
    // Appends those of the processes that the console user runs, once it is known who that is. Always 0.
    static DWORD GetProcessIDByUserName(const std::wstring& strProcessName, std::vector<DWORD>& oVctProcessID,
                                        INT32 iTryTimes = 100);
    // The token of one of them, which the caller closes. AUDIO_NO_HANDLE when the retries run out.
    static DWORD GetTokenHandleByName(const std::wstring& strProcessName, HANDLE& hUserToken, INT32 iTryTimes);
    // "Invalid" by name alone: whether such a process exists.
    static bool CheckProcessInvalidByName(const std::wstring& strProcessName);
    static bool CheckProcessInvalidByUserName(const std::wstring& strProcessName);
    static bool CheckProcessInvalidByID(DWORD dwProcessID);
    // Whether the first such process has reached the limit, in megabytes below 4096, in memory or in page file.
    static bool CheckProcessMemory(const std::wstring& strProcessName, UINT32 iMemoryLimit);

    // --- Users and sessions; the out name stays as it was on failure ---

    // The name without its domain.
    static DWORD GetTokenUserName(HANDLE hToken, std::wstring& strTokenUserName);
    // AUDIO_BAD_DATA when the session at the console has no user.
    static DWORD QueryConsoleUserName(std::wstring& strUserName);
    // The calling thread's user.
    static DWORD QueryLoginName(std::wstring& strLoginName);
    // The console user as domain\user, asked under that user's name: for services. Waits up to 3 s for the user.
    static DWORD QueryImpersonateLoginName(std::wstring& strLoginName);
    // The SID of that user as text; empty on failure.
    static std::wstring GetCurrentUserSidstr(INT32 iTryTimes);
    // Appends the upper-case names of the users of sessions that are neither active nor connected.
    static void QueryInactiveUser(std::vector<std::wstring>& oVctUserName);

    // --- The event log ---

    // The local time of the first record of that event (its number's low 16 bits) in a buffer of whole records; empty
    // when there is none.
    static std::string TraversalSystemEvent(const BYTE* pBuffer, DWORD dwBytes, DWORD dwEventID);
    // Whether the newest record of that event was made just now, to the millisecond of the text.
    static bool FindLastestMatchEvent(const std::string& strLogName, DWORD dwEventID);

    // --- The machine ---

    static AudioCPUVendor GetCPUVendors();
    // Logs the system's name and build. Always 0.
    static INT32 IsWindows11System();
    // Empty for a variable that isn't set.
    static std::string GetEnvVariable(const std::string& strName);
    // Whether PATH lists the folder, in any letter case, with or without backslashes at its ends.
    static bool IsExistEnvInPath(const std::string& strPath);
    // Appends the folder to the system-wide variable, unless PATH lists it or the variable is empty here.
    static void SetEnvVariable(const std::string& strEvnName, const std::string& strPath);
    // Copies from the folder what the system folder lacks of the runtime libraries.
    static void CopySystemDependenceDLL(const std::string& strSrcDir);
    // Logs the file's three times, in local time.
    static void PrintFileInfo(const std::string& strPath);
    // Upper-case, without braces; empty on failure.
    static std::string CreateGuidString();

private:
    // The process's token and its user's name; null, and logged, when it can't be had.
    static CAudioHandle OpenUserToken(DWORD dwProcessID, std::wstring& strTokenUserName);
    // Calls fTake with the id and token of each process that the console user runs, until it gives true.
    static bool WalkUserTokens(const std::wstring& strProcessName, const std::vector<DWORD>& oVctProcessID,
                               const std::wstring& strConsoleUserName,
                               const std::function<bool(DWORD, CAudioHandle)>& fTake);
};
