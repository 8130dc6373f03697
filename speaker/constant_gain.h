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
    int iRuns = 0;        // how often the programme was played

    // 0 or more; infinite without any gain.
    double LostDb() const;
};

// What is found was itself played and held both limits on every channel; unless it's 1, a gain at most 0.01 dB larger
// was played too and didn't. Plays the programme some three times, each from the setup's start, for heat isn't linear.
SpeakerResult FindConstantGain(const SpeakerSetup& oSetup, const SpeakerProgramme& oProgramme, ConstantGain& oFound);
