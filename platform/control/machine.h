// The machine under the module as a program may tell it: refusals, clock, power; and what can be asked of it. Both
// builds.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Natively the platform layer answers this; on Windows the program's own imports are led through here first. Any
// thread. What only the native machine can be told stands in machine_native.h and devices_native.h.
namespace machine
{
// --- Refusals

// Lets iSkip calls of the platform function pass, then makes iTimes calls fail with the error code (-1: all further).
// The code is that of GetLastError; for fopen_s and the registry's functions their result.
void FailNext(const std::string& strCall, DWORD dwError, int iTimes = 1, int iSkip = 0);
// Calls succeed again.
void ClearFailures();

// --- Clock and power

// GetLocalTime gives this time and goes on from there, or stays there while frozen. Time-outs and Sleep go by the real
// clock.
void SetClock(const SYSTEMTIME& stLocalTime);
// Moves the clock by milliseconds, back too.
void AdvanceClock(long long iMilliseconds);
void FreezeClock();
// What GetSystemPowerStatus gives from now on.
void SetPowerStatus(const SYSTEM_POWER_STATUS& stStatus);
// The real clock and power status again; on Windows the reported events are forgotten too.
void Reset();

// --- Rest and counts

// Whether every pool thread with a callback came to wait for an object that isn't signalled, within the time. One that
// sleeps, runs or is about to start is busy. Not to be called by a pool thread.
bool WaitUntilIdle(DWORD dwMilliseconds = INFINITE);
// Thread pool work objects that were created and not yet gone; open events, files and searches, natively snapshots and
// tokens too.
size_t LiveWork();
size_t LiveHandles();

// Calls of this thread so far that may wait, or that ask a file, the registry, a device or another process: what the
// processing thread of a running stream leaves to others. On Windows those of them that are led through here. The
// critical sections' waits aren't counted.
size_t CallsThatMayWait();

// What the process holds: bytes of memory; natively handles and pool work, on Windows threads, by which it is seen when
// a module's are all gone.
struct Footprint
{
    size_t iBytes = 0;
    size_t iObjects = 0;
};
Footprint GetFootprint();

// What this program reported to the event log, one text each: source, type, number and text with tabs between; line
// ends, tabs and backslashes of the text are escaped.
std::vector<std::string> ReportedEvents();
} // namespace machine
