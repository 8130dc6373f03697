// Audio files of the host: WAV, FLAC, OGG and raw 32-bit float (ending .f32, or .pcm of a sample dump), read and
// written as interleaved floats. The Windows build has the raw ones alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct AudioFormat
{
    int iRate = 0;     // Hz
    int iChannels = 0; // interleaved
};

// An open file, of the library that this build reads and writes files with.
struct AudioFileData;
struct AudioFileClose
{
    void operator()(AudioFileData* pFile) const;
};
using AudioFileHandle = std::unique_ptr<AudioFileData, AudioFileClose>;

class CAudioReader
{
public:
    // oAsked says what a raw file holds (0: 48000 Hz, 2 channels). For other files a number other than 0 must match.
    // Throws CHostError: absent, unreadable, empty, no audio, format mismatch.
    CAudioReader(const std::string& strPath, const AudioFormat& oAsked);

    const AudioFormat& Format() const { return m_oFormat; }
    int64_t FrameCount() const { return m_i64FrameCount; }

    // From now on the file over and over, i64FrameCount frames in all. Before the first Read.
    void Repeat(int64_t i64FrameCount);

    // Reads up to iFrameCount frames into pf32Frames and gives how many; fewer only at the end.
    size_t Read(float* pf32Frames, size_t iFrameCount);

private:
    std::string m_strPath;
    AudioFormat m_oFormat;
    int64_t m_i64FrameCount = 0;
    int64_t m_i64RepeatFrames = 0; // of the file itself, when it comes over and over
    int64_t m_i64Left = 0;         // frames of a repeated file still to come
    AudioFileHandle m_pFile;
};

class CAudioWriter
{
public:
    // The ending chooses the format: .wav 32-bit float, .flac 24 bit, .f32 raw floats. i64FrameCount is what will come.
    // Creates or empties the file. Throws CHostError: unknown ending, not writable, format can't hold the stream.
    CAudioWriter(const std::string& strPath, const AudioFormat& oFormat, int64_t i64FrameCount);

    // Throws CHostError when not everything could be written.
    void Write(const float* pf32Frames, size_t iFrameCount);

    // Ends the file. Throws CHostError when the rest could not be written.
    void Close();

private:
    std::string m_strPath;
    AudioFileHandle m_pFile;
};
