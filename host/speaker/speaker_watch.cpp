// Hands a stream's two sides to the simulated speakers.
#include "host/speaker/speaker_watch.h"

#include "host/host_error.h"

#include <algorithm>
#include <cmath>

namespace
{

// A trace looks at the cone this often, so that it misses no more than 2 % of a peak at 1 kHz.
constexpr size_t FRAMES_PER_LOOK = 4;

float SquareSum(const float* pf32Frames, size_t uLen)
{
    float f32Sum = 0;
    for (size_t i = 0; i < uLen; ++i)
        f32Sum += std::isfinite(pf32Frames[i]) ? pf32Frames[i] * pf32Frames[i] : 0.0f;
    return f32Sum;
}

} // namespace

CSpeakerWatch::CSpeakerWatch(const SpeakerSetup& oSetup, int64_t i64Frames, bool bTrace) : m_iChannels(oSetup.iChannels)
{
    if (const SpeakerResult oResult = m_oMonitor.Init(oSetup); !oResult)
        throw CHostError("the speakers can't be simulated: " + oResult.strText);
    if (bTrace)
        m_oTrace.emplace(static_cast<int>(oSetup.f64SampleRateHz), m_iChannels, i64Frames);
}

TraceBin CSpeakerWatch::Look(const CSpeakerSet& oSet) const
{
    TraceBin oLook;
    oLook.f32CoilC = oLook.f32MagnetC = -273.15f;
    for (int i = 0; i < m_iChannels; ++i)
    {
        const CLoudspeaker& oSpeaker = oSet.Speaker(i);
        oLook.f32DisplacementMm =
            std::max(oLook.f32DisplacementMm, static_cast<float>(std::fabs(oSpeaker.DisplacementMm())));
        oLook.f32CoilC = std::max(oLook.f32CoilC, static_cast<float>(oSpeaker.CoilC()));
        oLook.f32MagnetC = std::max(oLook.f32MagnetC, static_cast<float>(oSpeaker.MagnetC()));
    }
    return oLook;
}

void CSpeakerWatch::Take(StreamSide eSide, const float* pf32Frames, size_t uFrames)
{
    const bool bIn = eSide == StreamSide::In;
    const auto uChannels = static_cast<size_t>(m_iChannels);
    const size_t uStep = m_oTrace ? FRAMES_PER_LOOK : uFrames;
    int64_t& i64Frames = m_i64Frames[static_cast<size_t>(eSide)];
    for (size_t i = 0; i < uFrames; i += uStep)
    {
        const size_t uCount = std::min(uStep, uFrames - i);
        const float* pf32Step = pf32Frames + i * uChannels;
        bIn ? m_oMonitor.TakeIn(pf32Step, uCount) : m_oMonitor.TakeOut(pf32Step, uCount);
        if (m_oTrace)
        {
            TraceBin oSeen = Look(bIn ? m_oMonitor.Unprotected() : m_oMonitor.Protected());
            oSeen.f32SquareSum = SquareSum(pf32Step, uCount * uChannels);
            m_oTrace->Add(eSide, i64Frames, oSeen);
        }
        i64Frames += static_cast<int64_t>(uCount);
    }
}

void CSpeakerWatch::TakeOut(const float* pf32Frames, size_t uFrames, PeriodPath ePath)
{
    Take(StreamSide::Out, pf32Frames, uFrames);
    if (m_oTrace)
        m_oTrace->AddPeriod(ePath);
}

double CSpeakerWatch::MagnetC() const
{
    return static_cast<double>(Look(m_oMonitor.Protected()).f32MagnetC);
}

SpeakerFigures CSpeakerWatch::Finish()
{
    m_oMonitor.Finish();
    return m_oMonitor.Figures();
}
