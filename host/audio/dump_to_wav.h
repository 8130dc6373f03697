// Turns a sample dump of the module into an audio file.
#pragma once

#include "host/audio/audio_file.h"

#include <string>

// oFormat says what the dump holds, which it doesn't tell itself. Throws CHostError.
void DumpToWav(const std::string& strDump, const AudioFormat& oFormat, const std::string& strOutput);
