// The loudspeakers of an interleaved stream, one type on every channel.
#pragma once

#include "speaker/loudspeaker.h"

#include <optional>
#include <vector>

struct SpeakerTemperatures
{
    double f64CoilC = 25.0;
    double f64MagnetC = 25.0;
};

// What is played on: the stream, the speakers, what they stand, and how they start.
struct SpeakerSetup
{
    SpeakerParams oParams;
    SpeakerLimits oLimits;
    double f64SampleRateHz = 48000.0;
    int iChannels = 2;     // 1 to 8
    int iOversampling = 4; // 1 to 16; on music 1 changes the figures by less than one part in ten thousand
    std::optional<SpeakerTemperatures> oStart; // without: ambient
};

// One thread at a time.
class CSpeakerSet
{
public:
    // On failure the set is as it was.
    SpeakerResult Init(const SpeakerSetup& oSetup);
    // As after Init, the gain too.
    void Reset();

    void SetGain(double f64Gain);
    // Interleaved frames of iChannels floats.
    void Process(const float* pf32Frames, size_t uFrameCount);
    void Drain();

    // The worst channel's, in every step since Init or Reset.
    double PeakDisplacementMm() const;
    double HottestCoilC() const;
    const CLoudspeaker& Speaker(int iChannel) const { return m_vecSpeaker[static_cast<size_t>(iChannel)]; }

private:
    std::optional<SpeakerTemperatures> m_oStart;
    std::vector<CLoudspeaker> m_vecSpeaker;
};
