// Tuning files from their source, and back for a person.
#include "host/tuning/tuning_commands.h"

#include "host/host_error.h"
#include "host/tuning/tuning_show.h"
#include "host/tuning/tuning_source.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

void TuningBuild(const std::string& strSource, const std::string& strOutput)
{
    const std::string strName = std::filesystem::path(strSource).filename().string();
    const std::string strText = FormatTuning(ReadTuningSource(strSource), strName);
    std::error_code oNone;
    if (std::filesystem::equivalent(strSource, strOutput, oNone))
        throw CHostError(strOutput + ": is the source itself");
    errno = 0;
    std::ofstream oFile(strOutput, std::ios::binary);
    oFile << strText;
    oFile.close();
    if (!oFile)
        throw CHostError(strOutput + ": not writable: " + std::strerror(errno));
}

void TuningShow(const std::string& strFile)
{
    std::printf("%s", FormatSets(ReadTuning(strFile)).c_str());
}
