// The simulated speakers beside a stream: what would have become of them without the module, and what became of them.
#pragma once

#include "host/report/period_evidence.h"
#include "host/speaker/speaker_trace.h"
#include "speaker/constant_gain.h"
#include "speaker/speaker_monitor.h"

#include <optional>
#include <string>
#include <vector>

// What a run with simulated speakers is told by.
struct SpeakerComparison
{
    std::string strTuning; // file that describes the speakers
    std::string strSet;    // key of the set
    bool bAlike = true;    // all of one kind
    SpeakerFigures oFigures;
    std::optional<ConstantGain> oConstant; // without: the run was stopped

    // The figures by channel; of speakers of one kind the worst of all as one.
    std::vector<SpeakerChannel> Shown() const;
};

class CSpeakerWatch
{
public:
    // Throws CHostError for a stream or speaker that can't be simulated.
    explicit CSpeakerWatch(const SpeakerSetup& oSetup);
    // From now on rows are written down, for each kind of speakers or for each channel; before the first period.
    // i64BlockFrames: what comes between two looks at the trace, at most.
    CSpeakerTrace& StartTrace(int iPeriodFrames, int64_t i64BlockFrames);

    // A period on its way in, and out, interleaved; ePath is what became of it. The processing loop's thread; no heap.
    void TakeIn(const float* pf32Frames, size_t uFrames);
    void TakeOut(const float* pf32Frames, size_t uFrames, PeriodPath ePath);

    // The hottest magnet behind the module.
    double MagnetC() const;

    // Nothing more will come.
    SpeakerFigures Finish();
    // How many looks a row of the trace has: one for all channels, or one for each.
    int Looks() const { return m_bAlike ? 1 : m_iChannels; }

private:
    SpeakerLook Look(const CSpeakerSet& oSet, int iFirst, int iCount) const;
    TraceBin See(const CSpeakerSet& oSet, const float* pf32Frames, size_t uFrames) const;

    const int m_iRate;
    const int m_iChannels;
    const bool m_bAlike;
    CSpeakerMonitor m_oMonitor;
    std::optional<CSpeakerTrace> m_oTrace;
    int64_t m_i64In = 0; // frames so far
    int64_t m_i64Out = 0;
};
