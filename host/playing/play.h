// Plays a file through the module, as the audio engine would.
#pragma once

#include "host/report/play_result.h"

// Runs the whole stream. Throws CHostError: files, registry, module. Machine registry errors go to stderr.
PlayResult Play(const PlayOptions& oOptions);
