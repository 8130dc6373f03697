// The registry of this process: its open keys, their rights and watches, over the machine's file.
#pragma once

#include "registry/open_key.h"
#include "registry/registry_follower.h"
#include "registry/registry_store.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

// Every operation may come on any thread. Codes are the platform's.
class CRegistry
{
public:
    static CRegistry& Instance();

    // Opens strSubKey below the key; strSubKey may be empty.
    LSTATUS Open(HKEY hKey, const std::string& strSubKey, REGSAM samRights, HKEY* phResult);
    LSTATUS Create(HKEY hKey, const std::string& strSubKey, REGSAM samRights, HKEY* phResult, bool& bCreated);
    LSTATUS Close(HKEY hKey);
    LSTATUS DeleteKey(HKEY hKey, const std::string& strSubKey);

    // Lets the function look at an open key's content. The key must have the right.
    LSTATUS Read(HKEY hKey, REGSAM samRight,
                 const std::function<LSTATUS(const CRegistryTree&, const RegistryKey&)>& fnRead);
    // Lets the function change its values. Its watches wake even if it sets what was set before.
    LSTATUS Write(HKEY hKey, const std::function<LSTATUS(RegistryKey&)>& fnWrite);

    // The event is signalled once; at once if a change is pending.
    LSTATUS Watch(HKEY hKey, std::shared_ptr<CKernelEvent> pEvent);

    // Ends the thread that follows the file. Watches see this process's changes alone from then on.
    void StopFollowing();

    std::string File();
    std::vector<RegistryFileError> Errors();

private:
    CRegistry();
    void UseMachine();
    void Refresh(bool bForce);
    int FollowChange();
    void Tell(const std::vector<RegistryChange>& vecChanges);
    // Changes the tree and tells the watches, of a change of the touched key's values at least.
    LSTATUS Change(const std::function<LSTATUS(CRegistryTree&)>& fnChange, const std::string& strTouched = "");
    // The open key, if it still exists.
    LSTATUS Find(HKEY hKey, OpenRegistryKey*& pKey);
    // The whole path of what is below it.
    LSTATUS Locate(HKEY hKey, const std::string& strSubKey, std::string& strPath);
    HKEY Add(const std::string& strPath, REGSAM samRights);

    std::mutex m_oLock; // guards all below
    unsigned m_iGeneration = 0;
    std::unique_ptr<CRegistryStore> m_pStore;
    CRegistryFollower m_oFollower;
    std::unordered_map<ULONG_PTR, OpenRegistryKey> m_mapOpen; // roots enter with their first use
    ULONG_PTR m_iNextHandle = 0x1004;                         // a closed one never comes again
};
