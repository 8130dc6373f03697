// The periodic jobs and the slow clock that they run by: ticks of 10 ms of audio, counted by two workers or inline.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <string>
#include <utility>

namespace
{
constexpr int iFramesPerTick = 2;

constexpr int TicksOf(double f64Seconds)
{
    return static_cast<int>(f64Seconds * 100 + 0.5);
}
constexpr int iRoundTicks = TicksOf(10); // the count starts over; every job's time divides it
} // namespace

// A job, and the seconds of audio between two of its runs.
struct CKelvanePostEngine::PeriodicJob
{
    JobThread eWorker; // that has it, where there are workers
    double f64WorkerSeconds;
    double f64InlineSeconds;
    int (CKelvanePostEngine::*pfnRun)();
    const char* pWorkerText; // of its failure
    const char* pInlineText;
};

#define PERIODIC_JOB(eWorker, f64WorkerSeconds, f64InlineSeconds, operation)                                           \
    {                                                                                                                  \
        eWorker, f64WorkerSeconds, f64InlineSeconds, &CKelvanePostEngine::operation, "pThis->" #operation "()",        \
            "this->" #operation "()"                                                                                   \
    }

// In the order of their runs at one tick.
const CKelvanePostEngine::PeriodicJob CKelvanePostEngine::PERIODIC_JOBS[] = {
    PERIODIC_JOB(JobThread::Parameter, 0.01, 1, AudioSmartGatherPara),
    PERIODIC_JOB(JobThread::Parameter, 1, 1, AudioSmartRecordPara),
    PERIODIC_JOB(JobThread::Parameter, 0.1, 1, AudioKelvaneSetBatteryInfo),
    PERIODIC_JOB(JobThread::Temperature, 5, 5, AudioSmartSetECTemperature),
    PERIODIC_JOB(JobThread::Temperature, 10, 10, AudioKelvaneSetAlgoTemperature),
    PERIODIC_JOB(JobThread::Temperature, 10, 10, AudioKelvanePrintTemperature),
};

void CKelvanePostEngine::ParameterRelease()
{
    m_i64GapTime = 0;
    if (m_oStream.m_bInlineMode == 0)
    {
        m_iReleaseCount = 0;
        ++m_iTemperatureTicks;
        ++m_iParameterTicks;
        SetEvent(m_hTemperatureEvent);
        SetEvent(m_hParameterEvent);
        return;
    }
    const int iTick = m_iReleaseCount / iFramesPerTick;
    if (iTick == iRoundTicks)
        m_iReleaseCount = 0;
    RunJobs(iTick, JobThread::Processing, AUDIO_LOG_SITE);
}

// Runs the thread's jobs that are due at this tick of the round. Memory that runs out costs the run of that job.
void CKelvanePostEngine::RunJobs(int iTick, JobThread eThread, const AudioLogSite& oSite)
{
    const bool bInline = eThread == JobThread::Processing;
    for (const PeriodicJob& oJob : PERIODIC_JOBS)
    {
        if ((!bInline && oJob.eWorker != eThread) ||
            iTick % TicksOf(bInline ? oJob.f64InlineSeconds : oJob.f64WorkerSeconds) != 0)
            continue;
        try
        {
            AudioCheckResult((this->*oJob.pfnRun)(), oSite, bInline ? oJob.pInlineText : oJob.pWorkerText);
        }
        catch (...)
        {
        }
    }
}

// What a worker does until it is stopped: counts every tick, however many came before it woke, and runs its jobs.
void CKelvanePostEngine::FollowTicks(JobThread eThread, const CAudioFlag& bRun, const CAudioWorkerEvent& hEvent,
                                     std::atomic<int>& iTicks, const AudioLogSite& oSite, const char* pEventText)
{
    int iTick = 0;
    while (bRun == 1)
    {
        if (AudioCheckCondition(hEvent == nullptr, oSite, AUDIO_NO_HANDLE, pEventText))
            return;
        if (WaitForSingleObject(hEvent, INFINITE) != WAIT_OBJECT_0)
        {
            Sleep(1);
            continue;
        }
        // Before the ticks are taken, so that the next one wakes the worker again.
        ResetEvent(hEvent);
        for (int i = iTicks.exchange(0); i > 0 && bRun == 1; --i)
        {
            iTick = iTick % iRoundTicks + 1;
            RunJobs(iTick, eThread, oSite);
        }
    }
}

void CALLBACK CKelvanePostEngine::ProcessTemperatureThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CKelvanePostEngine* const pThis = static_cast<CKelvanePostEngine*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER) || pThis->m_oStream.m_bInlineMode != 0)
        return;
    pThis->FollowTicks(JobThread::Temperature, pThis->m_bTemperatureRun, pThis->m_hTemperatureEvent,
                       pThis->m_iTemperatureTicks, AUDIO_LOG_SITE, "pThis->m_hTemperatureEvent");
}

void CALLBACK CKelvanePostEngine::ProcessParameterThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    CKelvanePostEngine* const pThis = static_cast<CKelvanePostEngine*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER) || pThis->m_oStream.m_bInlineMode != 0)
        return;
    pThis->FollowTicks(JobThread::Parameter, pThis->m_bParameterRun, pThis->m_hParameterEvent, pThis->m_iParameterTicks,
                       AUDIO_LOG_SITE, "pThis->m_hParameterEvent");
}

int CKelvanePostEngine::AudioSmartGatherPara()
{
    m_strStates += AudioSmartPrintPara();
    return 0;
}

int CKelvanePostEngine::AudioSmartRecordPara()
{
    const std::string strStates = std::exchange(m_strStates, {});
    CKelvaneManager::Instance()->PrintSmartDebugLog(AUDIO_PARAMETERS_FILE, strStates.c_str(), m_oStream.m_bInlineMode);
    return 0;
}
