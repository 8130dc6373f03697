// Audio files of the host: what is checked of them, and a file over and over.
#include "host/audio/audio_file.h"

#include "host/audio/audio_access.h"
#include "host/host_error.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace
{

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

// What a raw file of so many bytes is taken for.
AudioFormat RawFormat(const std::string& strPath, const AudioFormat& oAsked, uintmax_t iBytes)
{
    const AudioFormat oFormat{oAsked.iRate > 0 ? oAsked.iRate : 48000, oAsked.iChannels > 0 ? oAsked.iChannels : 2};
    const uintmax_t iFrameBytes = static_cast<uintmax_t>(oFormat.iChannels) * sizeof(float);
    if (iBytes % iFrameBytes != 0)
        throw CHostError(strPath + ": " + std::to_string(iBytes) + " bytes are no whole number of frames of " +
                         std::to_string(oFormat.iChannels) + " floats; is --channels right?");
    return oFormat;
}

void CheckAsked(const std::string& strPath, const char* pOption, const char* pUnit, int iAsked, int iHeld)
{
    if (iAsked > 0 && iAsked != iHeld)
        throw CHostError(strPath + ": the file has " + std::to_string(iHeld) + " " + pUnit + ", " + pOption +
                         " asks for " + std::to_string(iAsked) + "; the host doesn't convert");
}

std::string SystemReason()
{
    return errno != 0 ? std::string(": ") + std::strerror(errno) : "";
}

} // namespace

CAudioReader::CAudioReader(const std::string& strPath, const AudioFormat& oAsked) : m_strPath(strPath)
{
    const uintmax_t iBytes = ReadableSize(strPath);
    const bool bRaw = IsRaw(strPath);
    if (bRaw)
        m_oFormat = RawFormat(strPath, oAsked, iBytes);
    m_pFile = OpenAudio(strPath, bRaw, m_oFormat, m_i64FrameCount);
    if (m_i64FrameCount <= 0)
        throw CHostError(strPath + ": the file holds no audio");
    CheckAsked(strPath, "--rate", "Hz", oAsked.iRate, m_oFormat.iRate);
    CheckAsked(strPath, "--channels", "channel(s)", oAsked.iChannels, m_oFormat.iChannels);
}

void CAudioReader::Repeat(int64_t i64FrameCount)
{
    m_i64RepeatFrames = m_i64FrameCount;
    m_i64FrameCount = m_i64Left = i64FrameCount;
}

size_t CAudioReader::Read(float* pf32Frames, size_t iFrameCount)
{
    if (m_i64RepeatFrames == 0)
        return ReadAudio(*m_pFile, m_strPath, pf32Frames, iFrameCount);
    const size_t iWanted = static_cast<size_t>(std::min<int64_t>(m_i64Left, static_cast<int64_t>(iFrameCount)));
    size_t iDone = 0;
    while (iDone < iWanted)
    {
        float* const pf32Rest = pf32Frames + iDone * static_cast<size_t>(m_oFormat.iChannels);
        // Not more than the file has, for a short read clears what was asked for.
        const size_t iRest = std::min(iWanted - iDone, static_cast<size_t>(m_i64RepeatFrames));
        size_t iRead = ReadAudio(*m_pFile, m_strPath, pf32Rest, iRest);
        if (iRead == 0 && RewindAudio(*m_pFile))
            iRead = ReadAudio(*m_pFile, m_strPath, pf32Rest, iRest);
        if (iRead == 0)
            throw CHostError(m_strPath + ": can't be read once more");
        iDone += iRead;
    }
    m_i64Left -= static_cast<int64_t>(iDone);
    return iDone;
}

CAudioWriter::CAudioWriter(const std::string& strPath, const AudioFormat& oFormat, int64_t i64FrameCount)
    : m_strPath(strPath), m_pFile(CreateAudio(strPath, Ending(strPath), oFormat, i64FrameCount))
{
}

void CAudioWriter::Write(const float* pf32Frames, size_t iFrameCount)
{
    errno = 0;
    if (!WriteAudio(*m_pFile, pf32Frames, iFrameCount))
        throw CHostError(m_strPath + ": writing failed" + SystemReason());
}

void CAudioWriter::Close()
{
    errno = 0;
    if (m_pFile && !EndAudio(std::move(m_pFile)))
        throw CHostError(m_strPath + ": ending the file failed" + SystemReason());
}
