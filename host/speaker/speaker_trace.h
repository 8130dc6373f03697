// What happened every 10 ms on both sides of the module: levels, coils, cones, path.
#pragma once

#include "host/report/period_evidence.h"

#include <array>
#include <cstdint>
#include <vector>

// What was seen of speakers: the furthest cone, the hottest coil and magnet.
struct SpeakerLook
{
    float f32DisplacementMm = 0;
    float f32CoilC = 0;
    float f32MagnetC = 0;
};

// One side over a stretch of time.
struct TraceBin
{
    float f32SquareSum = 0; // of all channels' samples
    std::array<SpeakerLook, 8> oLooks{};
};

// By the output's time; beside it the input that it came from.
struct TraceRow
{
    TraceBin oIn;
    TraceBin oOut;
    PeriodPath ePath = PeriodPath::Processed;
};

// Takes both sides while a stream plays, the input of a period before its output. How far the input is ahead is known
// once its first sound has come out; until then rows wait. Its memory goes with the period and what is left in it
// between two calls of TakeRows, not with the stream's length.
class CSpeakerTrace
{
public:
    static constexpr int ROWS_PER_SECOND = 100;

    // i64BlockFrames: frames between two calls of TakeRows, at most; then no heap is taken meanwhile.
    CSpeakerTrace(int iRate, int iPeriodFrames, int64_t i64BlockFrames);

    // What was seen behind frames that begin at i64Frame, and their samples' sum of squares.
    void AddIn(int64_t i64Frame, const TraceBin& oSeen);
    void AddOut(int64_t i64Frame, const TraceBin& oSeen, PeriodPath ePath);
    // Nothing more will come: the last row may be a part of one, and none waits.
    void Finish();

    // Replaces vecRows by the rows that are ready, in order, and forgets them.
    void TakeRows(std::vector<TraceRow>& vecRows);

private:
    int64_t BinOf(int64_t i64Frame) const;
    void FindDelay(int64_t i64OutFrame);
    void EndRow();
    void Release();
    void AddInput(TraceRow& oRow, int64_t i64FirstBin) const;

    const int m_iRate;
    const int64_t m_i64LongestDelay; // frames; a module that is silent for longer has no delay that could be told
    std::vector<TraceBin> m_vecIn;   // half a millisecond each, the last ones, at their number's rest
    TraceBin m_oRest;                // before any sound
    int64_t m_i64LastIn = -1;        // bin
    int64_t m_i64FirstSoundIn = -1;  // frame
    int64_t m_i64FirstSoundOut = -1; // frame
    int64_t m_i64Delay = -1;         // bins; -1: not known yet
    int64_t m_i64Row = -1;           // that the output is in
    TraceRow m_oRow;
    std::vector<TraceRow> m_vecRows; // ended ones
    size_t m_uReady = 0;             // of them
    int64_t m_i64Released = 0;       // rows since the start
};
