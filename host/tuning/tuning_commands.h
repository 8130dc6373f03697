// What `apohost tuning` does.
#pragma once

#include <string>

// Throws CHostError for a faulty source, and writes nothing then.
void TuningBuild(const std::string& strSource, const std::string& strOutput);

// Prints the file's sets. Throws CHostError.
void TuningShow(const std::string& strFile);
