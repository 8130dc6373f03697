// The temperature jobs.
#include "apo/kelvane/engine/apo_kelvane_temperature.h"

#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_wmi.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <new>
#include <numeric>
#include <string>

namespace
{
constexpr int iHotCoil = 800;               // tenths of a degree: an event is reported above it
constexpr INT32 iAssumedTemperature = 2500; // hundredths of a degree, for the library while the controller has none
constexpr INT32 iFailedSample = 2499;       // hundredths of a degree, in place of a sample that can't be had
constexpr size_t iCommondLen = 32;

// The number that a command word's text shows, its bytes in the text's order. One too long for a word gives -1.
INT64 ReadCommond(const char* pText)
{
    return static_cast<INT64>(std::strtoull(pText, nullptr, 16));
}

// The word that asks for a sensor's temperature.
INT64 QueryCommond(INT64 iSensorID)
{
    char szText[iCommondLen] = {};
    snprintf(szText, sizeof(szText), "0x%02llX0202", static_cast<unsigned long long>(iSensorID));
    return ReadCommond(szText);
}

// The text of the word that reports a temperature in tenths of a degree, 0 to take the report back. False when it
// can't be had.
bool FormatReport(int iTemperature, char (&szText)[iCommondLen])
{
    return snprintf(szText, sizeof(szText), "0x%02X%02X0F02", static_cast<unsigned>(iTemperature) >> 8 & 0xFFU,
                    static_cast<unsigned>(iTemperature) & 0xFFU) >= 1;
}

// The mean in whole degrees of the samples but the smallest and the largest; 0 until there are all of them.
INT32 TrimmedMean(const CKelvaneSampleQueue& oSamples)
{
    constexpr INT64 iDivisor = 1000; // ten samples of hundredths
    if (!oSamples.IsFull())
        return 0;
    const auto [pLow, pHigh] = std::minmax_element(oSamples.begin(), oSamples.end());
    const INT64 iSum = std::accumulate(oSamples.begin(), oSamples.end(), INT64{0});
    return static_cast<INT32>((iSum - *pLow - *pHigh) / iDivisor);
}
} // namespace

CKelvaneTemperature::CKelvaneTemperature(CKelvaneInstance& oInstance) : m_oInstance(oInstance)
{
    InitTemperatureQueue();
}

CKelvaneTemperature::~CKelvaneTemperature() = default;

void CKelvaneTemperature::InitTemperatureQueue()
{
    const size_t iSensorCount = CKelvaneManager::Instance()->Tuning().m_vecSensorRangeCommand.size();
    m_oTemperatureQueue.resize(iSensorCount);
    m_oAverageQueue.Resize(iSensorCount);
}

void CKelvaneTemperature::InitializeWMI()
try
{
    m_pWMIHandle.reset(new (std::nothrow) CKelvaneWMI);
    if (AUDIO_MISSING(m_pWMIHandle, AUDIO_NO_HANDLE))
        return;
    AUDIO_CHECK(m_pWMIHandle->Initialize());
}
catch (...)
{
    // Out of memory on the way to the controller: it refuses what it is asked.
}

void CKelvaneTemperature::ReleaseWMI()
{
    m_pWMIHandle.reset();
    m_iLastECTemperature = 0;
}

// Whether this engine reports temperatures to the embedded controller.
bool CKelvaneTemperature::IsReporting() const
{
    return m_pWMIHandle != nullptr && CKelvaneManager::Instance()->GetAlgoCtrlParam(5) == 1;
}

int CKelvaneTemperature::AudioSmartSetECTemperature()
{
    if (!IsReporting())
        return 0;
    KelvaneStruParam pStruParam = {};
    if (m_oInstance.GetPara(pStruParam) != 0)
        pStruParam = {}; // whatever the library left in it
    const int iCoil = *std::max_element(std::begin(pStruParam.sLSMCoilTemp), std::end(pStruParam.sLSMCoilTemp));
    int iTemperature = std::max(iCoil, 0) / 10;
    // A steady temperature alternates between two neighbours.
    if (m_iLastECTemperature != 0 && m_iLastECTemperature == iTemperature)
        ++iTemperature;
    char szText[iCommondLen] = {};
    if (!FormatReport(iTemperature, szText))
    {
        AUDIOLOG_DEBUG("Fail to turn Max Temperature*10=" + std::to_string(iTemperature));
        return 0;
    }
    if (iTemperature > iHotCoil)
        AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_EC_TEMPERATURE) + "Set EC Temperature to " +
                            std::to_string(iTemperature));
    const INT64 iSetTemperature = ReadCommond(szText);
    const int iResult = AUDIO_CHECK(m_pWMIHandle->SetECTemperature(iSetTemperature));
    if (iResult == 0)
        m_iLastECTemperature = static_cast<UINT16>(iTemperature);
    return iResult;
}

int CKelvaneTemperature::AudioSmartCancelECTemperature()
{
    if (!IsReporting())
        return 0;
    char szText[iCommondLen] = {};
    if (!FormatReport(0, szText))
    {
        AUDIOLOG_DEBUG("Fail to Cancel EC Temperature");
        return 0;
    }
    const INT64 iSetTemperature = ReadCommond(szText);
    AUDIOLOG_DEBUG("Set EC Temperature " + std::string(szText) + " turn to " + std::to_string(iSetTemperature));
    return AUDIO_CHECK(m_pWMIHandle->SetECTemperature(iSetTemperature));
}

int CKelvaneTemperature::AudioKelvaneSetAlgoTemperature()
{
    if (m_pWMIHandle == nullptr)
        return 0;
    if (!m_oInstance.HasTemperature())
        return AUDIO_NO_HANDLE;
    const CKelvaneManager* const pManager = CKelvaneManager::Instance();
    const INT64 iCommond = QueryCommond(pManager->GetAlgoCtrlParam(7));
    INT32 iTemperature = iAssumedTemperature;
    if (m_pWMIHandle->QueryTemperature(iCommond, iTemperature) == 0)
    {
        // Unsigned, so that no word of the tuning file overflows.
        const INT64 iOffset = pManager->GetAlgoCtrlParam(2);
        iTemperature = static_cast<INT32>(static_cast<UINT32>(iTemperature) - static_cast<UINT32>(iOffset) * 100U);
        AUDIOLOG_DEBUG("Query Commond(" + std::to_string(iCommond) + "),EC Temperature:" +
                       std::to_string(iTemperature) + ",Offset Temperature:" + std::to_string(iOffset));
    }
    return m_oInstance.SetTemperature(iTemperature);
}

int CKelvaneTemperature::AudioKelvanePrintTemperature(int iOffload)
{
    const CKelvaneManager* const pManager = CKelvaneManager::Instance();
    if (pManager->GetDebugMode() == 0 || m_pWMIHandle == nullptr)
        return 0;
    std::string strLine;
    m_oAverageQueue.BeginRound();
    for (size_t i = 0; i < m_oTemperatureQueue.size(); ++i)
    {
        INT32 iSample = iFailedSample;
        m_pWMIHandle->QueryTemperature(QueryCommond(pManager->Tuning().m_vecSensorRangeCommand[i]), iSample);
        m_oTemperatureQueue[i].Push(iSample);
        m_oAverageQueue.Push(i, TrimmedMean(m_oTemperatureQueue[i]));
        strLine += (i == 0 ? "" : ",") + std::to_string(iSample);
    }
    m_oAverageQueue.Publish();
    pManager->PrintSmartDebugLog(AUDIO_TEMPERATURE_FILE, strLine.c_str(), iOffload);
    return 0;
}

CKelvaneTemperature::Heat CKelvaneTemperature::JudgeHeat()
{
    const std::vector<CKelvaneMeanQueue>& vecMeans = m_oAverageQueue.Read();
    if (vecMeans.empty() || !vecMeans[0].IsFull())
        return Heat::Unknown;
    bool bHigh = true;
    bool bLow = true;
    for (int i = 0; i < static_cast<int>(vecMeans.size()); ++i)
    {
        bHigh = bHigh && JudgeHighLimit(i, vecMeans[static_cast<size_t>(i)]) == 1;
        bLow = bLow && JudgeLowLimit(i, vecMeans[static_cast<size_t>(i)]) == 1;
    }
    if (!bHigh && !bLow) // between the two limits
        return Heat::Unknown;
    ClearTemperatureQueue(m_oAverageQueue);
    return bHigh ? Heat::Hot : Heat::Cool;
}

int CKelvaneTemperature::JudgeHighLimit(const int& i, CKelvaneMeanQueue oQueue)
{
    const std::vector<INT32>& vecLimit = CKelvaneManager::Instance()->Tuning().m_vecSensorRangeNormal;
    if (!oQueue.IsFull() || static_cast<size_t>(i) >= vecLimit.size())
        return 0;
    const INT32 iLimit = vecLimit[static_cast<size_t>(i)];
    return std::all_of(oQueue.begin(), oQueue.end(), [=](INT32 iMean) { return iMean > iLimit; }) ? 1 : 0;
}

int CKelvaneTemperature::JudgeLowLimit(const int& i, CKelvaneMeanQueue oQueue)
{
    const std::vector<INT32>& vecLimit = CKelvaneManager::Instance()->Tuning().m_vecSensorRangeLow;
    if (!oQueue.IsFull() || static_cast<size_t>(i) >= vecLimit.size())
        return 0;
    const INT32 iLimit = vecLimit[static_cast<size_t>(i)];
    const INT32* const pAbove = std::find_if(oQueue.begin(), oQueue.end(), [=](INT32 iMean) { return iMean > iLimit; });
    if (pAbove == oQueue.end())
        return 1;
    AUDIOLOG_DEBUG("iSenSorID:" + std::to_string(i) + ",Average Temperature:" + std::to_string(*pAbove) +
                   "> Low Limit:" + std::to_string(iLimit));
    return 0;
}
