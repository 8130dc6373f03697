// A key of the registry as one handle has it open, and its watch.
#pragma once

#include "registry/registry_tree.h"
#include "threads/kernel.h"

#include <memory>
#include <string>
#include <vector>

struct OpenRegistryKey
{
    std::string strFolded; // canonical path, folded
    REGSAM samRights = 0;
    bool bDeleted = false;

    // The watch, from its first arming until the key is closed. A change that comes while no event is armed is kept
    // for the next arming, so that none is lost between two.
    bool bWatched = false;
    bool bPending = false;
    std::vector<std::shared_ptr<CKernelEvent>> vecArmed;

    // Any change in it or below.
    bool Sees(const RegistryChange& oChange) const;
    void Signal();
};
