// Raw floats, all that this build reads and writes.
#include "host/audio/audio_access.h"
#include "host/host_error.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

struct AudioFileData
{
    FILE* pFile = nullptr;
    size_t iFrameBytes = 0;
};

namespace
{

AudioFileHandle Open(const std::string& strPath, bool bRaw, const char* pMode, int iChannels)
{
    if (!bRaw)
        throw CHostError(strPath + ": this build reads and writes raw floats alone, with the ending .f32");
    AudioFileHandle pFile(
        new AudioFileData{std::fopen(strPath.c_str(), pMode), static_cast<size_t>(iChannels) * sizeof(float)});
    if (pFile->pFile == nullptr)
        throw CHostError(strPath + ": " + std::strerror(errno));
    return pFile;
}

} // namespace

void AudioFileClose::operator()(AudioFileData* pFile) const
{
    if (pFile->pFile != nullptr)
        std::fclose(pFile->pFile);
    delete pFile;
}

AudioFileHandle OpenAudio(const std::string& strPath, bool bRaw, AudioFormat& oFormat, int64_t& i64FrameCount)
{
    AudioFileHandle pFile = Open(strPath, bRaw, "rb", oFormat.iChannels);
    if (_fseeki64(pFile->pFile, 0, SEEK_END) != 0)
        throw CHostError(strPath + ": " + std::strerror(errno));
    i64FrameCount = _ftelli64(pFile->pFile) / static_cast<int64_t>(pFile->iFrameBytes);
    RewindAudio(*pFile);
    return pFile;
}

size_t ReadAudio(AudioFileData& oFile, const std::string& strPath, float* pf32Frames, size_t iFrameCount)
{
    const size_t iRead = std::fread(pf32Frames, oFile.iFrameBytes, iFrameCount, oFile.pFile);
    if (std::ferror(oFile.pFile) != 0)
        throw CHostError(strPath + ": reading failed: " + std::strerror(errno));
    return iRead;
}

bool RewindAudio(AudioFileData& oFile)
{
    return std::fseek(oFile.pFile, 0, SEEK_SET) == 0;
}

AudioFileHandle CreateAudio(const std::string& strPath, const std::string& strEnding, const AudioFormat& oFormat,
                            int64_t)
{
    return Open(strPath, strEnding == ".f32", "wb", oFormat.iChannels);
}

bool WriteAudio(AudioFileData& oFile, const float* pf32Frames, size_t iFrameCount)
{
    return std::fwrite(pf32Frames, oFile.iFrameBytes, iFrameCount, oFile.pFile) == iFrameCount;
}

bool EndAudio(AudioFileHandle pFile)
{
    FILE* const pOpen = pFile->pFile;
    pFile->pFile = nullptr;
    return std::fclose(pOpen) == 0;
}
