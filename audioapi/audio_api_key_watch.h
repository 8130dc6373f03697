// How a worker follows a registry key: the one body of the monitor's watchers and of the log's and the dump's settings.
#pragma once

#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_worker_event.h"
#include "audioapi/audio_api_worker_loop.h"

#include <windows.h>

#include <exception>

struct AudioLogSite;

// The watch of one key, on the worker's thread; ends, and closes key and event, with the scope.
class CAudioKeyWatch
{
public:
    // hEvent is the worker's, and outlives the watch.
    explicit CAudioKeyWatch(CAudioWorkerEvent& hEvent) : m_hEvent(hEvent) {}
    ~CAudioKeyWatch() { CAudioREG::RegNotifyClose(m_hKey, m_hEvent); }
    CAudioKeyWatch(const CAudioKeyWatch&) = delete;
    CAudioKeyWatch& operator=(const CAudioKeyWatch&) = delete;

    // Makes the event. A failure is a line of the place oSite, with pEventText.
    bool MakeEvent(const AudioLogSite& oSite, const char* pEventText) noexcept;
    // Opens the key and arms the watch. A failure is a line of the place oSite, with pStartText, unless that is null.
    bool Start(const char* pPath, const AudioLogSite& oSite, const char* pStartText) noexcept;

    // Calls fnRead after each change until the flag is 0. The watch is armed before each reading: a change that comes
    // while the values are read wakes the worker again.
    template <class Read> void Follow(const CAudioFlag& iRunFlag, const Read& fnRead) noexcept
    {
        RunWorkerLoop(iRunFlag, m_hEvent,
                      [&]
                      {
                          CAudioREG::RegNotifyReset(m_hKey, m_hEvent);
                          ReadValues(fnRead);
                      });
    }
    // Calls fnRead. Without memory what was read before stays until the next change.
    template <class Read> static void ReadValues(const Read& fnRead) noexcept
    try
    {
        fnRead();
    }
    catch (const std::exception&)
    {
    }

private:
    CAudioWorkerEvent& m_hEvent;
    HKEY m_hKey = nullptr;
};
