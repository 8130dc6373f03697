// The speakers that a tuning file describes, for the simulation.
#pragma once

#include "host/play_options.h"
#include "host/speaker/speaker_watch.h"

// One for each channel, of the set of that key, or of the first one without a key; the set's file and key go into
// oComparison. Throws CHostError: file, no such set, a set that describes no speaker.
SpeakerSetup SetupFromTuning(const std::string& strFile, const std::string& strKey, const PlayOptions& oOptions,
                             SpeakerComparison& oComparison);

// What the largest constant gain would have lost on the first i64Frames of the input.
ConstantGain FindConstantGain(const SpeakerSetup& oSetup, const PlayOptions& oOptions, int64_t i64Frames);
