// Sessions of this system: the session manager's files, or those in the machine's own folder "sessions".
#include "base/error.h"
#include "base/failure.h"
#include "platform/control/machine_native.h"
#include "processes/account.h"
#include "processes/token.h"
#include "text/wide.h"

#include <wtsapi32.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <vector>

namespace
{
constexpr DWORD NO_SESSION = 0xFFFFFFFF;
constexpr DWORD UNAUDITED_SESSION = 0x40000000; // added to the numbers of sessions called "c1"

struct CSession
{
    DWORD dwID = 0;
    std::map<std::string, std::string> oFields;

    std::string Field(const char* pName) const
    {
        const auto itField = oFields.find(pName);
        return itField != oFields.end() ? itField->second : "";
    }
    // Empty for the session that asks for a login, and for those of the system's own.
    std::string User() const { return Field("CLASS") == "user" ? Field("USER") : ""; }
    WTS_CONNECTSTATE_CLASS State() const
    {
        const std::string strState = Field("STATE");
        if (strState == "active")
            return User().empty() ? WTSConnected : WTSActive;
        return strState == "online" ? WTSDisconnected : strState == "opening" ? WTSInit : WTSDown;
    }
};

// A session's file is lines of NAME=value.
std::map<std::string, std::string> ReadFields(const std::filesystem::path& oFile)
{
    std::map<std::string, std::string> oFields;
    std::ifstream oStream(oFile);
    for (std::string strLine; std::getline(oStream, strLine);)
    {
        const size_t iEnd = strLine.find('=');
        if (iEnd != std::string::npos)
            oFields[strLine.substr(0, iEnd)] = strLine.substr(iEnd + 1);
    }
    return oFields;
}

// By number. No folder, no sessions.
std::map<DWORD, CSession> ReadSessions()
{
    std::error_code oError;
    std::filesystem::path oFolder = machine::Folder() + "/sessions";
    if (!std::filesystem::is_directory(oFolder, oError))
        oFolder = "/run/systemd/sessions";
    std::map<DWORD, CSession> mapSession;
    for (const auto& oEntry : std::filesystem::directory_iterator(oFolder, oError))
    {
        const std::string strName = oEntry.path().filename().string();
        const bool bUnaudited = strName[0] == 'c';
        char* pEnd = nullptr;
        const unsigned long ulNumber = std::strtoul(strName.c_str() + (bUnaudited ? 1 : 0), &pEnd, 10);
        if (ulNumber == 0 || ulNumber >= UNAUDITED_SESSION || *pEnd != 0) // "2.ref" keeps the session, and isn't one
            continue;
        const DWORD dwID = static_cast<DWORD>(ulNumber) + (bUnaudited ? UNAUDITED_SESSION : 0);
        mapSession[dwID] = {dwID, ReadFields(oEntry.path())};
    }
    return mapSession;
}

bool FindSession(DWORD dwID, CSession& oSession)
{
    const std::map<DWORD, CSession> mapSession = ReadSessions();
    const auto itSession = mapSession.find(dwID);
    if (itSession == mapSession.end())
        return FailWith(ERROR_FILE_NOT_FOUND) != FALSE;
    oSession = itSession->second;
    return true;
}

// A heap block with the text, that WTSFreeMemory frees.
LPWSTR TextBlock(const std::wstring& strText)
{
    auto* const pBlock = static_cast<LPWSTR>(std::malloc((strText.size() + 1) * sizeof(WCHAR)));
    if (pBlock != nullptr)
        std::wmemcpy(pBlock, strText.c_str(), strText.size() + 1);
    return pBlock;
}
} // namespace

DWORD WTSGetActiveConsoleSessionId()
{
    for (const auto& [dwID, oSession] : ReadSessions())
        if (oSession.Field("SEAT") == "seat0" && oSession.Field("ACTIVE") == "1")
            return dwID;
    return NO_SESSION;
}

BOOL WTSQuerySessionInformationW(HANDLE hServer, DWORD SessionId, WTS_INFO_CLASS WTSInfoClass, LPWSTR* ppBuffer,
                                 DWORD* pBytesReturned)
{
    if (IsToldToFail("WTSQuerySessionInformationW"))
        return FALSE;
    if (hServer != WTS_CURRENT_SERVER_HANDLE || WTSInfoClass != WTSUserName || ppBuffer == nullptr ||
        pBytesReturned == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    CSession oSession;
    if (!FindSession(SessionId, oSession))
        return FALSE;
    const std::wstring strUser = WideOf(oSession.User());
    *ppBuffer = TextBlock(strUser);
    *pBytesReturned = static_cast<DWORD>((strUser.size() + 1) * sizeof(WCHAR));
    return *ppBuffer != nullptr ? TRUE : FailWith(ERROR_NOT_ENOUGH_MEMORY);
}

BOOL WTSEnumerateSessionsExW(HANDLE hServer, DWORD* pLevel, DWORD Filter, PWTS_SESSION_INFO_1W* ppSessionInfo,
                             DWORD* pCount)
{
    if (IsToldToFail("WTSEnumerateSessionsExW"))
        return FALSE;
    if (hServer != WTS_CURRENT_SERVER_HANDLE || pLevel == nullptr || Filter != 0 || ppSessionInfo == nullptr ||
        pCount == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (*pLevel != 1)
        return FailWith(ERROR_INVALID_LEVEL);
    const std::map<DWORD, CSession> mapSession = ReadSessions();
    auto* const pList =
        static_cast<PWTS_SESSION_INFO_1W>(std::calloc(mapSession.size() + 1, sizeof(WTS_SESSION_INFO_1W)));
    if (pList == nullptr)
        return FailWith(ERROR_NOT_ENOUGH_MEMORY);
    DWORD dwCount = 0;
    for (const auto& [dwID, oSession] : mapSession)
    {
        WTS_SESSION_INFO_1W& stSession = pList[dwCount++];
        stSession.SessionId = dwID;
        stSession.State = oSession.State();
        const std::string strUser = oSession.User();
        stSession.pUserName = strUser.empty() ? nullptr : TextBlock(WideOf(strUser));
    }
    *ppSessionInfo = pList;
    *pCount = dwCount;
    return TRUE;
}

BOOL WTSQueryUserToken(ULONG SessionId, PHANDLE phToken)
{
    if (IsToldToFail("WTSQueryUserToken"))
        return FALSE;
    CSession oSession;
    uid_t iUser = 0;
    if (phToken == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (!FindSession(SessionId, oSession))
        return FALSE;
    if (!UserNumber(oSession.User(), iUser))
        return FailWith(ERROR_NO_TOKEN);
    if (geteuid() != 0 && geteuid() != iUser)
        return FailWith(ERROR_PRIVILEGE_NOT_HELD);
    *phToken = OpenKernelHandle(std::make_shared<CUserToken>(iUser));
    return TRUE;
}

void WTSFreeMemory(PVOID pMemory)
{
    std::free(pMemory);
}

BOOL WTSFreeMemoryExW(WTS_TYPE_CLASS WTSTypeClass, PVOID pMemory, ULONG NumberOfEntries)
{
    if (WTSTypeClass != WTSTypeSessionInfoLevel1 || (pMemory == nullptr && NumberOfEntries > 0))
        return FailWith(ERROR_INVALID_PARAMETER);
    const auto* const pList = static_cast<PWTS_SESSION_INFO_1W>(pMemory);
    for (ULONG i = 0; i < NumberOfEntries; ++i)
        std::free(pList[i].pUserName);
    std::free(pMemory);
    return TRUE;
}
