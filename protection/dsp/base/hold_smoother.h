// From what a group of samples wants reduced to a smooth curve that is never less than that, a fixed time later.
#pragma once

#include <algorithm>
#include <cstdint>

// Peak hold, then two running means of WIDTH groups. Whole numbers (1 is 2^24), so that sums are exact and come back to
// exactly 0. What a group wants is reached from the second of the two groups that follow 2 WIDTH - 1 groups later, and
// lasts as long as the hold, which is longer than the means. Behind the hold it decays.
template <int WIDTH, int HOLD_GROUPS, int DECAY_GROUPS> struct HoldSmoother
{
    static constexpr int32_t ONE = 1 << 24;

    int32_t iHeld = 0;
    int32_t iHoldLeft = 0;
    int iPlace = 0;
    int64_t i64First = 0;
    int64_t i64Second = 0;
    int32_t iHeldBefore[WIDTH] = {};
    int64_t i64FirstBefore[WIDTH] = {};
    int32_t iChangeBefore[WIDTH] = {};

    bool IsIdle() const { return iHeld == 0 && i64First == 0 && i64Second == 0; }

    // A value within 3 % of the held one renews the hold: peaks of a steady tone are not quite equal.
    int32_t Hold(double f64Wanted)
    {
        const int32_t iWanted = f64Wanted > 0.0 ? std::min(static_cast<int32_t>(f64Wanted * ONE) + 1, ONE) : 0;
        if (iWanted >= iHeld - iHeld / 32)
            iHoldLeft = HOLD_GROUPS;
        else if (iHoldLeft > 0)
            --iHoldLeft;
        else
            iHeld = std::max(iHeld - iHeld / DECAY_GROUPS - 1, 0);
        iHeld = std::max(iHeld, iWanted);
        return iHeld;
    }

    // The second mean at the end of the next group, when groups are taken as single values.
    double UpdateGroup(double f64Wanted)
    {
        const int32_t iNow = Hold(f64Wanted);
        i64First += iNow - iHeldBefore[iPlace];
        iHeldBefore[iPlace] = iNow;
        i64Second += i64First - i64FirstBefore[iPlace];
        i64FirstBefore[iPlace] = i64First;
        iPlace = iPlace + 1 < WIDTH ? iPlace + 1 : 0;
        return static_cast<double>(i64Second) * (1.0 / (static_cast<double>(ONE) * WIDTH * WIDTH));
    }

    // The two means taken over every sample of the next group of GROUP_LEN: value before its first sample, step to
    // that, change of the step. A curve without corners.
    struct Curve
    {
        double f64Start;
        double f64Step;
        double f64Change;
    };
    template <int GROUP_LEN> Curve UpdateSamples(double f64Wanted)
    {
        constexpr double SCALE = 1.0 / (static_cast<double>(ONE) * WIDTH * WIDTH * GROUP_LEN * GROUP_LEN);
        const int32_t iNow = Hold(f64Wanted);
        const int32_t iChange = iNow - iHeldBefore[iPlace];
        const int64_t i64Step = i64First - i64FirstBefore[iPlace];
        const int64_t i64Change = iChange - iChangeBefore[iPlace];
        const Curve oCurve = {static_cast<double>(i64Second) * SCALE, static_cast<double>(i64Step + i64Change) * SCALE,
                              static_cast<double>(i64Change) * SCALE};
        iHeldBefore[iPlace] = iNow;
        i64FirstBefore[iPlace] = i64First;
        iChangeBefore[iPlace] = iChange;
        i64Second += GROUP_LEN * i64Step + GROUP_LEN * (GROUP_LEN + 1) / 2 * i64Change;
        i64First += GROUP_LEN * iChange;
        iPlace = iPlace + 1 < WIDTH ? iPlace + 1 : 0;
        return oCurve;
    }
};
