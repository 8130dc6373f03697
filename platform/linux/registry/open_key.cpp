// A key of the registry as one handle has it open, and its watch.
#include "registry/open_key.h"

bool OpenRegistryKey::Sees(const RegistryChange& oChange) const
{
    const std::string strBelow = strFolded + '\\';
    return oChange.strPath == strFolded || oChange.strPath.compare(0, strBelow.size(), strBelow) == 0;
}

void OpenRegistryKey::Signal()
{
    bPending = vecArmed.empty();
    for (const auto& pEvent : vecArmed)
        pEvent->Set();
    vecArmed.clear();
}
