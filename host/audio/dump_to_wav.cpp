// Turns a sample dump of the module into an audio file.
#include "host/audio/dump_to_wav.h"

#include "host/host_error.h"

#include <filesystem>
#include <vector>

void DumpToWav(const std::string& strDump, const AudioFormat& oFormat, const std::string& strOutput)
{
    constexpr size_t BLOCK_FRAMES = 65536;
    if (std::filesystem::path(strDump).extension() != ".pcm")
        throw CHostError(strDump + ": not a sample dump, whose name ends in .pcm");
    CAudioReader oReader(strDump, oFormat);
    CAudioWriter oWriter(strOutput, oReader.Format(), oReader.FrameCount());
    std::vector<float> vecBlock(BLOCK_FRAMES * static_cast<size_t>(oReader.Format().iChannels));
    while (const size_t iFrames = oReader.Read(vecBlock.data(), BLOCK_FRAMES))
        oWriter.Write(vecBlock.data(), iFrames);
    oWriter.Close();
}
