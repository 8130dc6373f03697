// What the native machine alone can be told: its folder, a clock that runs on, short time-outs; with it come its
// devices.
#pragma once

#include "platform/control/devices_native.h"
#include "platform/control/machine.h"

namespace machine
{
// --- The folder

// The machine's folder on the host, without a slash at its end: that of UseFolder, else KELVANE_MACHINE, else
// $XDG_DATA_HOME/kelvane/machine. It need not exist. Any thread.
std::string Folder();

// Makes the whole process stand for another machine. Clock, time-outs, power and armed failures fall back to their
// defaults. Call while nothing runs.
void UseFolder(const std::string& strFolder);

// The platform's name of a file of this host: C:\... within the machine's folder, else Z:\...
std::string PlatformPath(const std::string& strHostPath);

// --- Clock and time-outs

// A frozen clock runs on from where it stands.
void RunClock();

// From now on finite time-outs of waits, and sleeps, take that part of their time alone, so that a test of what never
// answers needn't wait as long as the module does.
void DivideTimeouts(DWORD dwParts);
// Milliseconds of this thread so far in time-outs that ran out and in sleeps, as the caller asked for them.
size_t ExpiredMilliseconds();

// --- The registry

// The file behind it on this host, registry.reg in the machine's folder. It need not exist. Any thread.
std::string RegistryFile();

// What is wrong in the file as it stands, one text each: file, line, reason. The rest of the file counts. Any thread.
std::vector<std::string> RegistryErrors();
} // namespace machine
