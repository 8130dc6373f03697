// Hands each channel its samples and asks for the worst.
#include "speaker/speaker_set.h"

#include <algorithm>
#include <utility>

SpeakerResult CSpeakerSet::Init(const SpeakerSetup& oSetup)
{
    if (SpeakerResult oResult = CheckLimits(oSetup.oLimits); !oResult)
        return oResult;
    if (oSetup.iChannels < 1 || oSetup.iChannels > 8)
        return {SpeakerError::CHANNELS, "channels are " + std::to_string(oSetup.iChannels) + ", allowed is 1 to 8"};
    CLoudspeaker oSpeaker;
    if (SpeakerResult oResult = oSpeaker.Init(oSetup.oParams, oSetup.f64SampleRateHz, oSetup.iOversampling); !oResult)
        return oResult;
    if (oSetup.oStart)
        if (SpeakerResult oResult = oSpeaker.Reset(oSetup.oStart->f64CoilC, oSetup.oStart->f64MagnetC); !oResult)
            return oResult;
    m_oStart = oSetup.oStart;
    m_vecSpeaker.assign(static_cast<size_t>(oSetup.iChannels), oSpeaker);
    return {};
}

void CSpeakerSet::Reset()
{
    for (CLoudspeaker& oSpeaker : m_vecSpeaker)
    {
        oSpeaker.SetGain(1.0);
        if (m_oStart)
            oSpeaker.Reset(m_oStart->f64CoilC, m_oStart->f64MagnetC);
        else
            oSpeaker.Reset();
    }
}

void CSpeakerSet::SetGain(double f64Gain)
{
    for (CLoudspeaker& oSpeaker : m_vecSpeaker)
        oSpeaker.SetGain(f64Gain);
}

void CSpeakerSet::Process(const float* pf32Frames, size_t uFrameCount)
{
    for (size_t i = 0; i < m_vecSpeaker.size(); ++i)
        m_vecSpeaker[i].Process(pf32Frames + i, uFrameCount, {}, m_vecSpeaker.size());
}

void CSpeakerSet::Drain()
{
    for (CLoudspeaker& oSpeaker : m_vecSpeaker)
        oSpeaker.Drain();
}

double CSpeakerSet::PeakDisplacementMm() const
{
    double f64PeakMm = 0.0;
    for (const CLoudspeaker& oSpeaker : m_vecSpeaker)
        f64PeakMm = std::max(f64PeakMm, oSpeaker.PeakDisplacementMm());
    return f64PeakMm;
}

double CSpeakerSet::HottestCoilC() const
{
    double f64HottestC = m_vecSpeaker.front().HottestCoilC();
    for (const CLoudspeaker& oSpeaker : m_vecSpeaker)
        f64HottestC = std::max(f64HottestC, oSpeaker.HottestCoilC());
    return f64HottestC;
}
