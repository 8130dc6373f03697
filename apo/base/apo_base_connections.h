// The check that every operation on the audio engine's connections begins with.
#pragma once

#include "audioapi/audio_api_log.h"

// 0, or 13 with an ERROR line at the caller's place when a connection array or its first entry is missing.
template <class TConnection>
int CheckConnections(const AudioLogSite& oSite, TConnection** ppInputConnections, TConnection** ppOutputConnections)
{
    if (AudioCheckCondition(ppInputConnections == nullptr || *ppInputConnections == nullptr, oSite, 13,
                            "ppInputConnections == nullptr || *ppInputConnections == nullptr") ||
        AudioCheckCondition(ppOutputConnections == nullptr || *ppOutputConnections == nullptr, oSite, 13,
                            "ppOutputConnections == nullptr || *ppOutputConnections == nullptr"))
        return 13;
    return 0;
}
