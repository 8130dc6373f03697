// The law of the heat gain.
#include "protection/dsp/heat_stage.h"

#include "protection/dsp/own_math.h"

#include <algorithm>

namespace
{
constexpr double RISE_SEC = 1.0;
constexpr double RISE_DB_PER_SEC = 0.5;
constexpr double SETTLE_K = 1.0;    // what the law stays under the limit
constexpr double LOWEST_DB = -60.0; // and silence, as good as
constexpr double LEAST_W = 1e-6;
} // namespace

void Ambient::Init(const SpeakerValues& oValues, bool bKnown, double f64AmbientC)
{
    const double f64MarginK = oValues[KelvaneParameter::AMBIENT_MARGIN];
    f64HotC = bKnown ? f64AmbientC + f64MarginK : oValues[KelvaneParameter::HOTTEST_AMBIENT];
    f64LikelyC = f64AmbientC;
    f64ColdC = bKnown ? f64AmbientC - f64MarginK : oValues[KelvaneParameter::COLDEST_AMBIENT];
}

void HeatStage::Reset(const Ambient& oAmbient)
{
    oHot.Reset(oAmbient.f64HotC);
    oLikely.Reset(oAmbient.f64LikelyC);
    oCold.Reset(oAmbient.f64ColdC);
    f64MeanW = 0.0;
    f64GainDb = 0.0;
}

// P = i^2 R(T) with i = (u - e)/R(T).
void HeatStage::Heat(const SpeakerConstants& oSpeaker, const Ambient& oAmbient, double f64ResistanceMargin,
                     double f64MeanSquare)
{
    const double f64SquareV = f64MeanSquare * oSpeaker.f64FullScaleV * oSpeaker.f64FullScaleV;
    const auto HeatW = [&](const CoilModel& oModel, double f64Part)
    { return f64SquareV / (oSpeaker.f64ResistanceOhm * f64Part * oSpeaker.ResistanceRatio(oModel.f64CoilC)); };
    const double f64HotW = HeatW(oHot, 1.0 - f64ResistanceMargin);
    oHot.Process(oSpeaker, f64HotW, oAmbient.f64HotC);
    oLikely.Process(oSpeaker, HeatW(oLikely, 1.0), oAmbient.f64LikelyC);
    oCold.Process(oSpeaker, HeatW(oCold, 1.0 + f64ResistanceMargin), oAmbient.f64ColdC);
    f64MeanW += oSpeaker.f64MeanStep * (f64HotW - f64MeanW);
    // What flows off to the magnet, and what brings the coil to its limit within half a time constant.
    f64AllowedW = (oHot.f64CoilC - oHot.f64MagnetC) / oSpeaker.f64CoilKPerW +
                  2.0 * (oSpeaker.f64CoilLimitC - SETTLE_K - oHot.f64CoilC) / oSpeaker.f64CoilKPerW;
}

double HeatStage::Target() const
{
    const double f64Ratio = std::max(f64AllowedW, LEAST_W) / std::max(f64MeanW, LEAST_W);
    return std::clamp(f64GainDb + PowerToDecibel(f64Ratio), LOWEST_DB, 60.0);
}

void HeatStage::Follow(const SpeakerConstants& oSpeaker, double f64TargetDb)
{
    const double f64WayDb = f64TargetDb - f64GainDb;
    if (f64WayDb < 0.0)
        f64GainDb += oSpeaker.f64FallStep * f64WayDb;
    else
        f64GainDb += std::min(BLOCK_SEC / RISE_SEC * f64WayDb, BLOCK_SEC * RISE_DB_PER_SEC);
    f64GainDb = std::min(f64GainDb, 0.0);
}

double HeatStage::Gain() const
{
    return f64GainDb < 0.0 ? FromDecibel(f64GainDb) : 1.0;
}

// Each model by its own idea of the resistance at 25 C. Coil and magnet move together: what was wrong grew slowly.
void HeatStage::Correct(const SpeakerConstants& oSpeaker, double f64ResistanceMargin, double f64ResistanceOhm)
{
    const auto Shift = [&](CoilModel& oModel, double f64Part)
    {
        const double f64Ratio = f64ResistanceOhm / (oSpeaker.f64ResistanceOhm * f64Part);
        const double f64ShiftK = 25.0 + (f64Ratio - 1.0) / oSpeaker.f64RisePerK - oModel.f64CoilC;
        oModel.f64CoilC += f64ShiftK;
        oModel.f64MagnetC += f64ShiftK;
    };
    Shift(oHot, 1.0 - f64ResistanceMargin);
    Shift(oLikely, 1.0);
    Shift(oCold, 1.0 + f64ResistanceMargin);
}
