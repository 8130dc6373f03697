// What a person asks of one `apohost play`.
#pragma once

#include <string>
#include <vector>

struct PlayOptions
{
    std::string strInput;
    std::string strOutput;            // empty: nothing is written
    bool bInlineVariant = false;      // OMFX instead of EFX
    int iPeriodFrames = 0;            // sample frames per call; 0: 10 ms
    int iRate = 0;                    // Hz; 0: the file's, 48000 for raw floats
    int iChannels = 0;                // 0: the file's, 2 for raw floats
    bool bInPlace = false;            // one buffer on both sides
    bool bRealtime = false;           // paced by the clock
    std::vector<std::string> vecSets; // KEY\VALUE=DATA, set before the start
    std::string strReport;            // JSON file; empty: none
};
