// Start, tick and stop of a worker on the slow clock.
#include "apo/kelvane/engine/apo_kelvane_tick_thread.h"

#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"

void CKelvaneTickThread::Create(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, const AudioLogSite& oSite)
{
    m_iTicks = 0;
    m_hEvent.Create();
    if (AudioCheckCondition(m_hEvent == nullptr, oSite, AUDIO_NO_HANDLE, m_oNames.pEvent))
        return;
    m_pWorker = CAudioMonitor::CreateMonitorThread(pfnWorker, pContext, &m_bRun);
    AudioCheckCondition(m_pWorker == nullptr, oSite, AUDIO_NO_HANDLE, m_oNames.pWorker);
}

void CKelvaneTickThread::Tick()
{
    ++m_iTicks;
    SetEvent(m_hEvent);
}

void CKelvaneTickThread::Stop()
{
    CAudioMonitor::StopMonitorThread(&m_bRun, m_hEvent, m_pWorker);
}
