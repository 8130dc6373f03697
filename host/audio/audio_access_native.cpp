// Audio files by libsndfile.
#include "host/audio/audio_access.h"
#include "host/host_error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sndfile.h>

struct AudioFileData
{
    SNDFILE* pSound = nullptr;
};

namespace
{

constexpr int64_t WAV_MAX_BYTES = 0xFFFF0000;

// Format words of the library by ending; 0 for an unknown one.
int FormatOf(const std::string& strEnding, const AudioFormat& oFormat, int64_t i64FrameCount)
{
    if (strEnding == ".wav")
    {
        const bool bLarge = i64FrameCount * oFormat.iChannels * static_cast<int64_t>(sizeof(float)) > WAV_MAX_BYTES;
        return (bLarge ? SF_FORMAT_RF64 : SF_FORMAT_WAV) | SF_FORMAT_FLOAT;
    }
    if (strEnding == ".flac")
        return SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    return strEnding == ".f32" ? SF_FORMAT_RAW | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE : 0;
}

AudioFileHandle Open(const std::string& strPath, int iMode, SF_INFO& oInfo)
{
    AudioFileHandle pFile(new AudioFileData);
    pFile->pSound = sf_open(strPath.c_str(), iMode, &oInfo);
    return pFile->pSound != nullptr ? std::move(pFile) : nullptr;
}

} // namespace

void AudioFileClose::operator()(AudioFileData* pFile) const
{
    sf_close(pFile->pSound);
    delete pFile;
}

AudioFileHandle OpenAudio(const std::string& strPath, bool bRaw, AudioFormat& oFormat, int64_t& i64FrameCount)
{
    SF_INFO oInfo{};
    if (bRaw)
    {
        oInfo.samplerate = oFormat.iRate;
        oInfo.channels = oFormat.iChannels;
        oInfo.format = SF_FORMAT_RAW | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE;
    }
    AudioFileHandle pFile = Open(strPath, SFM_READ, oInfo);
    if (!pFile)
        throw CHostError(strPath + ": not readable as audio: " + sf_strerror(nullptr));
    oFormat = {oInfo.samplerate, oInfo.channels};
    i64FrameCount = oInfo.frames;
    return pFile;
}

size_t ReadAudio(AudioFileData& oFile, const std::string& strPath, float* pf32Frames, size_t iFrameCount)
{
    const sf_count_t iRead = sf_readf_float(oFile.pSound, pf32Frames, static_cast<sf_count_t>(iFrameCount));
    if (sf_error(oFile.pSound) != SF_ERR_NO_ERROR)
        throw CHostError(strPath + ": reading failed: " + sf_strerror(oFile.pSound));
    return static_cast<size_t>(std::max<sf_count_t>(iRead, 0));
}

bool RewindAudio(AudioFileData& oFile)
{
    return sf_seek(oFile.pSound, 0, SEEK_SET) == 0;
}

AudioFileHandle CreateAudio(const std::string& strPath, const std::string& strEnding, const AudioFormat& oFormat,
                            int64_t i64FrameCount)
{
    SF_INFO oInfo{};
    oInfo.samplerate = oFormat.iRate;
    oInfo.channels = oFormat.iChannels;
    oInfo.format = FormatOf(strEnding, oFormat, i64FrameCount);
    if (oInfo.format == 0)
        throw CHostError(strPath + ": the ending must be .wav, .flac or .f32");
    if (!sf_format_check(&oInfo))
        throw CHostError(strPath + ": this format can't hold " + std::to_string(oFormat.iChannels) + " channel(s) at " +
                         std::to_string(oFormat.iRate) + " Hz");
    errno = 0;
    AudioFileHandle pFile = Open(strPath, SFM_WRITE, oInfo);
    if (!pFile)
        throw CHostError(strPath + ": not writable: " + (errno != 0 ? std::strerror(errno) : sf_strerror(nullptr)));
    // No time stamp in the file: equal samples make equal files.
    sf_command(pFile->pSound, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(pFile->pSound, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    return pFile;
}

bool WriteAudio(AudioFileData& oFile, const float* pf32Frames, size_t iFrameCount)
{
    const auto iFrames = static_cast<sf_count_t>(iFrameCount);
    return sf_writef_float(oFile.pSound, pf32Frames, iFrames) == iFrames;
}

bool EndAudio(AudioFileHandle pFile)
{
    SNDFILE* const pSound = pFile->pSound;
    delete pFile.release();
    return sf_close(pSound) == 0;
}
