// The loudspeakers of an interleaved stream, one on each channel.
#pragma once

#include "speaker/loudspeaker.h"

#include <algorithm>
#include <optional>
#include <vector>

// A speaker, and what it stands.
struct SpeakerType
{
    SpeakerParams oParams;
    SpeakerLimits oLimits;
};

// What a speaker went through.
struct SpeakerExtremes
{
    double f64PeakDisplacementMm = 0.0;
    double f64HottestCoilC = 0.0;

    bool Holds(const SpeakerLimits& oLimits) const
    {
        return f64PeakDisplacementMm <= oLimits.f64DisplacementMm && f64HottestCoilC <= oLimits.f64CoilC;
    }
};

struct SpeakerTemperatures
{
    double f64CoilC = 25.0;
    double f64MagnetC = 25.0;
};

// What is played on: the stream, the speakers, and how they start.
struct SpeakerSetup
{
    std::vector<SpeakerType> vecTypes = std::vector<SpeakerType>(1); // by channel; behind the last all are like it
    double f64SampleRateHz = 48000.0;
    int iChannels = 2;     // 1 to 8
    int iOversampling = 4; // 1 to 16; on music 1 changes the figures by less than one part in ten thousand
    std::optional<SpeakerTemperatures> oStart; // without: ambient

    const SpeakerType& Type(int iChannel) const
    {
        return vecTypes[std::min(static_cast<size_t>(iChannel), vecTypes.size() - 1)];
    }
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

    // Of a channel, in every step since Init or Reset.
    SpeakerExtremes Extremes(int iChannel) const;
    int Channels() const { return static_cast<int>(m_vecSpeaker.size()); }
    const CLoudspeaker& Speaker(int iChannel) const { return m_vecSpeaker[static_cast<size_t>(iChannel)]; }

private:
    std::optional<SpeakerTemperatures> m_oStart;
    std::vector<CLoudspeaker> m_vecSpeaker;
};
