// What the host asks of the machine it runs on beside the platform's calls, and what it can have there.
#pragma once

#include <string>
#include <vector>

// Natively the platform layer answers; on Windows nobody can say when the module's threads rest or move the clock.
namespace host
{
// Whether a stream whose module works on threads of its own can be rendered as fast as it goes. Without it such a
// stream is paced by the clock.
bool CanSettle();
// Returns when every thread of the module waits, true, or after the time; where nobody knows, at once.
bool WaitUntilIdle(unsigned iMilliseconds);

// The machine's clock, which offline only the audio's time moves; real where there is no other.
void FreezeClock();
void RunClock();
void AdvanceClock(long long iMilliseconds);

// What a sensor that follows it shows from now on, degrees Celsius. Nothing where the sensors are real.
void SetFollowed(const char* pWhat, double f64Celsius);

// The platform's name of a file of this system.
std::string PlatformPath(const std::string& strPath);
// Where the machine is, for a person who asks for help.
const char* MachineNote();
// What is wrong in the machine's description, one text each.
std::vector<std::string> MachineErrors();
} // namespace host
