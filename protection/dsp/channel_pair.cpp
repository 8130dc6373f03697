// The order of the stages, and the way from displacement back to samples.
#include "protection/dsp/channel_pair.h"

#include <cmath>
#include <cstring>

namespace
{
constexpr float LARGEST_SAMPLE = 8.0f; // 18 dB over full scale; what is beyond is cut

// NaN becomes 0, infinity the largest.
float Sane(float f32Sample)
{
    if (std::isnan(f32Sample))
        return 0.0f;
    return std::min(std::max(f32Sample, -LARGEST_SAMPLE), LARGEST_SAMPLE);
}

bool IsSane(const float* pSamples, int iCount)
{
    const __m128 oSign = _mm_set1_ps(-0.0f);
    const __m128 oLargest = _mm_set1_ps(LARGEST_SAMPLE);
    __m128 oBad = _mm_setzero_ps();
    int i = 0;
    for (; i + 4 <= iCount; i += 4)
        oBad = _mm_or_ps(oBad, _mm_cmpnle_ps(_mm_andnot_ps(oSign, _mm_loadu_ps(pSamples + i)), oLargest));
    bool bSane = _mm_movemask_ps(oBad) == 0;
    for (; i < iCount; ++i)
        bSane &= std::fabs(pSamples[i]) <= LARGEST_SAMPLE;
    return bSane;
}
} // namespace

void ChannelPair::Init(const PairControl& oControl, int iDeepAhead, int iUpperAhead)
{
    for (int i = 0; i < 2; ++i)
    {
        oVoltage[i].Reset();
        oCeilings[i].Reset();
        f64GainBefore[i] = oControl.f64Gain[i];
    }
    oDeepRemoved.Reset();
    oRemoved.Reset();
    oConeModel.Reset();
    oConeBefore = oControl.oCone;
    oDeep.Init(iDeepAhead);
    oUpper.Init(iUpperAhead);
    oCoil.Reset();
    oPeakLeft = Both(0.0);
}

void ChannelPair::Process(const PeakFilter& oFilter, const PairControl& oControl, const float* const (&pIn)[2],
                          int iBegin, int iEnd)
{
    const int iCount = iEnd - iBegin;
    for (int i = 0; i < 2; ++i)
        TakeIn(pIn[i], i, oControl.f64Gain[i], iBegin, iEnd);
    oConeModel.Process(oControl.oCone, oVoltage[0].Block(), oVoltage[1].Block(), oDeep.oIn.Block(), iBegin, iEnd);
    oDeep.Process(iBegin, iEnd, oControl.oCone.oEnd.oLimit, oControl.f64Engaged, oUpper.oIn.Block(),
                  oDeepRemoved.Block());
    Lanes oLeft[BLOCK_LEN];
    oUpper.Process(iBegin, iEnd, oControl.oCone.oEnd.oLimit, oControl.f64Engaged, oLeft, oRemoved.Block());
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
    oCoil.Process(oControl.oBackEmf, oCeilings[0].f32Out + iBegin, oCeilings[1].f32Out + iBegin, iCount);
}

// The gain moves in a line from block to block; at 1 the samples' bits stay.
void ChannelPair::TakeIn(const float* pIn, int iChannel, double f64Gain, int iBegin, int iEnd)
{
    float* const pOut = oVoltage[iChannel].Block() + iBegin;
    const int iCount = iEnd - iBegin;
    if (pIn == nullptr)
    {
        memset(pOut, 0, static_cast<size_t>(iCount) * sizeof(float));
        return;
    }
    memcpy(pOut, pIn, static_cast<size_t>(iCount) * sizeof(float));
    if (!IsSane(pOut, iCount))
        for (int i = 0; i < iCount; ++i)
            pOut[i] = Sane(pIn[i]);
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
    Subtract(oConeBefore, BLOCK_LEN - EXCURSION_DELAY, iBegin, iOld);
    Subtract(oControl.oCone, -EXCURSION_DELAY, iOld, iEnd);
}

// Position i was made at i + iMade of oCone's block. A channel of which nothing is removed passes with its bits.
void ChannelPair::Subtract(const ConeBlock& oCone, int iMade, int iBegin, int iEnd)
{
    if (iBegin >= iEnd)
        return;
    Lanes oVolt[BLOCK_LEN];
    const Lanes* const pRemoved = oRemoved.Block();
    InvertCone(oCone, pRemoved - iMade, oVolt - iBegin - iMade, iBegin + iMade, iEnd + iMade);
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
}
