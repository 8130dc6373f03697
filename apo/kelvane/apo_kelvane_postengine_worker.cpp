// The engine's workers: the start of all three, and the one that runs the algorithm on queued frames.
#include "apo/kelvane/apo_kelvane_postengine.h"
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

void CKelvanePostEngine::CreateTemperatureThread()
{
    m_iTemperatureTicks = 0;
    m_hTemperatureEvent.Create();
    if (AUDIO_MISSING(m_hTemperatureEvent, AUDIO_NO_HANDLE))
        return;
    m_pTemperatureWorker = CAudioMonitor::CreateMonitorThread(ProcessTemperatureThread, this, &m_bTemperatureRun);
    AUDIO_MISSING(m_pTemperatureWorker, AUDIO_NO_HANDLE);
}

void CKelvanePostEngine::CreateParameterThread()
{
    m_iParameterTicks = 0;
    m_hParameterEvent.Create();
    if (AUDIO_MISSING(m_hParameterEvent, AUDIO_NO_HANDLE))
        return;
    m_pParameterWorker = CAudioMonitor::CreateMonitorThread(ProcessParameterThread, this, &m_bParameterRun);
    AUDIO_MISSING(m_pParameterWorker, AUDIO_NO_HANDLE);
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
