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

template <typename Take>
void ForEachStep(const float* pf32Frames, size_t uFrames, int iChannels, size_t uStep, const Take& fTake)
{
    for (size_t i = 0; i < uFrames; i += uStep)
        fTake(pf32Frames + i * static_cast<size_t>(iChannels), std::min(uStep, uFrames - i));
}

} // namespace

std::vector<SpeakerChannel> SpeakerComparison::Shown() const
{
    if (!bAlike)
        return oFigures.vecChannels;
    SpeakerChannel oWorst = oFigures.vecChannels.front();
    for (const SpeakerChannel& oChannel : oFigures.vecChannels)
        for (const auto pSide : {&SpeakerChannel::oUnprotected, &SpeakerChannel::oProtected})
        {
            SpeakerExtremes& oSide = oWorst.*pSide;
            oSide.f64HottestCoilC = std::max(oSide.f64HottestCoilC, (oChannel.*pSide).f64HottestCoilC);
            oSide.f64PeakDisplacementMm =
                std::max(oSide.f64PeakDisplacementMm, (oChannel.*pSide).f64PeakDisplacementMm);
        }
    return {oWorst};
}

CSpeakerWatch::CSpeakerWatch(const SpeakerSetup& oSetup)
    : m_iRate(static_cast<int>(oSetup.f64SampleRateHz)),
      m_iChannels(oSetup.iChannels),
      m_bAlike(oSetup.vecTypes.size() == 1)
{
    if (const SpeakerResult oResult = m_oMonitor.Init(oSetup); !oResult)
        throw CHostError("the speakers can't be simulated: " + oResult.strText);
}

CSpeakerTrace& CSpeakerWatch::StartTrace(int iPeriodFrames, int64_t i64BlockFrames)
{
    return m_oTrace.emplace(m_iRate, iPeriodFrames, i64BlockFrames);
}

SpeakerLook CSpeakerWatch::Look(const CSpeakerSet& oSet, int iFirst, int iCount) const
{
    SpeakerLook oLook{0, -273.15f, -273.15f};
    for (int i = iFirst; i < iFirst + iCount; ++i)
    {
        const CLoudspeaker& oSpeaker = oSet.Speaker(i);
        oLook.f32DisplacementMm =
            std::max(oLook.f32DisplacementMm, static_cast<float>(std::fabs(oSpeaker.DisplacementMm())));
        oLook.f32CoilC = std::max(oLook.f32CoilC, static_cast<float>(oSpeaker.CoilC()));
        oLook.f32MagnetC = std::max(oLook.f32MagnetC, static_cast<float>(oSpeaker.MagnetC()));
    }
    return oLook;
}

TraceBin CSpeakerWatch::See(const CSpeakerSet& oSet, const float* pf32Frames, size_t uFrames) const
{
    TraceBin oSeen;
    oSeen.f32SquareSum = SquareSum(pf32Frames, uFrames * static_cast<size_t>(m_iChannels));
    const int iPerLook = m_iChannels / Looks();
    for (int i = 0; i < Looks(); ++i)
        oSeen.oLooks[static_cast<size_t>(i)] = Look(oSet, i * iPerLook, iPerLook);
    return oSeen;
}

void CSpeakerWatch::TakeIn(const float* pf32Frames, size_t uFrames)
{
    ForEachStep(pf32Frames, uFrames, m_iChannels, m_oTrace ? FRAMES_PER_LOOK : uFrames,
                [this](const float* pf32Step, size_t uStep)
                {
                    m_oMonitor.TakeIn(pf32Step, uStep);
                    if (m_oTrace)
                        m_oTrace->AddIn(m_i64In, See(m_oMonitor.Unprotected(), pf32Step, uStep));
                    m_i64In += static_cast<int64_t>(uStep);
                });
}

void CSpeakerWatch::TakeOut(const float* pf32Frames, size_t uFrames, PeriodPath ePath)
{
    ForEachStep(pf32Frames, uFrames, m_iChannels, m_oTrace ? FRAMES_PER_LOOK : uFrames,
                [this, ePath](const float* pf32Step, size_t uStep)
                {
                    m_oMonitor.TakeOut(pf32Step, uStep);
                    if (m_oTrace)
                        m_oTrace->AddOut(m_i64Out, See(m_oMonitor.Protected(), pf32Step, uStep), ePath);
                    m_i64Out += static_cast<int64_t>(uStep);
                });
}

double CSpeakerWatch::MagnetC() const
{
    return static_cast<double>(Look(m_oMonitor.Protected(), 0, m_iChannels).f32MagnetC);
}

SpeakerFigures CSpeakerWatch::Finish()
{
    m_oMonitor.Finish();
    if (m_oTrace)
        m_oTrace->Finish();
    return m_oMonitor.Figures();
}
