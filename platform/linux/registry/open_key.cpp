// A key of the registry as one handle has it open, and its watch.
#include "registry/open_key.h"

bool OpenRegistryKey::Sees(const RegistryChange& oChange) const
{
    if (oChange.strPath == strFolded)
        return oChange.dwKind == 0 || (oChange.dwKind & dwFilter) != 0;
    const std::string strBelow = strFolded + '\\';
    return bSubtree && (oChange.dwKind & dwFilter) != 0 && oChange.strPath.compare(0, strBelow.size(), strBelow) == 0;
}

void OpenRegistryKey::Signal()
{
    bPending = vecArmed.empty();
    for (const auto& pEvent : vecArmed)
        pEvent->Set();
    vecArmed.clear();
}
