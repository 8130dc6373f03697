// The periodic jobs and the slow clock that they run by: ticks of 10 ms of audio, counted by two workers or inline.
#pragma once

#include "apo/base/apo_base_stream.h"
#include "apo/kelvane/engine/apo_kelvane_apply_times.h"
#include "apo/kelvane/engine/apo_kelvane_power.h"
#include "apo/kelvane/engine/apo_kelvane_state_report.h"
#include "apo/kelvane/engine/apo_kelvane_temperature.h"
#include "apo/kelvane/engine/apo_kelvane_tick_thread.h"

#include <windows.h>

class CKelvaneJobs
{
public:
    CKelvaneJobs(const CBaseStream& oStream, CKelvaneInstance& oInstance, CKelvaneApplyTimes& oTimes,
                 CKelvaneTemperature& oTemperature, CKelvanePower& oPower, CKelvaneStateReport& oReport)
        : m_oStream(oStream),
          m_oInstance(oInstance),
          m_oTimes(oTimes),
          m_oTemperature(oTemperature),
          m_oPower(oPower),
          m_oReport(oReport)
    {
    }

    // Counts a frame; every second one is a tick. On the thread that runs the algorithm.
    void CountFrame();
    // A tick: 10 ms of audio. Inline mode runs the jobs at once.
    void ParameterRelease();

    // A worker that can't be had is logged; the engine runs without it.
    void CreateTemperatureThread();
    void CreateParameterThread();
    // EndRun has the workers leave, Stop waits until they have left.
    void EndRun();
    void Stop();
    void Reset() { m_iReleaseCount = 0; }

private:
    friend class CEngineInside;
    enum class JobThread
    {
        Processing,
        Temperature,
        Parameter
    };
    struct PeriodicJob;
    static const PeriodicJob PERIODIC_JOBS[];
    static constexpr bool DivideTheRound();

    // pContext is this object.
    template <JobThread eThread> static void CALLBACK ProcessThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
    {
        FollowTicks(static_cast<CKelvaneJobs*>(pContext), eThread);
    }
    static constexpr PTP_WORK_CALLBACK ProcessTemperatureThread = ProcessThread<JobThread::Temperature>;
    static constexpr PTP_WORK_CALLBACK ProcessParameterThread = ProcessThread<JobThread::Parameter>;
    static void FollowTicks(CKelvaneJobs* pThis, JobThread eThread);
    void RunJobs(int iTick, JobThread eThread, const AudioLogSite& oSite);

    // m_hTemperatureEvent, m_bTemperatureRun and m_pTemperatureWorker of one, m_hParameterEvent, m_bParameterRun and
    // m_pParameterWorker of the other, in the words of the log.
    static constexpr CKelvaneTickNames TEMPERATURE_NAMES = {"m_hTemperatureEvent", "m_pTemperatureWorker",
                                                            "pThis->m_hTemperatureEvent"};
    static constexpr CKelvaneTickNames PARAMETER_NAMES = {"m_hParameterEvent", "m_pParameterWorker",
                                                          "pThis->m_hParameterEvent"};

    const CBaseStream& m_oStream;
    CKelvaneInstance& m_oInstance;
    CKelvaneApplyTimes& m_oTimes;
    CKelvaneTemperature& m_oTemperature;
    CKelvanePower& m_oPower;
    CKelvaneStateReport& m_oReport;
    CKelvaneTickThread m_oTemperatureThread{TEMPERATURE_NAMES};
    CKelvaneTickThread m_oParameterThread{PARAMETER_NAMES};
    int m_iReleaseCount = 0; // frames since its last reset
};
