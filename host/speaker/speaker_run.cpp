// Simulated speakers around a run.
#include "host/speaker/speaker_run.h"

#include "host/host_error.h"
#include "host/machine/host_machine.h"
#include "host/report/diagnosis.h"
#include "host/speaker/speaker_tuning.h"
#include "platform/hostpath.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace
{

constexpr int TUNING_LOOKS = 100; // into the log, before it counts as silent
constexpr int TUNING_PAUSE_MS = 10;

// The tuning that the module took, which its log tells once the stream is there; a log takes a moment.
TuningGiven WaitForTuning(const PlayOptions& oOptions, std::filesystem::file_time_type tSince)
{
    TuningGiven oGiven;
    for (int i = 0; i < TUNING_LOOKS && (oGiven.strFile.empty() || oGiven.strSet.empty()); ++i)
    {
        if (i > 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(TUNING_PAUSE_MS));
        oGiven = FindTuningGiven(tSince);
    }
    if (!oOptions.strTuning.empty())
        oGiven.strFile = oOptions.strTuning;
    else if (!oGiven.strFile.empty())
        oGiven.strFile = HostPath(oGiven.strFile);
    else
        throw CHostError("the module's log doesn't tell which tuning file it took (Debug\\DebugLevel 1 to 3 makes it); "
                         "name it with --tuning");
    return oGiven;
}

SpeakerSetup FindSetup(PlayResult& oResult, std::filesystem::file_time_type tSince)
{
    const TuningGiven oGiven = WaitForTuning(oResult.oOptions, tSince);
    return SetupFromTuning(oGiven.strFile, oGiven.strSet, oResult.oOptions, oResult.oSpeaker.emplace());
}

} // namespace

CSpeakerRun::CSpeakerRun(PlayResult& oResult, int64_t i64BlockFrames, std::filesystem::file_time_type tSince)
    : m_oResult(oResult), m_oSetup(FindSetup(oResult, tSince)), m_oWatch(m_oSetup)
{
    const PlayOptions& oOptions = oResult.oOptions;
    if (!oOptions.strTrace.empty())
    {
        m_pTrace = &m_oWatch.StartTrace(oOptions.iPeriodFrames, i64BlockFrames);
        m_oFile.emplace(oOptions.strTrace, oOptions.iRate, oOptions.iChannels, m_oWatch.Looks());
    }
    host::SetFollowed("magnet", m_oWatch.MagnetC());
}

void CSpeakerRun::EndBlock()
{
    if (!m_oFile)
        return;
    m_pTrace->TakeRows(m_vecRows);
    m_oFile->Write(m_vecRows);
}

void CSpeakerRun::Finish()
{
    m_oResult.oSpeaker->oFigures = m_oWatch.Finish();
    EndBlock();
    const int64_t i64Played = m_oResult.i64Periods * m_oResult.oOptions.iPeriodFrames;
    if (!m_oResult.bStopped)
        m_oResult.oSpeaker->oConstant =
            FindConstantGain(m_oSetup, m_oResult.oOptions, std::min(i64Played, m_oResult.i64InputFrames));
}

void CSpeakerRun::WriteTrace()
{
    if (m_oFile)
        m_oFile->Finish(m_oResult.oLog.vecSets);
}
