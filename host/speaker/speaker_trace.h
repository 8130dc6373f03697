// What happened every 10 ms: levels, coil, cone, parameter set and path, as a table that plotting tools read.
#pragma once

#include "host/period_evidence.h"
#include "host/stream_time.h"

#include <cstdint>
#include <string>
#include <vector>

// One side of the protection over half a millisecond.
struct TraceBin
{
    float f32SquareSum = 0; // of all channels' samples
    float f32DisplacementMm = 0;
    float f32CoilC = 0;
    float f32MagnetC = 0;
};

enum class StreamSide
{
    In,
    Out
};

// Filled while a stream plays; takes no memory then, for it is told the stream's length before.
class CSpeakerTrace
{
public:
    static constexpr int BINS_PER_SECOND = 2000;
    static constexpr int BINS_PER_ROW = 20; // 10 ms

    CSpeakerTrace(int iRate, int iChannels, int64_t i64Frames);

    // What was seen behind a side's frames, and their samples' sum of squares.
    void Add(StreamSide eSide, int64_t i64Frame, const TraceBin& oSeen);
    void AddPeriod(PeriodPath ePath) { m_vecPaths.push_back(ePath); }

    // A line with the columns' names, then a line per row; by the output's time, with the input that it came from
    // beside it. vecSets: keys of parameter sets, from when on.
    std::string Format(int iPeriodFrames, const std::vector<TimedText>& vecSets) const;

private:
    TraceBin Row(StreamSide eSide, int64_t i64FirstBin) const;
    double LevelDb(const TraceBin& oRow) const;

    int m_iRate;
    int m_iChannels;
    std::vector<TraceBin> m_vecBins[2];
    int64_t m_i64FirstSound[2] = {-1, -1}; // frames; what lies between is the way through the module
    std::vector<PeriodPath> m_vecPaths;
};
