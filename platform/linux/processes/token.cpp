// Tokens: users under whose name something is done; the calling thread's own.
#include "processes/token.h"

#include "base/error.h"
#include "base/failure.h"
#include "processes/account.h"
#include "processes/process.h"
#include "text/wide.h"

#include <security.h>

#include <unistd.h>

#include <cstring>

namespace
{
thread_local std::shared_ptr<CUserToken> t_pImpersonated;

// The calling thread's user as "name". False with the last error.
bool ThreadUserName(std::wstring& strName)
{
    const uid_t iUser = t_pImpersonated != nullptr ? t_pImpersonated->iUser : geteuid();
    return UserName(iUser, strName) || FailWith(ERROR_NONE_MAPPED);
}
} // namespace

BOOL OpenProcessToken(HANDLE ProcessHandle, DWORD, PHANDLE TokenHandle)
{
    if (IsToldToFail("OpenProcessToken"))
        return FALSE;
    const std::shared_ptr<CProcess> pProcess = KernelObjectAs<CProcess>(ProcessHandle);
    if (pProcess == nullptr)
        return FALSE;
    if (TokenHandle == nullptr)
        return FailWith(ERROR_NOACCESS);
    unsigned long long iUser = 0;
    if (!pProcess->oFolder.Field("Uid", iUser))
        return FailWith(ERROR_ACCESS_DENIED); // it has ended
    *TokenHandle = OpenKernelHandle(std::make_shared<CUserToken>(static_cast<uid_t>(iUser)));
    return TRUE;
}

BOOL GetTokenInformation(HANDLE TokenHandle, TOKEN_INFORMATION_CLASS TokenInformationClass, LPVOID TokenInformation,
                         DWORD TokenInformationLength, PDWORD ReturnLength)
{
    if (IsToldToFail("GetTokenInformation"))
        return FALSE;
    const std::shared_ptr<CUserToken> pToken = KernelObjectAs<CUserToken>(TokenHandle);
    if (pToken == nullptr)
        return FALSE;
    if (TokenInformationClass != TokenUser || ReturnLength == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    const std::vector<BYTE> vecSid = SidOf(pToken->iUser);
    *ReturnLength = static_cast<DWORD>(sizeof(TOKEN_USER) + vecSid.size());
    if (TokenInformation == nullptr || TokenInformationLength < *ReturnLength)
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    auto* const pUser = static_cast<TOKEN_USER*>(TokenInformation);
    pUser->User = {pUser + 1, 0};
    std::memcpy(pUser + 1, vecSid.data(), vecSid.size());
    return TRUE;
}

BOOL ImpersonateLoggedOnUser(HANDLE hToken)
{
    if (IsToldToFail("ImpersonateLoggedOnUser"))
        return FALSE;
    std::shared_ptr<CUserToken> pToken = KernelObjectAs<CUserToken>(hToken);
    if (pToken == nullptr)
        return FALSE;
    t_pImpersonated = std::move(pToken);
    return TRUE;
}

BOOL RevertToSelf()
{
    t_pImpersonated = nullptr;
    return TRUE;
}

BOOL GetUserNameW(LPWSTR lpBuffer, LPDWORD pcbBuffer)
{
    if (IsToldToFail("GetUserNameW"))
        return FALSE;
    std::wstring strName;
    if (!ThreadUserName(strName))
        return FALSE;
    if (!GiveText(strName, lpBuffer, pcbBuffer))
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    ++*pcbBuffer; // its zero
    return TRUE;
}

BOOLEAN GetUserNameExW(EXTENDED_NAME_FORMAT NameFormat, LPWSTR lpNameBuffer, PULONG nSize)
{
    if (IsToldToFail("GetUserNameExW"))
        return FALSE;
    std::wstring strName;
    BOOL bGiven = NameFormat == NameSamCompatible ? TRUE : FailWith(ERROR_NONE_MAPPED);
    bGiven = bGiven && ThreadUserName(strName);
    if (bGiven && !GiveText(HostName() + L"\\" + strName, lpNameBuffer, nSize))
        bGiven = FailWith(ERROR_MORE_DATA);
    return bGiven ? TRUE : FALSE;
}
