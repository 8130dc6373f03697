// How log and dump read their settings from the registry, and follow them.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <functional>
#include <string>

// Operations without state, from any thread.
class CAudioSettings
{
public:
    // The number, or iMissing when it can't be read.
    static UINT32 ReadNumber(const std::string& strPath, const std::string& strName, UINT32 iMissing);
    // The number, or iDefault when it is 0 or can't be read.
    static UINT32 ReadCount(const std::string& strPath, const std::string& strName, UINT32 iDefault);
    // The number of megabytes in bytes, at most the largest 32-bit number; iDefault bytes when it is 0 or can't be
    // read.
    static UINT32 ReadMegabytes(const std::string& strPath, const std::string& strName, UINT32 iDefault);

    // A worker's whole work: makes its event, watches the key, and calls fnRead at the begin and after each change
    // until the flag is 0. Failures are lines of the place oSite; pStartText is that of a watch that can't start.
    static void Follow(const char* pPath, CAudioWorkerEvent& hRegistEvent, const CAudioFlag& iRunFlag,
                       const std::function<void()>& fnRead, const AudioLogSite& oSite, const char* pStartText) noexcept;
};
