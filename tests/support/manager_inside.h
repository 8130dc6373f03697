// The tests' way inside the manager: what its start-up would fill, and what it keeps to itself.
#pragma once

#include "apo/kelvane/apo_kelvane_manager.h"

class CManagerInside
{
public:
    static CKelvaneEntryPoints& EntryPoints() { return *Manager(); }
    static CKelvaneTuning& Tuning() { return Manager()->m_oTuning; }
    static INT32& DebugMode() { return Manager()->m_iDebugMode; }
    static BOOL& LoadDLL() { return Manager()->m_bLoadDLL; }
    static std::string& AlgoVersion() { return Manager()->m_strAlgoVersion; }
    static void RemoveAmplifiers()
    {
        Manager()->m_pIRP0.reset();
        Manager()->m_pIRP1.reset();
    }

private:
    static CKelvaneManager* Manager() { return CKelvaneManager::Instance(); }
};
