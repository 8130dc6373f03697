// Bisection, with each middle put where a linear cone and a square heat would have it.
#include "speaker/constant_gain.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace
{
constexpr double SMALLEST_GAIN = 1e-3;
constexpr double CLOSE = 1.00115; // 0.01 dB
constexpr int MAX_RUNS = 60;

// By which further factor a run's gain would just hold a channel's limits: displacement goes with it, heat with its
// square.
double CalcMargin(const SpeakerSetup& oSetup, const SpeakerType& oType, const SpeakerExtremes& oSeen)
{
    const double f64AmbientC = oType.oParams.f64AmbientC;
    const double f64StartC =
        oSetup.oStart ? std::max({f64AmbientC, oSetup.oStart->f64CoilC, oSetup.oStart->f64MagnetC}) : f64AmbientC;
    double f64Margin = std::numeric_limits<double>::infinity();
    if (oSeen.f64PeakDisplacementMm > 0.0)
        f64Margin = oType.oLimits.f64DisplacementMm / oSeen.f64PeakDisplacementMm;
    const double f64RiseK = oSeen.f64HottestCoilC - f64StartC;
    if (f64RiseK > 0.0)
        f64Margin = std::min(f64Margin, std::sqrt(std::max(oType.oLimits.f64CoilC - f64StartC, 0.0) / f64RiseK));
    return f64Margin;
}

double WorstMargin(const SpeakerSetup& oSetup, const CSpeakerSet& oSet)
{
    double f64Margin = std::numeric_limits<double>::infinity();
    for (int i = 0; i < oSet.Channels(); ++i)
        f64Margin = std::min(f64Margin, CalcMargin(oSetup, oSetup.Type(i), oSet.Extremes(i)));
    return f64Margin;
}

bool Holds(const SpeakerSetup& oSetup, const CSpeakerSet& oSet)
{
    for (int i = 0; i < oSet.Channels(); ++i)
        if (!oSet.Extremes(i).Holds(oSetup.Type(i).oLimits))
            return false;
    return true;
}
} // namespace

double ConstantGain::LostDb() const
{
    return -20.0 * std::log10(f64Gain);
}

SpeakerResult FindConstantGain(const SpeakerSetup& oSetup, const SpeakerProgramme& oProgramme, ConstantGain& oFound)
{
    CSpeakerSet oSet;
    if (SpeakerResult oResult = oSet.Init(oSetup); !oResult)
        return oResult;

    oFound = {}; // the largest that holds
    double f64Breaks = std::numeric_limits<double>::infinity();
    double f64Next = 1.0;
    int iRuns = 0;
    while (iRuns < MAX_RUNS && oFound.f64Gain < 1.0 && f64Breaks > std::max(oFound.f64Gain * CLOSE, SMALLEST_GAIN))
    {
        oSet.Reset();
        oSet.SetGain(f64Next);
        oProgramme([&oSet](const float* pf32Frames, size_t uFrameCount) { oSet.Process(pf32Frames, uFrameCount); });
        oSet.Drain();
        ++iRuns;
        const bool bHolds = Holds(oSetup, oSet);
        (bHolds ? oFound.f64Gain : f64Breaks) = f64Next;

        // Aimed a little to the limit's other side, so that the two close in on it.
        f64Next = std::max(f64Next * WorstMargin(oSetup, oSet) * (bHolds ? 1.0006 : 0.9997), SMALLEST_GAIN);
        if (!(f64Next > oFound.f64Gain && f64Next < f64Breaks))
            f64Next = oFound.f64Gain > 0.0 ? std::sqrt(oFound.f64Gain * f64Breaks) : 0.5 * f64Breaks;
    }
    oFound.iRuns = iRuns;
    return {};
}
