// The table that a trace is written to, which plotting tools read.
#pragma once

#include "host/machine/stream_time.h"
#include "host/speaker/speaker_trace.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// Rows go to FILE.part as they come, for the parameter sets are known only when the module is down; Finish makes the
// table of them. Throws CHostError for files that can't be written.
class CTraceFile
{
public:
    // iChannels: of the stream. iLooks: one for all channels, or one for each.
    CTraceFile(const std::string& strPath, int iRate, int iChannels, int iLooks);
    CTraceFile(const CTraceFile&) = delete;
    CTraceFile& operator=(const CTraceFile&) = delete;
    ~CTraceFile();

    void Write(const std::vector<TraceRow>& vecRows);
    // A line with the columns' names, then a line per row. vecSets: keys of parameter sets, in order, and from when on.
    void Finish(const std::vector<TimedText>& vecSets);

private:
    std::string FormatHead() const;
    std::string FormatRow(const TraceRow& oRow, double f64Seconds) const;
    double LevelDb(const TraceBin& oBin) const;
    [[noreturn]] void Fail() const;

    const std::string m_strPath;
    const std::string m_strPart;
    const double m_f64RowSamples; // of all channels
    const int m_iLooks;
    std::unique_ptr<FILE, int (*)(FILE*)> m_pPart;
};
