// What a build's way to audio files offers to the host's reader and writer. Natively libsndfile, on Windows raw floats.
#pragma once

#include "host/audio/audio_file.h"

// Opens the file for reading. A raw one holds what oFormat says, of others oFormat tells it afterwards. Gives the
// frames in i64FrameCount. Throws CHostError.
AudioFileHandle OpenAudio(const std::string& strPath, bool bRaw, AudioFormat& oFormat, int64_t& i64FrameCount);
// Reads up to iFrameCount frames of iChannels interleaved floats and gives how many. Throws CHostError.
size_t ReadAudio(AudioFileData& oFile, const std::string& strPath, float* pf32Frames, size_t iFrameCount);
// Back to the first frame.
bool RewindAudio(AudioFileData& oFile);

// Creates or empties the file, in the form of its ending (in small letters). Throws CHostError.
AudioFileHandle CreateAudio(const std::string& strPath, const std::string& strEnding, const AudioFormat& oFormat,
                            int64_t i64FrameCount);
// Whether all frames were written; a system's reason stands in errno.
bool WriteAudio(AudioFileData& oFile, const float* pf32Frames, size_t iFrameCount);
// Ends the file; whether the rest was written.
bool EndAudio(AudioFileHandle pFile);
