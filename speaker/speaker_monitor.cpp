// Feeds both sides and collects their figures.
#include "speaker/speaker_monitor.h"

SpeakerResult CSpeakerMonitor::Init(const SpeakerSetup& oSetup)
{
    for (Side* pSide : {&m_oIn, &m_oOut})
    {
        if (SpeakerResult oResult = pSide->oSet.Init(oSetup); !oResult)
            return oResult;
        pSide->oMeter.Init(oSetup.f64SampleRateHz, oSetup.iChannels);
    }
    m_vecLimits.clear();
    for (int i = 0; i < oSetup.iChannels; ++i)
        m_vecLimits.push_back(oSetup.Type(i).oLimits);
    return {};
}

SpeakerFigures CSpeakerMonitor::Figures() const
{
    SpeakerFigures oFigures = {{}, m_oIn.Figures(), m_oOut.Figures()};
    for (size_t i = 0; i < m_vecLimits.size(); ++i)
        oFigures.vecChannels.push_back(
            {m_vecLimits[i], m_oIn.oSet.Extremes(static_cast<int>(i)), m_oOut.oSet.Extremes(static_cast<int>(i))});
    return oFigures;
}

void CSpeakerMonitor::Finish()
{
    m_oIn.oSet.Drain();
    m_oOut.oSet.Drain();
}

void CSpeakerMonitor::Side::Process(const float* pf32Frames, size_t uFrameCount)
{
    oSet.Process(pf32Frames, uFrameCount);
    oMeter.Process(pf32Frames, uFrameCount);
}

SpeakerSide CSpeakerMonitor::Side::Figures() const
{
    SpeakerSide oSide = {oMeter.LevelDb(), oMeter.LevelAboveSplitDb(), 0};
    for (int i = 0; i < oSet.Channels(); ++i)
        oSide.u64NonFinite += oSet.Speaker(i).NonFiniteCount();
    return oSide;
}
