// The simulated speakers beside a stream: what would have become of them without the module, and what became of them.
#pragma once

#include "host/period_evidence.h"
#include "host/speaker/speaker_trace.h"
#include "speaker/constant_gain.h"
#include "speaker/speaker_monitor.h"

#include <optional>

// What a run with simulated speakers is told by.
struct SpeakerComparison
{
    std::string strTuning; // file that describes the speaker
    std::string strSet;    // key of the set
    SpeakerFigures oFigures;
    std::optional<ConstantGain> oConstant; // without: the run was stopped
};

class CSpeakerWatch
{
public:
    // i64Frames: what will come at most. Throws CHostError for a stream or speaker that can't be simulated.
    CSpeakerWatch(const SpeakerSetup& oSetup, int64_t i64Frames, bool bTrace);

    // A period on its way in, and out, interleaved; ePath is what became of it. The processing loop's thread; no heap.
    void TakeIn(const float* pf32Frames, size_t uFrames) { Take(StreamSide::In, pf32Frames, uFrames); }
    void TakeOut(const float* pf32Frames, size_t uFrames, PeriodPath ePath);

    // The hottest magnet behind the module.
    double MagnetC() const;

    // Nothing more will come.
    SpeakerFigures Finish();
    const std::optional<CSpeakerTrace>& Trace() const { return m_oTrace; }

private:
    void Take(StreamSide eSide, const float* pf32Frames, size_t uFrames);
    TraceBin Look(const CSpeakerSet& oSet) const;

    int m_iChannels;
    CSpeakerMonitor m_oMonitor;
    std::optional<CSpeakerTrace> m_oTrace;
    int64_t m_i64Frames[2] = {}; // so far, of each side
};
