// The choice of the library's parameter set: volume band, sound mode, heat.
#pragma once

#include "apo/base/apo_base_engine.h"
#include "apo/kelvane/engine/apo_kelvane_instance.h"
#include "apo/kelvane/engine/apo_kelvane_temperature.h"

#include <atomic>

// The processing thread's, but for ParamID.
class CKelvaneSetChoice
{
public:
    // oEngine's mirrors are brought up to date with every key composed.
    CKelvaneSetChoice(CBaseEngine& oEngine, CKelvaneInstance& oInstance, CKelvaneTemperature& oTemperature)
        : m_oEngine(oEngine), m_oInstance(oInstance), m_oTemperature(oTemperature)
    {
    }

    // The key of this moment's volume and sound modes, a constant; empty without volume bands. iHeatState 1: heated
    // state.
    const char* GetEffectParamsID(const int& iHeatState);
    // Hands the library the set of this moment if it isn't the one it has; 0. By heat only with a verdict, else the set
    // stays.
    int SetAudioVolumeEffectParamsID();
    int SetAudioHeatEffectParamsID();
    // The normal set of this moment, for a start; null without any.
    const KelvaneStruParam* FirstSet();
    // Key of the set the library was last given, a constant. Any thread.
    const char* ParamID() const { return m_strParamID; }

private:
    friend class CEngineInside;
    int SetEffectParamsID(const char* pNewID);

    CBaseEngine& m_oEngine;
    CKelvaneInstance& m_oInstance;
    CKelvaneTemperature& m_oTemperature;
    // Only constants are stored, so any thread may read through it.
    std::atomic<const char*> m_strParamID{""};
};
