// The ten entry points of the protection library, as the manager finds them and each instance calls them.
#pragma once

#include "protection/kelvane_protection.h"

// All null until a library was looked through.
struct CKelvaneEntryPoints
{
    KelvaneInit m_fAudioKelvaneInit = nullptr;
    KelvaneApply m_fAudioKelvaneApply = nullptr;
    KelvaneSetPara m_fAudioKelvaneSetPara = nullptr;
    KelvaneGetPara m_fAudioKelvaneGetPara = nullptr;
    KelvaneGetSize m_fAudioKelvaneGetSize = nullptr;
    KelvaneGetVersion m_fAudioKelvaneGetVersion = nullptr;
    KelvaneIvOptimize m_fAudioKelvaneIvOptimize = nullptr;
    KelvaneSetBatteryInfo m_fAudioKelvaneSetBatteryInfo = nullptr;
    KelvaneClearStatus m_fAudioKelvaneClearStatus = nullptr;
    KelvaneTemperature m_fAudioKelvaneTemperature = nullptr;
};
