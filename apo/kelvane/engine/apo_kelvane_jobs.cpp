// The table of the periodic jobs, and who runs them.
#include "apo/kelvane/engine/apo_kelvane_jobs.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

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
struct CKelvaneJobs::PeriodicJob
{
    JobThread eWorker; // that has it, where there are workers
    double f64WorkerSeconds;
    double f64InlineSeconds;
    int (*pfnRun)(CKelvaneJobs& oJobs);
    const char* pWorkerText; // of its failure
    const char* pInlineText;
};

#define PERIODIC_JOB(eWorker, f64WorkerSeconds, f64InlineSeconds, operation, part, argument)                           \
    {                                                                                                                  \
        eWorker, f64WorkerSeconds, f64InlineSeconds,                                                                   \
            [](CKelvaneJobs& oJobs) -> int { return oJobs.part.operation(argument); }, "pThis->" #operation "()",      \
            "this->" #operation "()"                                                                                   \
    }

// In the order of their runs at one tick: worker that has it, its seconds there and in the inline variant.
constexpr CKelvaneJobs::PeriodicJob CKelvaneJobs::PERIODIC_JOBS[] = {
    PERIODIC_JOB(JobThread::Parameter, 0.01, 1, AudioSmartGatherPara, m_oReport, ),
    PERIODIC_JOB(JobThread::Parameter, 1, 1, AudioSmartRecordPara, m_oReport, oJobs.m_oStream.m_bInlineMode),
    PERIODIC_JOB(JobThread::Parameter, 0.1, 1, AudioKelvaneSetBatteryInfo, m_oPower, oJobs.m_oInstance),
    PERIODIC_JOB(JobThread::Temperature, 5, 5, AudioSmartSetECTemperature, m_oTemperature, ),
    PERIODIC_JOB(JobThread::Temperature, 10, 10, AudioKelvaneSetAlgoTemperature, m_oTemperature, ),
    PERIODIC_JOB(JobThread::Temperature, 10, 10, AudioKelvanePrintTemperature, m_oTemperature,
                 oJobs.m_oStream.m_bInlineMode),
};

constexpr bool CKelvaneJobs::DivideTheRound()
{
    for (const PeriodicJob& oJob : PERIODIC_JOBS)
        for (const double f64Seconds : {oJob.f64WorkerSeconds, oJob.f64InlineSeconds})
            if (TicksOf(f64Seconds) <= 0 || iRoundTicks % TicksOf(f64Seconds) != 0)
                return false;
    return true;
}

void CKelvaneJobs::CountFrame()
{
    static_assert(DivideTheRound(), "a job whose time doesn't would run late once a round, or never");
    m_iReleaseCount = m_iReleaseCount + 1;
    if (m_iReleaseCount % iFramesPerTick != 0)
        return;
    m_oTimes.EndGap();
    ParameterRelease();
}

void CKelvaneJobs::ParameterRelease()
{
    if (m_oStream.m_bInlineMode == 0)
    {
        m_iReleaseCount = 0;
        m_oTemperatureThread.Tick();
        m_oParameterThread.Tick();
        return;
    }
    const int iTick = m_iReleaseCount / iFramesPerTick;
    if (iTick == iRoundTicks)
        m_iReleaseCount = 0;
    RunJobs(iTick, JobThread::Processing, AUDIO_LOG_SITE);
}

// Runs the thread's jobs that are due at this tick of the round. Memory that runs out costs the run of that job.
void CKelvaneJobs::RunJobs(int iTick, JobThread eThread, const AudioLogSite& oSite)
{
    const bool bInline = eThread == JobThread::Processing;
    for (const PeriodicJob& oJob : PERIODIC_JOBS)
    {
        if ((!bInline && oJob.eWorker != eThread) ||
            iTick % TicksOf(bInline ? oJob.f64InlineSeconds : oJob.f64WorkerSeconds) != 0)
            continue;
        try
        {
            AudioCheckResult(oJob.pfnRun(*this), oSite, bInline ? oJob.pInlineText : oJob.pWorkerText);
        }
        catch (...)
        {
        }
    }
}

void CKelvaneJobs::FollowTicks(CKelvaneJobs* pThis, JobThread eThread)
{
    const AudioLogSite oSite = AUDIO_LOG_SITE;
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER) || pThis->m_oStream.m_bInlineMode != 0)
        return;
    CKelvaneTickThread& oThread =
        eThread == JobThread::Temperature ? pThis->m_oTemperatureThread : pThis->m_oParameterThread;
    int iTick = 0;
    oThread.Follow(oSite,
                   [&]
                   {
                       iTick = iTick % iRoundTicks + 1;
                       pThis->RunJobs(iTick, eThread, oSite);
                   });
}

void CKelvaneJobs::CreateTemperatureThread()
{
    m_oTemperatureThread.Create(ProcessTemperatureThread, this, AUDIO_LOG_SITE);
}

void CKelvaneJobs::CreateParameterThread()
{
    m_oParameterThread.Create(ProcessParameterThread, this, AUDIO_LOG_SITE);
}

void CKelvaneJobs::EndRun()
{
    m_oTemperatureThread.EndRun();
    m_oParameterThread.EndRun();
}

void CKelvaneJobs::Stop()
{
    m_oTemperatureThread.Stop();
    m_oParameterThread.Stop();
}
