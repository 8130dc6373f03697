// The life of one library instance in a stream: memory, first parameter set, frame record, workers, and the way back.
#include "apo/kelvane/apo_kelvane_everest.h"
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "apo/kelvane/apo_kelvane_senary.h"
#include "apo/kelvane/apo_kelvane_wmi.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_data.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace
{
constexpr int iDataMode = 3; // what the library expects in the frame record
} // namespace

// The manager is fully initialised by now. Nothing is started here.
CKelvanePostEngine::CKelvanePostEngine()
{
    AUDIOLOG_DEBUG("CKelvanePostEngine begin!");
    m_oVariant = {8, AUDIO_DUMP_POST_INT32_DATA_IN, AUDIO_DUMP_POST_INT32_DATA_OUT};
    const CKelvaneManager* const pManager = CKelvaneManager::Instance();
    m_fAudioKelvaneInit = pManager->m_fAudioKelvaneInit;
    m_fAudioKelvaneApply = pManager->m_fAudioKelvaneApply;
    m_fAudioKelvaneSetPara = pManager->m_fAudioKelvaneSetPara;
    m_fAudioKelvaneGetPara = pManager->m_fAudioKelvaneGetPara;
    m_fAudioKelvaneGetSize = pManager->m_fAudioKelvaneGetSize;
    m_fAudioKelvaneGetVersion = pManager->m_fAudioKelvaneGetVersion;
    m_fAudioKelvaneIvOptimize = pManager->m_fAudioKelvaneIvOptimize;
    m_fAudioKelvaneSetBatteryInfo = pManager->m_fAudioKelvaneSetBatteryInfo;
    m_fAudioKelvaneClearStatus = pManager->m_fAudioKelvaneClearStatus;
    m_fAudioKelvaneTemperature = pManager->m_fAudioKelvaneTemperature;
    InitTemperatureQueue();
}

void CKelvanePostEngine::MakeInline()
{
    m_oVariant = {10, AUDIO_DUMP_POST_OMFX_DATA_IN, AUDIO_DUMP_POST_OMFX_DATA_OUT};
    m_oOutput.SetPriming(0);
    m_oStream.m_bInlineMode = 1;
}

CKelvanePostEngine::~CKelvanePostEngine()
{
    AUDIOLOG_DEBUG("CKelvanePostEngine end!");
    StopInstance();
}

int CKelvanePostEngine::InitAlgorithmParameter()
{
    if (m_bStarted)
    {
        StopInstance();
        ResetStream();
    }
    m_bStarted = true;
    const int iResult = StartInstance();
    if (iResult == 0)
    {
        ActiveKelvaneGain();
        CreateAlgorithmThread();
        InitializeWMI();
        CreateTemperatureThread();
        CreateParameterThread();
        return 0;
    }
    if (CKelvaneManager::Instance()->m_iDebugMode == 1)
        SetSilentStatus(1);
    else
        DeactiveKelvaneGain();
    ReleaseMemory();
    return iResult;
}

int CKelvanePostEngine::StartInstance()
try
{
    if (AUDIO_FAIL_IF(FALSE == CKelvaneManager::Instance()->GetLoadDLLStatus(), AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    const int m_iStreamChannelCount = m_oStream.m_iStreamChannelCount; // the name that the failure line carries
    if (AUDIO_FAIL_IF(m_iStreamChannelCount > KELVANE_MAX_CHANNELS, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    if (const int iResult = AUDIO_CHECK(AudioKelvaneGetSize()))
        return iResult;
    if (const int iResult = AUDIO_CHECK(AudioKelvaneInit()))
        return iResult;
    if (const int iResult = AUDIO_CHECK(AudioKelvaneSetPara()))
        return iResult;
    return AUDIO_CHECK(AudioKelvaneSetBatteryInfo());
}
catch (...)
{
    return AUDIO_NO_INSTANCE;
}

// Stops the workers and gives back what the instance holds.
void CKelvanePostEngine::StopInstance()
{
    m_bThreadRun = 0;
    m_bTemperatureRun = 0;
    m_bParameterRun = 0;
    CAudioMonitor::StopMonitorThread(&m_bThreadRun, m_hApplyEvent, m_pThreadWorker);
    CAudioMonitor::StopMonitorThread(&m_bTemperatureRun, m_hTemperatureEvent, m_pTemperatureWorker);
    CAudioMonitor::StopMonitorThread(&m_bParameterRun, m_hParameterEvent, m_pParameterWorker);
    ClearAllQueues();
    ReleaseDataStruct(&m_pDataStruct);
    ReleaseMemory();
    m_pWMIHandle.reset();
}

// As constructed, for a second start; the format comes behind it, perhaps another one. The inline variant stays one.
void CKelvanePostEngine::ResetStream()
{
    SetSilentStatus(0);
    SetBypassStatus(0);
    SetInChannelCount(0);
    SetOutChannelCount(0);
    ResetOutputQueue();
    ReleaseAudioCacheBuffer();
    m_iApplyFrameCount = 0;
    m_iReleaseCount = 0;
    m_strStates.clear();
    m_iLastECTemperature = 0;
    m_i64MaxTime = 0;
    m_i64MinTime = 0;
    m_i64TotalTime = 0;
    m_i64GapTime = 0;
    m_bChannelReported = false;
    m_bNotFiniteReported = false;
}

int CKelvanePostEngine::AudioKelvaneGetSize()
{
    const int iResult = AllocateMemory();
    if (iResult != 0)
        ReleaseMemory();
    return iResult;
}

int CKelvanePostEngine::AllocateMemory()
{
    m_pMemSize.Allocate(sizeof(KelvaneMemSize));
    if (AUDIO_MISSING(m_pMemSize, AUDIO_NO_INSTANCE))
        return AUDIO_NO_INSTANCE;
    *m_pMemSize = {};
    if (const int iResult = AUDIO_CHECK(m_fAudioKelvaneGetSize(m_pMemSize)))
        return iResult;
    if (AUDIO_FAIL_IF((m_pMemSize->iRunBufSize <= 0), AUDIO_BAD_SIZE))
        return AUDIO_BAD_SIZE;
    m_pRunBuf.Allocate(m_pMemSize->iRunBufSize);
    if (AUDIO_MISSING(m_pRunBuf, AUDIO_NO_INSTANCE))
        return AUDIO_NO_INSTANCE;
    if (AUDIO_FAIL_IF((m_pMemSize->iScratchSize <= 0), AUDIO_BAD_SIZE))
        return AUDIO_BAD_SIZE;
    m_pScratchBuf.Allocate(m_pMemSize->iScratchSize);
    return AUDIO_MISSING(m_pScratchBuf, AUDIO_NO_INSTANCE) ? AUDIO_NO_INSTANCE : 0;
}

void CKelvanePostEngine::ReleaseMemory()
{
    m_pMemSize.Release();
    m_pRunBuf.Release();
    m_pScratchBuf.Release();
}

int CKelvanePostEngine::AudioKelvaneInit()
{
    if (AUDIO_MISSING(m_pRunBuf, AUDIO_NO_INSTANCE) || AUDIO_MISSING(m_pScratchBuf, AUDIO_NO_INSTANCE))
        return AUDIO_NO_INSTANCE;
    return AUDIO_CHECK(m_fAudioKelvaneInit(m_pRunBuf, m_pScratchBuf));
}

int CKelvanePostEngine::AudioKelvaneSetPara()
{
    m_strParamID = GetEffectParamsID(0);
    const KelvaneStruParam* const pStruParam = CKelvaneManager::Instance()->GetAlgorithmStruct(m_strParamID.load());
    if (AUDIO_MISSING(pStruParam, AUDIO_NO_PARAMETERS))
        return AUDIO_NO_PARAMETERS;
    if (m_pDataStruct == nullptr)
        m_pDataStruct = InitDataStruct(pStruParam->sChannelNum);
    if (AUDIO_MISSING(m_pDataStruct, AUDIO_NO_INSTANCE))
        return AUDIO_NO_INSTANCE;
    return AUDIO_CHECK(m_fAudioKelvaneSetPara(m_pRunBuf, m_pScratchBuf, pStruParam));
}

int CKelvanePostEngine::AudioKelvaneSetBatteryInfo()
{
    if (AUDIO_MISSING(m_fAudioKelvaneSetBatteryInfo, AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    SYSTEM_POWER_STATUS oSysPower;
    if (!GetSystemPowerStatus(&oSysPower))
    {
        AUDIOLOG_ERROR(AUDIO_NO_OBJECT, "GetSystemPowerStatus(&oSysPower)");
        return AUDIO_NO_OBJECT;
    }
    if (oSysPower.BatteryLifePercent > 100)
        oSysPower.BatteryLifePercent = 0;
    if (oSysPower.ACLineStatus > 1)
        oSysPower.ACLineStatus = 0;
    m_oSysPower = oSysPower;
    m_iSysPower = static_cast<UINT32>(oSysPower.BatteryLifePercent | oSysPower.ACLineStatus << 8);
    return 0;
}

void CKelvanePostEngine::ActiveKelvaneGain()
try
{
    AUDIO_CHECK(CSenaryGainConfig::Instance()->SetHighSenaryHWGain());
    AUDIO_CHECK(CEverestGainConfig::Instance()->SetHighEverestHWGain());
    AUDIO_CHECK(CKelvaneManager::Instance()->ActiveMutilPAGain());
}
catch (...)
{
    // Out of memory for a codec's object: what was not reached stays as it is.
}

void CKelvanePostEngine::DeactiveKelvaneGain()
try
{
    if (AUDIO_CHECK(CSenaryGainConfig::Instance()->SetLowSenaryHWGain()) == 0 &&
        AUDIO_CHECK(CKelvaneManager::Instance()->DeactiveMutilPAGain()) == 0)
    {
        SetBypassStatus(1);
        return;
    }
    AUDIOLOG_WARN("Set Low Gain failed then Will be Silented!");
    SetSilentStatus(1);
}
catch (...)
{
    SetSilentStatus(1); // nobody knows the gain
}

KelvaneDataStruct* CKelvanePostEngine::InitDataStruct(const int& iChannelCount)
{
    const int iRealChannlCount = std::max(GetInChannelCount(), iChannelCount);
    if (AUDIO_FAIL_IF(iRealChannlCount > KELVANE_MAX_CHANNELS, AUDIO_BAD_DATA))
        return nullptr;
    KelvaneDataStruct* pDataStruct = new (std::nothrow) KelvaneDataStruct{};
    if (AUDIO_MISSING(pDataStruct, AUDIO_NO_INSTANCE))
        return nullptr;
    pDataStruct->iFrameLen = AUDIO_KELVANE_FRAME_LEN;
    pDataStruct->iDataMode = iDataMode;
    if (AUDIO_CHECK(
            CAudioDATA::AllocatePointerArray(pDataStruct->psDataIn, iRealChannlCount, AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(
            CAudioDATA::AllocatePointerArray(pDataStruct->psDataOut, iRealChannlCount, AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(CAudioDATA::AllocatePointerArrayConst(pDataStruct->psVoltageIn, iRealChannlCount,
                                                          AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(CAudioDATA::AllocatePointerArrayConst(pDataStruct->psCurrentIn, iRealChannlCount,
                                                          AUDIO_KELVANE_FRAME_LEN)) == 0 &&
        AUDIO_CHECK(CAudioDATA::AllocatePointerArrayConst(pDataStruct->psVoltageBatteryIn, iRealChannlCount,
                                                          AUDIO_KELVANE_FRAME_LEN)) == 0)
        return pDataStruct;
    ReleaseDataStruct(&pDataStruct);
    return nullptr;
}

void CKelvanePostEngine::ReleaseDataStruct(KelvaneDataStruct** pDataStruct)
{
    if (*pDataStruct == nullptr)
        return;
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psDataIn, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psDataOut, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psVoltageIn, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psCurrentIn, KELVANE_MAX_CHANNELS);
    CAudioDATA::ReleasePointerArray((*pDataStruct)->psVoltageBatteryIn, KELVANE_MAX_CHANNELS);
    delete *pDataStruct;
    *pDataStruct = nullptr;
}
