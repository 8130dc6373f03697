// Hands each channel its samples.
#include "speaker/speaker_set.h"

#include <utility>

namespace
{
SpeakerResult InitSpeaker(const SpeakerSetup& oSetup, int iChannel, CLoudspeaker& oSpeaker)
{
    const SpeakerType& oType = oSetup.Type(iChannel);
    SpeakerResult oResult = CheckLimits(oType.oLimits);
    if (oResult)
        oResult = oSpeaker.Init(oType.oParams, oSetup.f64SampleRateHz, oSetup.iOversampling);
    if (oResult && oSetup.oStart)
        oResult = oSpeaker.Reset(oSetup.oStart->f64CoilC, oSetup.oStart->f64MagnetC);
    return oResult;
}
} // namespace

SpeakerResult CSpeakerSet::Init(const SpeakerSetup& oSetup)
{
    if (oSetup.iChannels < 1 || oSetup.iChannels > 8)
        return {SpeakerError::CHANNELS, "channels are " + std::to_string(oSetup.iChannels) + ", allowed is 1 to 8"};
    if (oSetup.vecTypes.empty())
        return {SpeakerError::PARAMETER, "no speaker is described"};
    std::vector<CLoudspeaker> vecSpeaker(static_cast<size_t>(oSetup.iChannels));
    for (int i = 0; i < oSetup.iChannels; ++i)
        if (SpeakerResult oResult = InitSpeaker(oSetup, i, vecSpeaker[static_cast<size_t>(i)]); !oResult)
            return {oResult.eError, "channel " + std::to_string(i + 1) + ": " + oResult.strText};
    m_oStart = oSetup.oStart;
    m_vecSpeaker = std::move(vecSpeaker);
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

SpeakerExtremes CSpeakerSet::Extremes(int iChannel) const
{
    const CLoudspeaker& oSpeaker = Speaker(iChannel);
    return {oSpeaker.PeakDisplacementMm(), oSpeaker.HottestCoilC()};
}
