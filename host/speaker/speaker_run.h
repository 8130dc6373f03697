// The simulated speakers' part of a run: found before its first period, traced while it plays, summed up behind it.
#pragma once

#include "host/report/play_result.h"
#include "host/speaker/trace_file.h"

#include <filesystem>

class CSpeakerRun
{
public:
    // With oResult's stream there, whose module has logged since tSince which tuning it took. i64BlockFrames: what
    // comes between two calls of EndBlock, at most. Throws CHostError: no tuning known, no speaker, no file.
    CSpeakerRun(PlayResult& oResult, int64_t i64BlockFrames, std::filesystem::file_time_type tSince);

    CSpeakerWatch& Watch() { return m_oWatch; }
    // Between periods, when there is time: the trace's rows go to their file.
    void EndBlock();
    // Behind the stream's end: what is compared goes to oResult.
    void Finish();
    // When oResult has the module's log.
    void WriteTrace();

private:
    PlayResult& m_oResult;
    const SpeakerSetup m_oSetup;
    CSpeakerWatch m_oWatch;
    CSpeakerTrace* m_pTrace = nullptr; // the watch's
    std::optional<CTraceFile> m_oFile;
    std::vector<TraceRow> m_vecRows;
};
