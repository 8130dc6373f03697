// The heat tests' fixture: a protection engine whose library's state and whose embedded controller are scripted.
#pragma once

#include "platform/control/machine_native.h"
#include "tests/engine/engine_test.h"

#include <map>
#include <mutex>
#include <utility>

inline KelvaneStruParam g_oState;  // the library's
inline int g_iStateCode = 0;       // what asking for it gives
inline std::atomic<int> g_iTold{}; // the temperature it was told

class ThermalTest : public EngineTest
{
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        g_oState = {};
        g_iStateCode = 0;
        CManagerInside::EntryPoints().m_fAudioKelvaneGetPara = [](void*, KelvaneStruParam* pState)
        {
            *pState = g_oState;
            return g_iStateCode;
        };
        CManagerInside::EntryPoints().m_fAudioKelvaneTemperature = [](void*, int32_t iTemperature)
        {
            g_iTold = iTemperature;
            return iTemperature == 9900 ? 21 : 0;
        };
        CManagerInside::Tuning().m_iAlgoCtrlParam[5] = 1;
        CManagerInside::Tuning().m_iAlgoCtrlParam[7] = 0x1A;
        CManagerInside::Tuning().m_vecSensorRangeCommand = {1, 2};
        CManagerInside::Tuning().m_vecSensorRangeNormal = {40, 40};
        CManagerInside::Tuning().m_vecSensorRangeLow = {30, 30};
        machine::Controller oController;
        oController.fScript = [this](UINT64 ulWord) { return Answer(ulWord); };
        machine::AttachController(oController);
        machine::SetClock({2026, 3, 2, 17, 12, 0, 0, 0});
    }

    // Sensors without a temperature, and a refusing controller, give an error byte.
    std::vector<BYTE> Answer(UINT64 ulWord)
    {
        const std::lock_guard<std::mutex> oGuard(m_oMutex);
        m_vecWords.push_back(ulWord);
        const auto itSensor = m_mapTenths.find(static_cast<int>(ulWord >> 16));
        const bool bReport = (ulWord & 0xFFFF) == 0x0F02;
        if (m_bRefusing || (!bReport && itSensor == m_mapTenths.end()))
            return std::vector<BYTE>(256, 1);
        return machine::TemperatureAnswer(bReport ? 0 : itSensor->second);
    }

    // What the controller was sent since the last call.
    std::vector<UINT64> TakeWords()
    {
        const std::lock_guard<std::mutex> oGuard(m_oMutex);
        return std::exchange(m_vecWords, {});
    }

    // With an instance and a controller, without workers.
    CKelvanePostEngine& MakeThermalEngine()
    {
        MakeHandEngine().InitializeWMI();
        return *m_pEngine;
    }

    static std::string Record(const std::string& strName)
    {
        return GetFile(AUDIO_VOICE_LOG_DIR + ("\\KelvaneAPO_" + strName + "20260317.txt"));
    }

    CKelvaneManager* m_pManager = CKelvaneManager::Instance();
    std::map<int, int> m_mapTenths; // by sensor, tenths of a degree
    bool m_bRefusing = false;

private:
    std::mutex m_oMutex;
    std::vector<UINT64> m_vecWords;
};
