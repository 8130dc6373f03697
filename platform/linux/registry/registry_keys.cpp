// The registry of this process: its open keys, their rights and watches, over the machine's file.
#include "registry/registry_keys.h"

#include "base/failure.h"
#include "machine/folder.h"
#include "platform/control/machine_native.h"

#include <algorithm>

namespace
{
constexpr REGSAM c_samMaximumAllowed = 0x02000000;
constexpr REGSAM c_samRights = 0x3F; // the bits of the single rights

const struct
{
    HKEY hRoot;
    const char* pName;
} c_oRoots[] = {
    {HKEY_CLASSES_ROOT, "HKEY_CLASSES_ROOT"},     {HKEY_CURRENT_USER, "HKEY_CURRENT_USER"},
    {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE"},   {HKEY_USERS, "HKEY_USERS"},
    {HKEY_CURRENT_CONFIG, "HKEY_CURRENT_CONFIG"},
};

// Name of a root's handle, or null.
const char* RootName(HKEY hKey)
{
    for (const auto& oRoot : c_oRoots)
        if (oRoot.hRoot == hKey)
            return oRoot.pName;
    return nullptr;
}

struct FollowerEnd
{
    ~FollowerEnd() { CRegistry::Instance().StopFollowing(); }
};
} // namespace

CRegistry& CRegistry::Instance()
{
    CountCallThatMayWait();                      // every call of the registry comes by
    static CRegistry* pRegistry = new CRegistry; // threads may still come after the program's end began
    return *pRegistry;
}

CRegistry::CRegistry() : m_iGeneration(MachineGeneration() - 1), m_oFollower([this] { return FollowChange(); })
{
}

// Another machine has another file, and none of the keys that were open.
void CRegistry::UseMachine()
{
    const unsigned iGeneration = MachineGeneration();
    if (iGeneration == m_iGeneration)
        return;
    m_iGeneration = iGeneration;
    m_pStore = std::make_unique<CRegistryStore>(machine::Folder());
    for (auto it = m_mapOpen.begin(); it != m_mapOpen.end();)
    {
        it->second = OpenRegistryKey{};
        it->second.bDeleted = true;
        it = RootName(reinterpret_cast<HKEY>(it->first)) != nullptr ? m_mapOpen.erase(it) : std::next(it);
    }
}

void CRegistry::Refresh(bool bForce)
{
    UseMachine();
    std::vector<RegistryChange> vecChanges;
    m_pStore->Refresh(bForce, vecChanges);
    Tell(vecChanges);
}

// On the follower's thread.
int CRegistry::FollowChange()
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    Refresh(true);
    return m_pStore->IsInDoubt() ? CRegistryStore::c_iDoubtMs : -1;
}

void CRegistry::Tell(const std::vector<RegistryChange>& vecChanges)
{
    if (vecChanges.empty())
        return;
    for (auto& oOpen : m_mapOpen)
    {
        OpenRegistryKey& oKey = oOpen.second;
        bool bSeen = false;
        for (const RegistryChange& oChange : vecChanges)
        {
            oKey.bDeleted = oKey.bDeleted || (oChange.bDeleted && oChange.strPath == oKey.strFolded);
            bSeen = bSeen || (oKey.bWatched && oKey.Sees(oChange));
        }
        if (bSeen)
            oKey.Signal();
    }
}

LSTATUS CRegistry::Change(const std::function<LSTATUS(CRegistryTree&)>& fnChange, const std::string& strTouched)
{
    std::vector<RegistryChange> vecChanges;
    const LSTATUS lResult = m_pStore->Update(fnChange, vecChanges);
    if (lResult == ERROR_SUCCESS && vecChanges.empty() && !strTouched.empty())
        vecChanges.push_back({strTouched, false});
    Tell(vecChanges);
    return lResult;
}

LSTATUS CRegistry::Find(HKEY hKey, OpenRegistryKey*& pKey)
{
    auto it = m_mapOpen.find(reinterpret_cast<ULONG_PTR>(hKey));
    if (it == m_mapOpen.end())
    {
        const char* pRoot = RootName(hKey);
        if (pRoot == nullptr)
            return ERROR_INVALID_HANDLE;
        it = m_mapOpen.emplace(reinterpret_cast<ULONG_PTR>(hKey), OpenRegistryKey{}).first;
        it->second.strFolded = FoldName(CanonicalPath(pRoot));
        it->second.samRights = c_samRights;
    }
    pKey = &it->second;
    return pKey->bDeleted ? ERROR_KEY_DELETED : ERROR_SUCCESS;
}

LSTATUS CRegistry::Locate(HKEY hKey, const std::string& strSubKey, std::string& strPath)
{
    OpenRegistryKey* pKey = nullptr;
    const LSTATUS lResult = Find(hKey, pKey);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    if (!strSubKey.empty() && strSubKey[0] == '\\')
        return ERROR_BAD_PATHNAME;
    if (HasControls(strSubKey))
        return ERROR_INVALID_PARAMETER;
    const RegistryKey* pContent = m_pStore->Tree().Find(pKey->strFolded);
    if (pContent == nullptr)
        return ERROR_KEY_DELETED;
    strPath = CanonicalPath(pContent->strPath + '\\' + strSubKey);
    return ERROR_SUCCESS;
}

HKEY CRegistry::Add(const std::string& strPath, REGSAM samRights)
{
    const ULONG_PTR iHandle = m_iNextHandle;
    m_iNextHandle += 4;
    OpenRegistryKey& oKey = m_mapOpen[iHandle];
    oKey.strFolded = FoldName(strPath);
    oKey.samRights = (samRights & c_samMaximumAllowed) != 0 ? c_samRights : samRights & c_samRights;
    return reinterpret_cast<HKEY>(iHandle);
}

LSTATUS CRegistry::Open(HKEY hKey, const std::string& strSubKey, REGSAM samRights, HKEY* phResult)
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    Refresh(false);
    std::string strPath;
    const LSTATUS lResult = Locate(hKey, strSubKey, strPath);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    const RegistryKey* pKey = m_pStore->Tree().Find(strPath);
    if (pKey == nullptr)
        return ERROR_FILE_NOT_FOUND;
    *phResult = Add(pKey->strPath, samRights);
    return ERROR_SUCCESS;
}

LSTATUS CRegistry::Create(HKEY hKey, const std::string& strSubKey, REGSAM samRights, HKEY* phResult, bool& bCreated)
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    Refresh(false);
    std::string strPath;
    LSTATUS lResult = Locate(hKey, strSubKey, strPath);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    if (PathFault(strPath) != nullptr)
        return ERROR_INVALID_PARAMETER;
    const auto fnCreate = [&](CRegistryTree& oTree)
    {
        bCreated = oTree.Find(strPath) == nullptr;
        oTree.Create(strPath);
        return ERROR_SUCCESS;
    };
    lResult = Change(fnCreate);
    if (lResult == ERROR_SUCCESS)
        *phResult = Add(strPath, samRights);
    return lResult;
}

LSTATUS CRegistry::Close(HKEY hKey)
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    if (RootName(hKey) != nullptr)
        return ERROR_SUCCESS;
    const auto it = m_mapOpen.find(reinterpret_cast<ULONG_PTR>(hKey));
    if (it == m_mapOpen.end())
        return ERROR_INVALID_HANDLE;
    it->second.Signal();
    m_mapOpen.erase(it);
    return ERROR_SUCCESS;
}

LSTATUS CRegistry::DeleteKey(HKEY hKey, const std::string& strSubKey)
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    Refresh(false);
    std::string strPath;
    const LSTATUS lResult = Locate(hKey, strSubKey, strPath);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    const auto fnDelete = [&](CRegistryTree& oTree) -> LSTATUS
    {
        if (oTree.Find(strPath) == nullptr)
            return ERROR_FILE_NOT_FOUND;
        if (oTree.HasSubkeys(strPath) || oTree.IsBuiltIn(strPath))
            return ERROR_ACCESS_DENIED;
        oTree.Remove(strPath);
        return ERROR_SUCCESS;
    };
    return Change(fnDelete);
}

LSTATUS CRegistry::Read(HKEY hKey, REGSAM samRight,
                        const std::function<LSTATUS(const CRegistryTree&, const RegistryKey&)>& fnRead)
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    Refresh(false);
    OpenRegistryKey* pKey = nullptr;
    const LSTATUS lResult = Find(hKey, pKey);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    if ((pKey->samRights & samRight) != samRight)
        return ERROR_ACCESS_DENIED;
    const RegistryKey* pContent = m_pStore->Tree().Find(pKey->strFolded);
    return pContent == nullptr ? ERROR_KEY_DELETED : fnRead(m_pStore->Tree(), *pContent);
}

LSTATUS CRegistry::Write(HKEY hKey, const std::function<LSTATUS(RegistryKey&)>& fnWrite)
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    Refresh(false);
    OpenRegistryKey* pKey = nullptr;
    const LSTATUS lResult = Find(hKey, pKey);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    if ((pKey->samRights & KEY_SET_VALUE) == 0)
        return ERROR_ACCESS_DENIED;
    const std::string& strPath = pKey->strFolded;
    const auto fnUpdate = [&](CRegistryTree& oTree) -> LSTATUS
    { return oTree.Find(strPath) == nullptr ? ERROR_KEY_DELETED : fnWrite(oTree.Create(strPath)); };
    return Change(fnUpdate, strPath);
}

LSTATUS CRegistry::Watch(HKEY hKey, std::shared_ptr<CKernelEvent> pEvent)
{
    static const FollowerEnd
        s_oFollowerEnd; // the thread ends with the program; the registry stays for those that don't
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    UseMachine();
    m_oFollower.Follow(machine::Folder());
    Refresh(false);
    OpenRegistryKey* pKey = nullptr;
    const LSTATUS lResult = Find(hKey, pKey);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    OpenRegistryKey& oKey = *pKey;
    if ((oKey.samRights & KEY_NOTIFY) == 0)
        return ERROR_ACCESS_DENIED;
    oKey.bWatched = true;
    oKey.vecArmed.push_back(std::move(pEvent));
    if (oKey.bPending)
        oKey.Signal();
    return ERROR_SUCCESS;
}

void CRegistry::StopFollowing()
{
    {
        const std::lock_guard<std::mutex> oGuard(m_oLock);
        m_oFollower.Stop();
    }
    m_oFollower.Join();
}

std::string CRegistry::File()
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    UseMachine();
    return m_pStore->File();
}

std::vector<RegistryFileError> CRegistry::Errors()
{
    const std::lock_guard<std::mutex> oGuard(m_oLock);
    Refresh(false);
    return m_pStore->Errors();
}
