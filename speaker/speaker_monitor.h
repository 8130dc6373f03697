// Two sets of the same speakers, one on what goes into a protection and one on what comes out: what it held, what it
// took.
#pragma once

#include "speaker/level_meter.h"
#include "speaker/speaker_set.h"

// One channel of the comparison.
struct SpeakerChannel
{
    SpeakerLimits oLimits;
    SpeakerExtremes oUnprotected;
    SpeakerExtremes oProtected;
};

// One side of it, all channels together.
struct SpeakerSide
{
    double f64LevelDb = 0.0;
    double f64LevelAboveDb = 0.0; // above CLevelMeter::SPLIT_HZ
    uint64_t u64NonFinite = 0;    // samples that aren't finite
};

struct SpeakerFigures
{
    std::vector<SpeakerChannel> vecChannels;
    SpeakerSide oUnprotected;
    SpeakerSide oProtected;

    double LostDb() const { return oUnprotected.f64LevelDb - oProtected.f64LevelDb; }
    double LostAboveDb() const { return oUnprotected.f64LevelAboveDb - oProtected.f64LevelAboveDb; }
};

// What goes in and what comes out may be handed over in blocks of any length, and needn't be in step. One thread at a
// time; the two sides know nothing of each other, so each may have a thread of its own.
class CSpeakerMonitor
{
public:
    SpeakerResult Init(const SpeakerSetup& oSetup);

    // Interleaved frames of the setup's channels. Give the input before a process in place overwrites it.
    void TakeIn(const float* pf32Frames, size_t uFrameCount) { m_oIn.Process(pf32Frames, uFrameCount); }
    void TakeOut(const float* pf32Frames, size_t uFrameCount) { m_oOut.Process(pf32Frames, uFrameCount); }

    // So far. The speakers haven't heard the last CLoudspeaker::DELAY samples, unless Finish was called.
    SpeakerFigures Figures() const;
    // Nothing more will come.
    void Finish();

    // The speakers themselves, for what is wanted beside the figures.
    const CSpeakerSet& Unprotected() const { return m_oIn.oSet; }
    const CSpeakerSet& Protected() const { return m_oOut.oSet; }

private:
    struct Side
    {
        CSpeakerSet oSet;
        CLevelMeter oMeter;

        void Process(const float* pf32Frames, size_t uFrameCount);
        SpeakerSide Figures() const;
    };

    std::vector<SpeakerLimits> m_vecLimits; // by channel
    Side m_oIn;
    Side m_oOut;
};
