// The machine that this process stands for: its folder, clock, power, idleness, registry; with it come its devices.
// Native builds only: tests and host.
#pragma once

#include "platform/linux/machine_devices.h"

#include <windows.h>

#include <string>
#include <vector>

namespace machine
{
// --- The folder ---

// The machine's folder on the host, without a slash at its end: that of UseFolder, else KELVANE_MACHINE, else
// $XDG_DATA_HOME/kelvane/machine. It need not exist. Any thread.
std::string Folder();

// Makes the whole process stand for another machine. Clock, time-outs, power and armed failures fall back to their
// defaults.
// Call while nothing runs.
void UseFolder(const std::string& strFolder);

// Counts the calls of UseFolder, so that whoever keeps something of a folder sees that it is another's. Any thread.
unsigned Generation();

// The platform's name of a file of this host: C:\... within the machine's folder, else Z:\...
std::string PlatformPath(const std::string& strHostPath);

// --- The clock: GetLocalTime and its kin. Time-outs and Sleep go by the real one

// Sets the local time; the clock runs on from there, or stays there while frozen.
void SetClock(const SYSTEMTIME& stLocalTime);
// Moves the clock by milliseconds, back too.
void AdvanceClock(long long iMilliseconds);
void FreezeClock();
void RunClock();
// Runs with this system's time again.
void ResetClock();

// --- Time-outs

// From now on finite time-outs of waits, and sleeps, take that part of their time alone, so that a test of what never
// answers needn't wait as long as the module does.
void DivideTimeouts(DWORD dwParts);
// Milliseconds of this thread so far in time-outs that ran out and in sleeps, as the caller asked for them.
size_t ExpiredMilliseconds();

// --- Power

// What GetSystemPowerStatus gives from now on, instead of what machine.xml declares or else this system's own status.
void SetPowerStatus(const SYSTEM_POWER_STATUS& stStatus);
void ResetPowerStatus();

// --- Idleness

// Returns when every pool thread with a callback waits for an object that isn't signalled; a thread that sleeps, runs
// or is about to start is busy. Not to be called by a pool thread. Gives false if that took longer than the time
// allowed.
bool WaitUntilIdle(DWORD dwMilliseconds = INFINITE);

// --- Faults and leaks

// Lets iSkip calls of the platform function pass, then makes iTimes calls fail with the error code (-1: all further).
// The code is that of GetLastError; for fopen_s its result.
void FailNext(const std::string& strCall, DWORD dwError, int iTimes = 1, int iSkip = 0);
void ClearFailures();

// Calls of this thread so far that may wait, or that ask a file, the registry, a device or another process: what the
// processing thread of a running stream leaves to others. The critical sections' waits aren't counted.
size_t CallsThatMayWait();

// Open kernel handles (events, searches) of this process.
size_t LiveHandles();
// Thread pool work objects that were created and not yet gone.
size_t LiveWork();

// --- The registry

// The file behind it on this host, registry.reg in the machine's folder. It need not exist. Any thread.
std::string RegistryFile();

// What is wrong in the file as it stands, one text each: file, line, reason. The rest of the file counts. Any thread.
std::vector<std::string> RegistryErrors();
} // namespace machine
