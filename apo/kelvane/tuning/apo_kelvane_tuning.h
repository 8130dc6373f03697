// What a tuning file says: control words, sensors, volume bands, parameter sets. A value: built by its loader, read by
// everybody else.
#pragma once

#include "protection/kelvane_protection.h"

#include <windows.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

// Empty when no file could be read. Any thread may read a const one.
struct CKelvaneTuning
{
    static constexpr size_t ALGO_CTRL_COUNT = 8;
    static constexpr size_t VOLUME_LIMIT_COUNT = 6;

    // The control word, 0 for an index of ALGO_CTRL_COUNT or more.
    INT64 GetAlgoCtrlParam(UINT64 iIndex) const;
    // The key's record, or the first one, or null when there is none. Lives as long as the value.
    const KelvaneStruParam* GetAlgorithmStruct(const std::string& strKey) const;

    INT64 m_iAlgoCtrlParam[ALGO_CTRL_COUNT] = {};
    INT32 m_iDIVMode = 0; // 1: DIV mode
    std::vector<INT32> m_vecSensorRangeCommand;
    std::vector<INT32> m_vecSensorRangeNormal; // upper limits, degrees Celsius
    std::vector<INT32> m_vecSensorRangeLow;    // lower limits, degrees Celsius
    std::vector<INT32> m_vecVolumeRange;       // VOLUME_LIMIT_COUNT, percent; empty without a tuning file
    std::map<std::string, std::unique_ptr<const KelvaneStruParam>> m_mapAlgoParam;
};
