// The order of the stages, and the way from displacement back to samples.
#include "protection/dsp/channel_pair.h"

#include "protection/dsp/base/sane_samples.h"

void ChannelPair::Init(const PairControl& oControl, bool bJoins, int iDeepAhead, int iUpperAhead)
{
    for (int i = 0; i < 2; ++i)
    {
        oVoltage[i].Reset();
        oCeilings[i].Reset();
        f64GainBefore[i] = bJoins ? 0.0 : oControl.f64Gain[i];
    }
    oDeepRemoved.Reset();
    oRemoved.Reset();
    oConeModel.Reset();
    oConeBefore = oControl.oCone;
    oDeep.Init(iDeepAhead);
    oUpper.Init(iUpperAhead);
    oPeakLeft = Both(0.0);
}

void ChannelPair::Process(const PeakFilter& oFilter, const PairControl& oControl, const float* const (&pIn)[2],
                          int iBegin, int iEnd)
{
    for (int i = 0; i < 2; ++i)
        TakeIn(pIn[i], i, oControl.f64Gain[i], iBegin, iEnd);
    oConeModel.Process(oControl.oCone, oVoltage[0].Block(), oVoltage[1].Block(), oDeep.oIn.Block(), iBegin, iEnd);
    oDeep.Process(iBegin, iEnd, oControl.oLimit, oUpper.oIn.Block(), oDeepRemoved.Block());
    Lanes oLeft[BLOCK_LEN];
    oUpper.Process(iBegin, iEnd, oControl.oLimit, oLeft, oRemoved.Block());
    const Lanes* const pDeepRemoved = oDeepRemoved.Block() - UpperBand::DELAY;
    Lanes* const pRemoved = oRemoved.Block();
    Lanes oPeak = oPeakLeft;
    for (int i = iBegin; i < iEnd; ++i)
    {
        pRemoved[i] = _mm_add_pd(pRemoved[i], pDeepRemoved[i]);
        oPeak = _mm_max_pd(oPeak, Magnitude(oLeft[i]));
    }
    oPeakLeft = oPeak;
    TakeFromVoltage(oControl, iBegin, iEnd);
    for (int i = 0; i < 2; ++i)
        oCeilings[i].Process(oFilter, iBegin, iEnd, oControl.f64Ceiling[i]);
}

// The gain moves in a line from block to block; at 1 the samples' bits stay.
void ChannelPair::TakeIn(const float* pIn, int iChannel, double f64Gain, int iBegin, int iEnd)
{
    float* const pOut = oVoltage[iChannel].Block() + iBegin;
    const int iCount = iEnd - iBegin;
    CopySane(pIn, pOut, iCount);
    const double f64Before = f64GainBefore[iChannel];
    if (f64Before == 1.0 && f64Gain == 1.0)
        return;
    const double f64Step = (f64Gain - f64Before) / BLOCK_LEN;
    for (int i = 0; i < iCount; ++i)
        pOut[i] *= static_cast<float>(f64Before + f64Step * (iBegin + i + 1));
}

// The inverse uses the coefficients that the model had when it made the displacement, EXCURSION_DELAY samples before:
// so a change of coefficients alone is silent.
void ChannelPair::TakeFromVoltage(const PairControl& oControl, int iBegin, int iEnd)
{
    static_assert(EXCURSION_DELAY <= BLOCK_LEN);
    const int iOld = std::max(iBegin, std::min(iEnd, EXCURSION_DELAY));
    Subtract(oConeBefore, iBegin, iOld);
    Subtract(oControl.oCone, iOld, iEnd);
}

// A channel of which nothing is removed passes with its bits.
void ChannelPair::Subtract(const ConeLanes& oCone, int iBegin, int iEnd)
{
    if (iBegin >= iEnd)
        return;
    Lanes oVolt[BLOCK_LEN];
    const Lanes* const pRemoved = oRemoved.Block();
    InvertCone(oCone, pRemoved + iBegin, oVolt, iEnd - iBegin);
    Lanes oAny = Both(0.0);
    for (int i = iBegin - 2; i < iEnd; ++i)
        oAny = _mm_or_pd(oAny, pRemoved[i]);
    const int iTouched = _mm_movemask_pd(_mm_cmpneq_pd(oAny, Both(0.0)));
    for (int iChannel = 0; iChannel < 2; ++iChannel)
    {
        const float* const pIn = oVoltage[iChannel].Block() - EXCURSION_DELAY;
        float* const pOut = oCeilings[iChannel].oIn.Block();
        if ((iTouched & (1 << iChannel)) == 0)
            memcpy(pOut + iBegin, pIn + iBegin, static_cast<size_t>(iEnd - iBegin) * sizeof(float));
        else
            for (int i = iBegin; i < iEnd; ++i)
                pOut[i] = static_cast<float>(static_cast<double>(pIn[i]) -
                                             reinterpret_cast<const double*>(oVolt + i - iBegin)[iChannel]);
    }
}

void ChannelPair::FinishBlock(const PairControl& oControl)
{
    for (int i = 0; i < 2; ++i)
    {
        oVoltage[i].Roll();
        oCeilings[i].FinishBlock(oControl.f64Ceiling[i]);
        f64GainBefore[i] = oControl.f64Gain[i];
    }
    oDeepRemoved.Roll();
    oRemoved.Roll();
    oDeep.FinishBlock();
    oUpper.FinishBlock();
    oConeBefore = oControl.oCone;
    oPeakLeft = Both(0.0);
}
