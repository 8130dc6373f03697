// Registry values that change while a stream plays, every so many seconds of audio.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// Seconds, and KEY\VALUE=A,B,...
using RegistryCycle = std::pair<double, std::string>;

class CRegistrySchedule
{
public:
    // Throws CHostError for what can't be set. iRate in Hz.
    CRegistrySchedule(const std::vector<RegistryCycle>& vecCycles, int iRate);

    // Sets what is due before the audio frame i64Frame: the first data at the end of the first interval, then the next,
    // and after the last the first again. Gives whether anything was set. Throws CHostError.
    bool SetDue(int64_t i64Frame);

private:
    struct Cycle
    {
        double f64Interval = 0; // frames
        int64_t i64Done = 0;    // changes
        std::string strPlace;   // KEY\VALUE
        std::vector<std::string> vecData;
    };
    std::vector<Cycle> m_vecCycles;
};
