// The engine's workers: one runs the algorithm on queued frames, one does the periodic parameter work.
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "audioapi/audio_api_log.h"

namespace
{
constexpr DWORD dwApplyWait = 10;       // milliseconds, then the run flag is looked at
constexpr int iBatterySignalCount = 10; // signals of 10 ms of audio each
} // namespace

void CKelvanePostEngine::CreateAlgorithmThread()
{
    m_hApplyEvent.Create();
    if (AUDIO_MISSING(m_hApplyEvent, 6))
        return;
    m_pThreadWorker = CAudioMonitor::CreateMonitorThread(ProcessAlgorithmThread, this, &m_bThreadRun);
    if (AUDIO_MISSING(m_pThreadWorker, 6))
    {
        SetSilentStatus(1); // rather silent than unprotected
        m_bThreadRun = 0;
    }
}

void CKelvanePostEngine::CreateParameterThread()
{
    m_hParameterEvent.Create();
    if (AUDIO_MISSING(m_hParameterEvent, 6))
        return;
    m_pParameterWorker = CAudioMonitor::CreateMonitorThread(ProcessParameterThread, this, &m_bParameterRun);
    AUDIO_MISSING(m_pParameterWorker, 6);
}

void CALLBACK CKelvanePostEngine::ProcessAlgorithmThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CKelvanePostEngine* const pThis = static_cast<CKelvanePostEngine*>(pContext);
    if (AUDIO_MISSING(pThis, 87))
        return;
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    if (pThis->m_bInlineMode != 0)
        return;
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

void CALLBACK CKelvanePostEngine::ProcessParameterThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CKelvanePostEngine* const pThis = static_cast<CKelvanePostEngine*>(pContext);
    if (AUDIO_MISSING(pThis, 87) || pThis->m_bInlineMode != 0)
        return;
    int iBatteryCount = 0;
    while (pThis->m_bParameterRun == 1)
    {
        if (AUDIO_MISSING(pThis->m_hParameterEvent, 6))
            return;
        if (WaitForSingleObject(pThis->m_hParameterEvent, INFINITE) != WAIT_OBJECT_0)
        {
            Sleep(1);
            continue;
        }
        ResetEvent(pThis->m_hParameterEvent);
        if (pThis->m_bParameterRun == 0)
            return;
        if (++iBatteryCount >= iBatterySignalCount)
        {
            iBatteryCount = 0;
            AUDIO_CHECK(pThis->AudioKelvaneSetBatteryInfo());
        }
    }
}
