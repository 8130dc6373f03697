// Users of this system: names and security ids of their numbers.
#include "processes/account.h"

#include "base/error.h"
#include "base/failure.h"
#include "text/wide.h"

#include <sddl.h>

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>

namespace
{
constexpr BYTE USER_AUTHORITY = 22;
constexpr DWORD USER_KIND = 1;
constexpr size_t SID_HEAD = offsetof(SID, SubAuthority);

// fFind is getpwuid_r or getpwnam_r but for its first argument.
template <class Find> bool FindUser(Find fFind, std::string& strName, uid_t& iUser)
{
    std::vector<char> vecText(1024);
    passwd stUser{};
    passwd* pFound = nullptr;
    while (fFind(&stUser, vecText.data(), vecText.size(), &pFound) == ERANGE)
        vecText.resize(vecText.size() * 2);
    if (pFound == nullptr)
        return false;
    strName = stUser.pw_name;
    iUser = stUser.pw_uid;
    return true;
}

DWORD SidWord(const SID* pSid, size_t iIndex)
{
    DWORD dwWord = 0;
    std::memcpy(&dwWord, reinterpret_cast<const BYTE*>(pSid) + SID_HEAD + iIndex * sizeof(DWORD), sizeof(dwWord));
    return dwWord;
}

bool IsUser(const SID* pSid)
{
    return pSid->SubAuthorityCount == 2 && pSid->IdentifierAuthority.Value[5] == USER_AUTHORITY &&
           SidWord(pSid, 0) == USER_KIND;
}

// Both texts are asked for their room even when the first has none.
BOOL GiveDomain(LPWSTR pDomain, LPDWORD pRoom, bool bOtherFits, PSID_NAME_USE peUse)
{
    if (!GiveText(HostName(), pDomain, pRoom) || !bOtherFits)
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    *peUse = SidTypeUser;
    return TRUE;
}
} // namespace

bool UserName(uid_t iUser, std::wstring& strName)
{
    std::string strFound;
    const auto fFind = [iUser](auto... oRest) { return getpwuid_r(iUser, oRest...); };
    if (!FindUser(fFind, strFound, iUser))
        return false;
    strName = WideOf(strFound);
    return true;
}

bool UserNumber(const std::string& strName, uid_t& iUser)
{
    std::string strFound;
    return FindUser([&](auto... oRest) { return getpwnam_r(strName.c_str(), oRest...); }, strFound, iUser);
}

std::wstring HostName()
{
    char aName[HOST_NAME_MAX + 1] = {};
    gethostname(aName, sizeof(aName) - 1);
    return WideOf(aName);
}

std::vector<BYTE> SidOf(uid_t iUser)
{
    const BYTE aHead[SID_HEAD] = {SID_REVISION, 2, 0, 0, 0, 0, 0, USER_AUTHORITY};
    const DWORD aWords[] = {USER_KIND, iUser};
    std::vector<BYTE> vecSid(sizeof(aHead) + sizeof(aWords));
    std::memcpy(vecSid.data(), aHead, sizeof(aHead));
    std::memcpy(vecSid.data() + sizeof(aHead), aWords, sizeof(aWords));
    return vecSid;
}

BOOL LookupAccountSidW(LPCWSTR, PSID Sid, LPWSTR Name, LPDWORD cchName, LPWSTR ReferencedDomainName,
                       LPDWORD cchReferencedDomainName, PSID_NAME_USE peUse)
{
    if (IsToldToFail("LookupAccountSidW"))
        return FALSE;
    const auto* const pSid = static_cast<const SID*>(Sid);
    if (pSid == nullptr || pSid->Revision != SID_REVISION)
        return FailWith(ERROR_INVALID_SID);
    std::wstring strName;
    if (!IsUser(pSid) || !UserName(SidWord(pSid, 1), strName))
        return FailWith(ERROR_NONE_MAPPED);
    const bool bFits = GiveText(strName, Name, cchName);
    return GiveDomain(ReferencedDomainName, cchReferencedDomainName, bFits, peUse);
}

BOOL LookupAccountNameW(LPCWSTR, LPCWSTR lpAccountName, PSID Sid, LPDWORD cbSid, LPWSTR ReferencedDomainName,
                        LPDWORD cchReferencedDomainName, PSID_NAME_USE peUse)
{
    if (IsToldToFail("LookupAccountNameW"))
        return FALSE;
    const std::string strName = NarrowOf(lpAccountName);
    uid_t iUser = 0;
    if (!UserNumber(strName.substr(strName.find('\\') + 1), iUser))
        return FailWith(ERROR_NONE_MAPPED);
    const std::vector<BYTE> vecSid = SidOf(iUser);
    const bool bFits = Sid != nullptr && *cbSid >= vecSid.size();
    if (bFits)
        std::memcpy(Sid, vecSid.data(), vecSid.size());
    *cbSid = static_cast<DWORD>(vecSid.size());
    return GiveDomain(ReferencedDomainName, cchReferencedDomainName, bFits, peUse);
}

BOOL ConvertSidToStringSidW(PSID Sid, LPWSTR* StringSid)
{
    if (IsToldToFail("ConvertSidToStringSidW"))
        return FALSE;
    const auto* const pSid = static_cast<const SID*>(Sid);
    if (pSid == nullptr || StringSid == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (pSid->Revision != SID_REVISION)
        return FailWith(ERROR_INVALID_SID);
    unsigned long long iAuthority = 0;
    for (const BYTE cByte : pSid->IdentifierAuthority.Value)
        iAuthority = iAuthority << 8 | cByte;
    std::wstring strText = L"S-1-" + std::to_wstring(iAuthority);
    for (size_t i = 0; i < pSid->SubAuthorityCount; ++i)
        strText += L"-" + std::to_wstring(SidWord(pSid, i));
    auto dwRoom = static_cast<DWORD>(strText.size() + 1);
    *StringSid = static_cast<LPWSTR>(LocalAlloc(LPTR, dwRoom * sizeof(WCHAR)));
    return *StringSid != nullptr && GiveText(strText, *StringSid, &dwRoom) ? TRUE : FALSE;
}
