// What a plain volume knob would have to give away: the largest constant gain under which a programme destroys nothing.
#pragma once

#include "speaker/speaker_set.h"

#include <functional>

// Plays the whole programme, from its start to its end, into what it's given: interleaved frames and their count.
using SpeakerSink = std::function<void(const float* pf32Frames, size_t uFrameCount)>;
using SpeakerProgramme = std::function<void(const SpeakerSink& oSink)>;

struct ConstantGain
{
    double f64Gain = 0.0; // at most 1; 0 if 1/1000 is too much already
    // Of the run at this gain.
    double f64PeakDisplacementMm = 0.0;
    double f64HottestCoilC = 0.0;
    int iRuns = 0; // how often the programme was played

    // 0 or more; infinite without any gain.
    double LostDb() const;
};

// The gain is played, and both limits held, on every channel; 0.01 dB more, or less than that, was played too, and one
// wasn't (unless the gain is 1). Plays the programme some three times from the same start, for heat isn't linear.
SpeakerResult FindConstantGain(const SpeakerSetup& oSetup, const SpeakerProgramme& oProgramme, ConstantGain& oFound);
