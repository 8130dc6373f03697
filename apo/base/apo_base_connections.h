// The check that every operation on the audio engine's connections begins with.
#pragma once

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

// 0, or AUDIO_BAD_DATA with an ERROR line at the caller's place when a connection array or its first entry is missing.
template <class TConnection>
int CheckConnections(const AudioLogSite& oSite, TConnection** ppInputConnections, TConnection** ppOutputConnections)
{
    if (AudioCheckCondition(ppInputConnections == nullptr || *ppInputConnections == nullptr, oSite, AUDIO_BAD_DATA,
                            "ppInputConnections == nullptr || *ppInputConnections == nullptr") ||
        AudioCheckCondition(ppOutputConnections == nullptr || *ppOutputConnections == nullptr, oSite, AUDIO_BAD_DATA,
                            "ppOutputConnections == nullptr || *ppOutputConnections == nullptr"))
        return AUDIO_BAD_DATA;
    return 0;
}
