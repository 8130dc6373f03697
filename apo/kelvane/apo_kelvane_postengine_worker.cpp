// The engine's workers: one runs the algorithm on queued frames, two do periodic work by counting 10 ms of audio.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"

#include <string>

namespace
{
constexpr DWORD dwApplyWait = 10; // milliseconds, then the run flag is looked at

// In signals of 10 ms of audio each.
constexpr int iReportSignalCount = 500;
constexpr int iSampleSignalCount = 1000;
constexpr int iPrintSignalCount = 100;
constexpr int iBatterySignalCount = 10;

struct TemperatureWork
{
    int iReportCount = 0;
    int iSampleCount = 0;
};

// One signal's work. Memory that runs out costs that job's round.
void CountTemperatureSignal(CKelvanePostEngine* pThis, TemperatureWork& oWork)
try
{
    ++oWork.iReportCount;
    ++oWork.iSampleCount;
    if (oWork.iReportCount >= iReportSignalCount)
    {
        oWork.iReportCount = 0;
        AUDIO_CHECK(pThis->AudioSmartSetECTemperature());
    }
    if (oWork.iSampleCount >= iSampleSignalCount)
    {
        oWork.iSampleCount = 0;
        AUDIO_CHECK(pThis->AudioKelvaneSetAlgoTemperature());
        AUDIO_CHECK(pThis->AudioKelvanePrintTemperature());
    }
}
catch (...)
{
}

// What the parameter worker keeps from signal to signal.
struct ParameterWork
{
    std::string strText; // of the states since the last line
    int iPrintCount = 0;
    int iBatteryCount = 0;
};

// One signal's work. Memory that runs out costs that line.
void CountParameterSignal(CKelvanePostEngine* pThis, ParameterWork& oWork)
try
{
    ++oWork.iPrintCount;
    ++oWork.iBatteryCount;
    oWork.strText += pThis->AudioSmartPrintPara();
    if (oWork.iPrintCount >= iPrintSignalCount)
    {
        oWork.iPrintCount = 0;
        CKelvaneManager::Instance()->PrintSmartDebugLog(AUDIO_PARAMETERS_FILE, oWork.strText.c_str(),
                                                        pThis->m_bInlineMode);
        oWork.strText.clear();
    }
    if (oWork.iBatteryCount >= iBatterySignalCount)
    {
        oWork.iBatteryCount = 0;
        AUDIO_CHECK(pThis->AudioKelvaneSetBatteryInfo());
    }
}
catch (...)
{
    oWork.strText.clear();
}

// Waits for the next 10 ms of audio. False when the wait failed.
bool WaitForSignal(HANDLE hEvent)
{
    if (WaitForSingleObject(hEvent, INFINITE) != WAIT_OBJECT_0)
    {
        Sleep(1);
        return false;
    }
    ResetEvent(hEvent);
    return true;
}
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

void CKelvanePostEngine::CreateTemperatureThread()
{
    m_hTemperatureEvent.Create();
    if (AUDIO_MISSING(m_hTemperatureEvent, 6))
        return;
    m_pTemperatureWorker = CAudioMonitor::CreateMonitorThread(ProcessTemperatureThread, this, &m_bTemperatureRun);
    AUDIO_MISSING(m_pTemperatureWorker, 6);
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

void CALLBACK CKelvanePostEngine::ProcessTemperatureThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CKelvanePostEngine* const pThis = static_cast<CKelvanePostEngine*>(pContext);
    if (AUDIO_MISSING(pThis, 87) || pThis->m_bInlineMode != 0)
        return;
    TemperatureWork oWork;
    while (pThis->m_bTemperatureRun == 1)
    {
        if (AUDIO_MISSING(pThis->m_hTemperatureEvent, 6))
            return;
        if (!WaitForSignal(pThis->m_hTemperatureEvent))
            continue;
        if (pThis->m_bTemperatureRun == 0)
            return;
        CountTemperatureSignal(pThis, oWork);
    }
}

void CALLBACK CKelvanePostEngine::ProcessParameterThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CKelvanePostEngine* const pThis = static_cast<CKelvanePostEngine*>(pContext);
    if (AUDIO_MISSING(pThis, 87) || pThis->m_bInlineMode != 0)
        return;
    ParameterWork oWork;
    while (pThis->m_bParameterRun == 1)
    {
        if (AUDIO_MISSING(pThis->m_hParameterEvent, 6))
            return;
        if (!WaitForSignal(pThis->m_hParameterEvent))
            continue;
        if (pThis->m_bParameterRun == 0)
            return;
        CountParameterSignal(pThis, oWork);
    }
}
