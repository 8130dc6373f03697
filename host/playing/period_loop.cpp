// The periodic loop.
#include "host/playing/period_loop.h"

#include "host/machine/host_machine.h"
#include "host/machine/interrupt.h"
#include "host/machine/rest.h"
#include "host/playing/progress.h"

#include <algorithm>
#include <thread>

CPeriodLoop::CPeriodLoop(PlayResult& oResult, CApoStream& oStream, CProgress& oProgress, int64_t i64Periods,
                         CSpeakerWatch* pWatch)
    : m_oResult(oResult),
      m_oStream(oStream),
      m_oProgress(oProgress),
      m_pWatch(pWatch),
      m_bRealtime(oResult.oOptions.bRealtime),
      m_iPeriodLen(oStream.DataLen()),
      m_oSchedule(oResult.oOptions.vecCycles, oResult.oOptions.iRate)
{
    m_vecNanoseconds.reserve(static_cast<size_t>(i64Periods));
    if (m_bRealtime)
    {
        SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    }
    else
    {
        // What the lock started comes to rest before the first period. All of it seems to have taken a millisecond.
        WaitUntilIdle();
        host::AdvanceClock(1);
    }
    CheckStop();
    m_oResult.oStreamTime.Start();
}

CPeriodLoop::~CPeriodLoop()
{
    if (m_bRealtime)
        SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_NORMAL);
}

size_t CPeriodLoop::Run(float* pf32Block, size_t iPeriods)
{
    const Clock::time_point tRun = Clock::now();
    if (m_oResult.i64Periods == 0)
    {
        m_tStart = tRun;
        m_oResult.oStreamTime.Start();
    }
    size_t iDone = 0;
    for (; iDone < iPeriods && !m_oResult.bStopped; ++iDone)
    {
        float* pf32Period = pf32Block + iDone * m_iPeriodLen;
        ChangeRegistry();
        m_oStream.Fill(pf32Period);
        WaitForPeriod();
        const Clock::time_point tBegin = Clock::now();
        m_oStream.Process();
        Account(tBegin, Clock::now());
        Collect(pf32Period);
        Settle();
        m_oProgress.Set(++m_oResult.i64Periods);
        CheckStop();
    }
    m_oResult.f64Seconds += std::chrono::duration<double>(Clock::now() - tRun).count();
    return iDone;
}

void CPeriodLoop::Finish()
{
    m_oResult.bBypassAtEnd = m_oStream.ProbeBypass();
    Settle();
    m_oResult.oTimes = SummarizeTimes(m_vecNanoseconds);
    if (m_oResult.oLeadIn.IsOver())
    {
        m_oResult.Path(PeriodPath::Silent) -= m_i64ZerosBeforeSound;
        m_oResult.Path(PeriodPath::Processed) += m_i64ZerosBeforeSound;
    }
}

CPeriodLoop::Clock::time_point CPeriodLoop::StartOf(int64_t i64Period) const
{
    const PlayOptions& oOptions = m_oResult.oOptions;
    return m_tStart + std::chrono::nanoseconds(i64Period * oOptions.iPeriodFrames * 1000000000 / oOptions.iRate);
}

void CPeriodLoop::WaitForPeriod()
{
    if (m_bRealtime)
        std::this_thread::sleep_until(StartOf(m_oResult.i64Periods));
}

// In real time a period is late when its samples are due before they are there, else when the call took longer than
// its audio lasts.
void CPeriodLoop::Account(Clock::time_point tBegin, Clock::time_point tEnd)
{
    const auto i64Nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(tEnd - tBegin).count();
    m_vecNanoseconds.push_back(static_cast<uint32_t>(std::min<int64_t>(i64Nanoseconds, UINT32_MAX)));
    const Clock::time_point tDue = StartOf(m_oResult.i64Periods + 1);
    const bool bLate = m_bRealtime ? tEnd > tDue : tEnd - tBegin > tDue - StartOf(m_oResult.i64Periods);
    m_oResult.i64Late += bLate ? 1 : 0;
}

// The module has taken note of the change before the period.
void CPeriodLoop::ChangeRegistry()
{
    if (m_oSchedule.SetDue(m_oResult.i64Periods * m_oResult.oOptions.iPeriodFrames))
        WaitUntilIdle();
}

// Once it took too long, the samples are anyone's, and the run is over.
void CPeriodLoop::WaitUntilIdle()
{
    if (m_oResult.bSettled)
        m_oResult.bSettled = WaitForRest();
}

void CPeriodLoop::CheckStop()
{
    m_oResult.bStopped = IsInterrupted() || !m_oResult.bSettled;
}

// Offline: lets every thread of the module do what the period gave it to do, and then the audio's time pass, so that
// every run gives the same samples and no work seems to take time.
void CPeriodLoop::Settle()
{
    if (m_bRealtime)
        return;
    WaitUntilIdle();
    const PlayOptions& oOptions = m_oResult.oOptions;
    m_i64ClockRest += static_cast<int64_t>(oOptions.iPeriodFrames) * 1000;
    host::AdvanceClock(m_i64ClockRest / oOptions.iRate);
    m_i64ClockRest %= oOptions.iRate;
}

void CPeriodLoop::Collect(float* pf32Period)
{
    PeriodPath ePath = m_oStream.Judge(pf32Period);
    const bool bSoundIn = !IsAllZero(pf32Period, m_iPeriodLen);
    m_oResult.oInputLevel.Add(pf32Period, m_iPeriodLen);
    const auto uFrames = static_cast<size_t>(m_oResult.oOptions.iPeriodFrames);
    if (m_pWatch != nullptr)
        m_pWatch->TakeIn(pf32Period, uFrames);
    if (ePath == PeriodPath::Underflow || ePath == PeriodPath::Refused || IsSentinel(m_oStream.Output(), m_iPeriodLen))
        std::fill_n(pf32Period, m_iPeriodLen, 0.0f);
    else
        std::copy_n(m_oStream.Output(), m_iPeriodLen, pf32Period);
    const bool bSoundOut = !IsAllZero(pf32Period, m_iPeriodLen);
    m_oResult.oOutputLevel.Add(pf32Period, m_iPeriodLen);
    m_oResult.oLeadIn.Add(bSoundIn, bSoundOut);
    // In place a zeroed input and a lead-in's zeros look alike: sound that follows tells.
    if (m_oResult.oOptions.bInPlace && bSoundIn && !bSoundOut)
    {
        ePath = PeriodPath::Silent;
        m_i64ZerosBeforeSound += m_oResult.oLeadIn.IsOver() ? 0 : 1;
    }
    ++m_oResult.Path(ePath);
    if (m_pWatch != nullptr)
    {
        m_pWatch->TakeOut(pf32Period, uFrames, ePath);
        host::SetFollowed("magnet", m_pWatch->MagnetC());
    }
}
