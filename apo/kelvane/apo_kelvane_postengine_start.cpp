// The life of one library instance in a stream: its start with the gains, the worker that runs it, and the way back.
#include "apo/kelvane/apo_kelvane_everest.h"
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "apo/kelvane/apo_kelvane_senary.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"

namespace
{
constexpr DWORD dwApplyWait = 10; // milliseconds, then the run flag is looked at

// Raises the calling thread for a scope. A thread of the pool goes back with the priority that it came with.
class CTimeCritical
{
public:
    CTimeCritical() { SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL); }
    ~CTimeCritical() { SetThreadPriority(GetCurrentThread(), m_iPriority); }
    CTimeCritical(const CTimeCritical&) = delete;
    CTimeCritical& operator=(const CTimeCritical&) = delete;

private:
    const int m_iPriority = GetThreadPriority(GetCurrentThread());
};
} // namespace

// The manager is fully initialised by now. Nothing is started here.
CKelvanePostEngine::CKelvanePostEngine() : m_oInstance(CKelvaneManager::Instance()->EntryPoints())
{
    AUDIOLOG_DEBUG("CKelvanePostEngine begin!");
    m_oVariant = {8, AUDIO_DUMP_POST_INT32_DATA_IN, AUDIO_DUMP_POST_INT32_DATA_OUT};
}

CKelvanePostEngine::~CKelvanePostEngine()
{
    AUDIOLOG_DEBUG("CKelvanePostEngine end!");
    StopInstance();
}

void CKelvanePostEngine::MakeInline()
{
    m_oVariant = {10, AUDIO_DUMP_POST_OMFX_DATA_IN, AUDIO_DUMP_POST_OMFX_DATA_OUT};
    m_oOutput.SetPriming(0);
    m_oStream.m_bInlineMode = 1;
}

int CKelvanePostEngine::InitAlgorithmParameter()
{
    if (m_bStarted)
        StopInstance();
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
    if (CKelvaneManager::Instance()->GetDebugMode() == 1)
        SetSilentStatus(1);
    else
        DeactiveKelvaneGain();
    m_oInstance.Release();
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

int CKelvanePostEngine::AudioKelvaneSetPara()
{
    const KelvaneStruParam* const pStruParam = m_oChoice.FirstSet();
    if (AUDIO_MISSING(pStruParam, AUDIO_NO_PARAMETERS))
        return AUDIO_NO_PARAMETERS;
    if (!m_oFrame.Prepare(pStruParam->sChannelNum))
        return AUDIO_NO_INSTANCE;
    return m_oInstance.SetPara(pStruParam);
}

// Stops the workers and gives back what the instance holds. The engine is as constructed then, for a second start; the
// format comes behind it, perhaps another one. The inline variant stays one.
void CKelvanePostEngine::StopInstance()
{
    m_bThreadRun = 0;
    m_oJobs.EndRun();
    CAudioMonitor::StopMonitorThread(&m_bThreadRun, m_hApplyEvent, m_pThreadWorker);
    m_oJobs.Stop();
    ClearAllQueues();
    m_oFrame.Reset();
    m_oInstance.Release();
    m_oTemperature.ReleaseWMI();
    SetSilentStatus(0);
    SetBypassStatus(0);
    SetInChannelCount(0);
    SetOutChannelCount(0);
    ResetOutputQueue();
    ReleaseAudioCacheBuffer();
    m_oTimes = {};
    m_oJobs.Reset();
    m_oReport.Clear();
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

void CKelvanePostEngine::CreateAlgorithmThread()
{
    m_hApplyEvent.Create();
    if (!AUDIO_MISSING(m_hApplyEvent, AUDIO_NO_HANDLE))
    {
        m_pThreadWorker = CAudioMonitor::CreateMonitorThread(ProcessAlgorithmThread, this, &m_bThreadRun);
        if (!AUDIO_MISSING(m_pThreadWorker, AUDIO_NO_HANDLE))
            return;
    }
    SetSilentStatus(1); // rather silent than unprotected
    m_bThreadRun = 0;
}

void CALLBACK CKelvanePostEngine::ProcessAlgorithmThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CKelvanePostEngine* const pThis = static_cast<CKelvanePostEngine*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER) || pThis->m_oStream.m_bInlineMode != 0)
        return;
    const CTimeCritical oPriority;
    while (pThis->m_bThreadRun == 1)
    {
        if (WaitForSingleObject(pThis->m_hApplyEvent, dwApplyWait) != WAIT_OBJECT_0)
            continue;
        ResetEvent(pThis->m_hApplyEvent);
        try
        {
            pThis->DrainInputQueue();
        }
        catch (...)
        {
            // Out of memory for a line or a queue's growth: that frame is lost, the next signal goes on.
        }
    }
}
