// Users: of a token, of the console, of the calling thread; sessions that nobody looks at.
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_retry.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"

#define SECURITY_WIN32
#include <sddl.h>
#include <security.h>
#include <wtsapi32.h>

#include <memory>

namespace
{
constexpr DWORD NAME_ROOM = 1024;          // characters
constexpr DWORD RECORD_ROOM = 1024;        // bytes
constexpr INT32 USER_TOKEN_TRY_TIMES = 29; // after the first attempt

struct SessionMemory
{
    void operator()(void* pMemory) const { WTSFreeMemory(pMemory); }
};

struct SessionList
{
    ~SessionList() { WTSFreeMemoryExW(WTSTypeSessionInfoLevel1, psi, dwCount); }
    PWTS_SESSION_INFO_1W psi = nullptr;
    DWORD dwCount = 0;
};

// Ends what ImpersonateLoggedOnUser began.
struct ImpersonationScope
{
    ~ImpersonationScope() { RevertToSelf(); }
};

// 0 and the user's token, or the last attempt's code.
DWORD QueryUserToken(DWORD dwSessionID, CAudioHandle& oToken)
{
    DWORD dwResult = 0;
    INT32 iTryCount = 0;
    const auto fQuery = [&]
    {
        HANDLE hToken = nullptr;
        ++iTryCount;
        dwResult = WTSQueryUserToken(dwSessionID, &hToken) ? 0 : AudioLastError();
        oToken.reset(hToken);
        return dwResult == 0;
    };
    if (!AudioRetry(USER_TOKEN_TRY_TIMES, fQuery))
        AUDIOLOG_WARN("Not find UserToken by SessionID:" + CAudioSTR::ToString(dwSessionID) +
                      ",Trytimes=" + CAudioSTR::ToString(iTryCount) + ",ErrorCode =" + CAudioSTR::ToString(dwResult));
    return dwResult;
}

// Whether the SID was found; pSid is memory of RECORD_ROOM bytes.
bool LookUpSid(const std::wstring& strLoginName, PSID pSid)
{
    WCHAR szDomainName[NAME_ROOM] = {};
    DWORD dwSidLen = RECORD_ROOM;
    DWORD dwDmLen = NAME_ROOM;
    SID_NAME_USE sn{};
    return AUDIO_CHECK_WIN(
               LookupAccountName(nullptr, strLoginName.c_str(), pSid, &dwSidLen, szDomainName, &dwDmLen, &sn)) == 0;
}
} // namespace

DWORD CAudioSYS::GetTokenUserName(HANDLE hToken, std::wstring& strTokenUserName)
{
    if (AUDIO_MISSING(hToken, AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    const CAudioLocalMemory oMemory(LocalAlloc(LPTR, RECORD_ROOM));
    const auto pTokenUser = static_cast<PTOKEN_USER>(oMemory.get());
    if (AUDIO_MISSING(pTokenUser, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    DWORD dwNeedLen = RECORD_ROOM;
    if (const DWORD dwResult =
            AUDIO_CHECK_WIN(GetTokenInformation(hToken, TokenUser, pTokenUser, dwNeedLen, &dwNeedLen)))
        return dwResult;
    if (AUDIO_MISSING(pTokenUser->User.Sid, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    WCHAR szTokenName[NAME_ROOM] = {};
    WCHAR szDomainName[NAME_ROOM] = {};
    DWORD nNameLen = NAME_ROOM;
    DWORD dwDmLen = NAME_ROOM;
    SID_NAME_USE sn{};
    if (const DWORD dwResult = AUDIO_CHECK_WIN(
            LookupAccountSid(nullptr, pTokenUser->User.Sid, szTokenName, &nNameLen, szDomainName, &dwDmLen, &sn)))
        return dwResult;
    strTokenUserName = szTokenName;
    return 0;
}

DWORD CAudioSYS::QueryConsoleUserName(std::wstring& strUserName)
{
    const DWORD dwSessionID = WTSGetActiveConsoleSessionId();
    LPWSTR szLogName = nullptr;
    DWORD dwSize = 0;
    DWORD dwResult = AUDIO_CHECK_WIN(
        WTSQuerySessionInformation(WTS_CURRENT_SERVER_HANDLE, dwSessionID, WTSUserName, &szLogName, &dwSize));
    const std::unique_ptr<void, SessionMemory> oLogName(szLogName);
    if (dwResult == 0 && (szLogName == nullptr || szLogName[0] == 0))
        dwResult = AUDIO_BAD_DATA;
    if (dwResult == 0)
        strUserName = szLogName;
    else
        AUDIOLOG_ERROR(dwResult, "Query Session Information for Console UserName failed!");
    return dwResult;
}

DWORD CAudioSYS::QueryLoginName(std::wstring& strLoginName)
{
    WCHAR strUserName[NAME_ROOM] = {};
    DWORD iUserNameLen = NAME_ROOM;
    if (!GetUserNameW(strUserName, &iUserNameLen))
    {
        const DWORD dwResult = AudioLastError();
        AUDIOLOG_ERROR(dwResult, "Query Login UserName failed!");
        return dwResult;
    }
    strLoginName = strUserName;
    return 0;
}

DWORD CAudioSYS::QueryImpersonateLoginName(std::wstring& strLoginName)
{
    const DWORD dwSessionID = WTSGetActiveConsoleSessionId();
    CAudioHandle oToken;
    if (const DWORD dwResult = QueryUserToken(dwSessionID, oToken))
        return dwResult;
    const HANDLE hToken = oToken.get();
    if (const DWORD dwResult = AUDIO_CHECK_WIN(ImpersonateLoggedOnUser(hToken)))
        return dwResult; // this process's own name would be the answer
    const ImpersonationScope oScope;
    WCHAR strUserName[NAME_ROOM] = {};
    ULONG iUserNameLen = NAME_ROOM;
    if (const DWORD dwResult = AUDIO_CHECK_WIN(GetUserNameEx(NameSamCompatible, strUserName, &iUserNameLen)))
        return dwResult;
    strLoginName = strUserName;
    AUDIOLOG_DEBUG("Find LoginName:" + CAudioSTR::ToString(strLoginName, CP_ACP) +
                   " by SessionID:" + CAudioSTR::ToString(dwSessionID));
    return 0;
}

std::wstring CAudioSYS::GetCurrentUserSidstr(INT32 iTryTimes)
{
    std::wstring strLoginName;
    if (QueryImpersonateLoginName(strLoginName) != 0)
        return {};
    const CAudioLocalMemory oMemory(LocalAlloc(LPTR, RECORD_ROOM));
    const PSID pSid = oMemory.get();
    if (AUDIO_MISSING(pSid, AUDIO_NO_OBJECT))
        return {};
    if (!AudioRetry(iTryTimes, [&] { return LookUpSid(strLoginName, pSid); }))
        return {};
    LPWSTR lpSidInStr = nullptr;
    if (AUDIO_CHECK_WIN(ConvertSidToStringSid(pSid, &lpSidInStr)) != 0)
        return {};
    const CAudioLocalMemory oText(lpSidInStr);
    return lpSidInStr;
}

void CAudioSYS::QueryInactiveUser(std::vector<std::wstring>& oVctUserName)
{
    SessionList oList;
    PWTS_SESSION_INFO_1W& psi = oList.psi;
    DWORD& dwCount = oList.dwCount;
    DWORD dwLevel = 1;
    if (AUDIO_CHECK_WIN(WTSEnumerateSessionsEx(WTS_CURRENT_SERVER_HANDLE, &dwLevel, 0, &psi, &dwCount)) != 0)
        return;
    std::wstring strNames;
    for (DWORD i = 0; i < dwCount; ++i)
    {
        const WTS_SESSION_INFO_1W& stSession = psi[i];
        if (stSession.State == WTSActive || stSession.State == WTSConnected || stSession.pUserName == nullptr ||
            stSession.pUserName[0] == 0)
            continue;
        oVctUserName.push_back(CAudioSTR::ToUpper(std::wstring(stSession.pUserName)));
        strNames += (strNames.empty() ? L"" : L",") + oVctUserName.back();
    }
    AUDIOLOG_DEBUG("Find Inactive User " + CAudioSTR::ToString(strNames, CP_ACP));
}
