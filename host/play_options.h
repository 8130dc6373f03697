// What a person asks of one `apohost play`.
#pragma once

#include "host/registry/registry_schedule.h"

#include <string>
#include <vector>

struct PlayOptions
{
    std::string strInput;
    std::string strOutput;                // empty: nothing is written
    bool bInlineVariant = false;          // OMFX instead of EFX
    int iPeriodFrames = 0;                // sample frames per call; 0: 10 ms
    int iRate = 0;                        // Hz; 0: the file's, 48000 for raw floats
    int iChannels = 0;                    // 0: the file's, 2 for raw floats
    bool bInPlace = false;                // one buffer on both sides
    bool bRealtime = false;               // paced by the clock
    double f64RepeatSeconds = 0;          // the input over and over up to this length; 0: once
    std::vector<std::string> vecSets;     // KEY\VALUE=DATA, set before the start
    std::vector<RegistryCycle> vecCycles; // set while it plays; offline only
    bool bSpeaker = false;                // simulated speakers on both sides
    std::string strTuning;                // the tuning file that describes them; empty: the one that the module took
    double f64AmbientC = 25;              // around them
    std::string strTrace;                 // CSV file; empty: none
    std::string strReport;                // JSON file; empty: none
};
