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
    m_oLimits = oSetup.oLimits;
    m_iChannels = oSetup.iChannels;
    return {};
}

SpeakerFigures CSpeakerMonitor::Figures() const
{
    return {m_oLimits, m_oIn.Figures(m_iChannels), m_oOut.Figures(m_iChannels)};
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

SpeakerSide CSpeakerMonitor::Side::Figures(int iChannels) const
{
    SpeakerSide oSide = {oSet.PeakDisplacementMm(), oSet.HottestCoilC(), oMeter.LevelDb(), oMeter.LevelAboveSplitDb(),
                         0};
    for (int i = 0; i < iChannels; ++i)
        oSide.u64NonFinite += oSet.Speaker(i).NonFiniteCount();
    return oSide;
}
