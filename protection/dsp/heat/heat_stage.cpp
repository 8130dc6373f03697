// The law of the heat gain.
#include "protection/dsp/heat/heat_stage.h"

#include "protection/dsp/base/own_math.h"

#include <algorithm>

namespace
{
constexpr double RISE_SEC = 1.0;
constexpr double RISE_DB_PER_SEC = 0.5;
constexpr double SILENT_RISE_DB_PER_SEC = 3.9;
constexpr double FALL_DB_PER_SEC = 3.9;
constexpr double RECOVER_DB = 2.0; // that the slow fall mends in time, with a coil of 1 s
constexpr double HOLD_SEC = 30.0;  // of the loudest
constexpr double AS_LOUD = 0.8;
constexpr double SETTLE_K = 1.5;    // what the law stays under the limit
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
    f64MeanW = f64LoudestW = f64GainDb = 0.0;
    f64Gain = 1.0;
    iLoudestBlocks = 0;
    bFreeFall = false;
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
    f64SteadyW = (oSpeaker.f64CoilLimitC - SETTLE_K - oHot.f64MagnetC) / oSpeaker.f64CoilKPerW;
    f64RecoverDb = RECOVER_DB * std::min(1.0, oSpeaker.f64CoilKPerW * oSpeaker.f64CoilJPerK);
    Remember();
    // What flows off to the magnet, and what brings the coil to its limit within half a time constant.
    f64AllowedW = (oHot.f64CoilC - oHot.f64MagnetC) / oSpeaker.f64CoilKPerW +
                  2.0 * (oSpeaker.f64CoilLimitC - SETTLE_K - oHot.f64CoilC) / oSpeaker.f64CoilKPerW;
}

HeatDemand HeatStage::Demand(const SpeakerConstants& oSpeaker) const
{
    HeatDemand oDemand;
    const double f64MeanNotZeroW = std::max(f64MeanW, LEAST_W);
    oDemand.f64TargetDb = std::clamp(f64GainDb + PowerToDecibel(std::max(f64AllowedW, LEAST_W) / f64MeanNotZeroW),
                                     LOWEST_DB, HeatDemand::NOTHING_DB);
    if (f64LoudestW > LEAST_W)
        oDemand.f64SafeDb = PowerToDecibel(std::max(f64SteadyW, LEAST_W) / f64LoudestW) + f64RecoverDb;
    oDemand.bUrgent = f64MeanW > f64AllowedW && !IsSlowEnough(oSpeaker);
    oDemand.bSilent = f64MeanW < LEAST_W;
    return oDemand;
}

void HeatDemand::Join(const HeatDemand& oOther)
{
    f64TargetDb = std::min(f64TargetDb, oOther.f64TargetDb);
    f64SafeDb = std::min(f64SafeDb, oOther.f64SafeDb);
    bUrgent |= oOther.bUrgent;
    bSilent &= oOther.bSilent;
}

// The coil's rise over its magnet at the end of a slow fall from the present power to the steady one: with p falling by
// k, x' = (p(t) Rtc - x)/tau.
bool HeatStage::IsSlowEnough(const SpeakerConstants& oSpeaker) const
{
    const double f64RiseLimitK = oSpeaker.f64CoilLimitC - 0.5 * SETTLE_K - oHot.f64MagnetC;
    if (f64SteadyW <= LEAST_W)
        return false;
    const double f64CoilSec = oSpeaker.f64CoilKPerW * oSpeaker.f64CoilJPerK;
    const double f64Ratio = std::max(f64MeanW / f64SteadyW, 1.0);
    const double f64FallPerSec = FALL_DB_PER_SEC / 4.3429448190325175;
    const double f64Forget = OwnExp(-OwnLog(f64Ratio) / (f64FallPerSec * f64CoilSec));
    const double f64Detuning = 1.0 - f64FallPerSec * f64CoilSec;
    const double f64NotZero = f64Detuning >= 0.0 ? std::max(f64Detuning, 1e-3) : std::min(f64Detuning, -1e-3);
    const double f64DrivenK = f64MeanW * oSpeaker.f64CoilKPerW * (1.0 / f64Ratio - f64Forget) / f64NotZero;
    return (oHot.f64CoilC - oHot.f64MagnetC) * f64Forget + f64DrivenK <= f64RiseLimitK;
}

// From 0 dB, and where a slow fall would come too late, the gain falls as fast as the coil needs. Else it has risen no
// further than a slow fall can mend.
void HeatStage::Follow(const SpeakerConstants& oSpeaker, const HeatDemand& oDemand)
{
    const double f64WayDb = oDemand.f64TargetDb - f64GainDb;
    bFreeFall = f64WayDb < 0.0 && (bFreeFall || f64GainDb == 0.0 || oDemand.bUrgent);
    if (f64WayDb < 0.0)
    {
        const double f64StepDb = oSpeaker.f64FallStep * f64WayDb;
        f64GainDb += bFreeFall ? f64StepDb : std::max(f64StepDb, -BLOCK_SEC * FALL_DB_PER_SEC);
    }
    else
    {
        const double f64FastestDb = BLOCK_SEC * (oDemand.bSilent ? SILENT_RISE_DB_PER_SEC : RISE_DB_PER_SEC);
        const double f64NextDb = f64GainDb + std::min(BLOCK_SEC / RISE_SEC * f64WayDb, f64FastestDb);
        f64GainDb = std::max(f64GainDb, std::min(f64NextDb, oDemand.f64SafeDb));
    }
    f64GainDb = std::min(f64GainDb, 0.0);
    f64Gain = f64GainDb < 0.0 ? FromDecibel(f64GainDb) : 1.0;
}

// The mean power without the gain, its peak held for HOLD_SEC.
void HeatStage::Remember()
{
    const double f64PlainW = f64MeanW / (f64Gain * f64Gain);
    if (f64PlainW >= f64LoudestW)
        f64LoudestW = f64PlainW;
    if (f64PlainW >= AS_LOUD * f64LoudestW)
        iLoudestBlocks = static_cast<int>(HOLD_SEC / BLOCK_SEC);
    else if (iLoudestBlocks > 0 && --iLoudestBlocks == 0)
        f64LoudestW = 0.0;
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
