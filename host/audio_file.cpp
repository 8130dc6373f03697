// Audio files of the host, over libsndfile.
#include "host/audio_file.h"

#include "host/host_error.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sndfile.h>

namespace
{

constexpr int64_t WAV_MAX_BYTES = 0xFFFF0000;

std::string Ending(const std::string& strPath)
{
    std::string strEnding = std::filesystem::path(strPath).extension().string();
    std::transform(strEnding.begin(), strEnding.end(), strEnding.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return strEnding;
}

// The size of a plain readable file in bytes; anything else throws.
uintmax_t ReadableSize(const std::string& strPath)
{
    std::error_code oError;
    const auto oStatus = std::filesystem::status(strPath, oError);
    if (oError)
        throw CHostError(strPath + ": " + oError.message());
    if (!std::filesystem::is_regular_file(oStatus))
        throw CHostError(strPath + ": not a file");
    const uintmax_t iBytes = std::filesystem::file_size(strPath, oError);
    if (oError)
        throw CHostError(strPath + ": " + oError.message());
    if (iBytes == 0)
        throw CHostError(strPath + ": the file is empty");
    std::unique_ptr<FILE, int (*)(FILE*)> pFile(std::fopen(strPath.c_str(), "rb"), std::fclose);
    if (!pFile)
        throw CHostError(strPath + ": " + std::strerror(errno));
    return iBytes;
}

bool IsRaw(const std::string& strPath)
{
    const std::string strEnding = Ending(strPath);
    return strEnding == ".f32" || strEnding == ".pcm";
}

SF_INFO RawInfo(const std::string& strPath, const AudioFormat& oAsked, uintmax_t iBytes)
{
    SF_INFO oInfo{};
    oInfo.samplerate = oAsked.iRate > 0 ? oAsked.iRate : 48000;
    oInfo.channels = oAsked.iChannels > 0 ? oAsked.iChannels : 2;
    oInfo.format = SF_FORMAT_RAW | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE;
    const uintmax_t iFrameBytes = static_cast<uintmax_t>(oInfo.channels) * sizeof(float);
    if (iBytes % iFrameBytes != 0)
        throw CHostError(strPath + ": " + std::to_string(iBytes) + " bytes are no whole number of frames of " +
                         std::to_string(oInfo.channels) + " floats; is --channels right?");
    return oInfo;
}

void CheckAsked(const std::string& strPath, const char* pOption, const char* pUnit, int iAsked, int iHeld)
{
    if (iAsked > 0 && iAsked != iHeld)
        throw CHostError(strPath + ": the file has " + std::to_string(iHeld) + " " + pUnit + ", " + pOption +
                         " asks for " + std::to_string(iAsked) + "; the host doesn't convert");
}

// Format words of the library by ending; 0 for an unknown one.
int FormatOf(const std::string& strPath, const AudioFormat& oFormat, int64_t i64FrameCount)
{
    const std::string strEnding = Ending(strPath);
    if (strEnding == ".wav")
    {
        const bool bLarge = i64FrameCount * oFormat.iChannels * static_cast<int64_t>(sizeof(float)) > WAV_MAX_BYTES;
        return (bLarge ? SF_FORMAT_RF64 : SF_FORMAT_WAV) | SF_FORMAT_FLOAT;
    }
    if (strEnding == ".flac")
        return SF_FORMAT_FLAC | SF_FORMAT_PCM_24;
    return strEnding == ".f32" ? SF_FORMAT_RAW | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE : 0;
}

} // namespace

void AudioFileClose::operator()(sf_private_tag* pFile) const
{
    sf_close(pFile);
}

CAudioReader::CAudioReader(const std::string& strPath, const AudioFormat& oAsked) : m_strPath(strPath)
{
    const uintmax_t iBytes = ReadableSize(strPath);
    SF_INFO oInfo{};
    if (IsRaw(strPath))
        oInfo = RawInfo(strPath, oAsked, iBytes);
    m_pFile.reset(sf_open(strPath.c_str(), SFM_READ, &oInfo));
    if (!m_pFile)
        throw CHostError(strPath + ": not readable as audio: " + sf_strerror(nullptr));
    if (oInfo.frames <= 0)
        throw CHostError(strPath + ": the file holds no audio");
    CheckAsked(strPath, "--rate", "Hz", oAsked.iRate, oInfo.samplerate);
    CheckAsked(strPath, "--channels", "channel(s)", oAsked.iChannels, oInfo.channels);
    m_oFormat = {oInfo.samplerate, oInfo.channels};
    m_i64FrameCount = oInfo.frames;
}

void CAudioReader::Repeat(int64_t i64FrameCount)
{
    m_bRepeat = true;
    m_i64FrameCount = m_i64Left = i64FrameCount;
}

size_t CAudioReader::Read(float* pf32Frames, size_t iFrameCount)
{
    if (!m_bRepeat)
        return ReadOnce(pf32Frames, iFrameCount);
    const size_t iWanted = static_cast<size_t>(std::min<int64_t>(m_i64Left, static_cast<int64_t>(iFrameCount)));
    size_t iDone = 0;
    while (iDone < iWanted)
    {
        float* const pf32Rest = pf32Frames + iDone * static_cast<size_t>(m_oFormat.iChannels);
        size_t iRead = ReadOnce(pf32Rest, iWanted - iDone);
        if (iRead == 0 && sf_seek(m_pFile.get(), 0, SEEK_SET) == 0)
            iRead = ReadOnce(pf32Rest, iWanted - iDone);
        if (iRead == 0)
            throw CHostError(m_strPath + ": can't be read once more");
        iDone += iRead;
    }
    m_i64Left -= static_cast<int64_t>(iDone);
    return iDone;
}

size_t CAudioReader::ReadOnce(float* pf32Frames, size_t iFrameCount)
{
    const sf_count_t iRead = sf_readf_float(m_pFile.get(), pf32Frames, static_cast<sf_count_t>(iFrameCount));
    if (sf_error(m_pFile.get()) != SF_ERR_NO_ERROR)
        throw CHostError(m_strPath + ": reading failed: " + sf_strerror(m_pFile.get()));
    return static_cast<size_t>(std::max<sf_count_t>(iRead, 0));
}

CAudioWriter::CAudioWriter(const std::string& strPath, const AudioFormat& oFormat, int64_t i64FrameCount)
    : m_strPath(strPath)
{
    SF_INFO oInfo{};
    oInfo.samplerate = oFormat.iRate;
    oInfo.channels = oFormat.iChannels;
    oInfo.format = FormatOf(strPath, oFormat, i64FrameCount);
    if (oInfo.format == 0)
        throw CHostError(strPath + ": the ending must be .wav, .flac or .f32");
    if (!sf_format_check(&oInfo))
        throw CHostError(strPath + ": this format can't hold " + std::to_string(oFormat.iChannels) + " channel(s) at " +
                         std::to_string(oFormat.iRate) + " Hz");
    errno = 0;
    m_pFile.reset(sf_open(strPath.c_str(), SFM_WRITE, &oInfo));
    if (!m_pFile)
        throw CHostError(strPath + ": not writable: " + (errno != 0 ? std::strerror(errno) : sf_strerror(nullptr)));
    // No time stamp in the file: equal samples make equal files.
    sf_command(m_pFile.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
    sf_command(m_pFile.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
}

void CAudioWriter::Write(const float* pf32Frames, size_t iFrameCount)
{
    errno = 0;
    const sf_count_t iWritten = sf_writef_float(m_pFile.get(), pf32Frames, static_cast<sf_count_t>(iFrameCount));
    if (iWritten != static_cast<sf_count_t>(iFrameCount))
        throw CHostError(m_strPath +
                         ": writing failed: " + (errno != 0 ? std::strerror(errno) : sf_strerror(m_pFile.get())));
}

void CAudioWriter::Close()
{
    errno = 0;
    if (m_pFile && sf_close(m_pFile.release()) != 0)
        throw CHostError(m_strPath + ": ending the file failed" +
                         (errno != 0 ? std::string(": ") + std::strerror(errno) : ""));
}
