// A real Windows machine: its clock and threads are nobody's to move, its devices take what they are sent.
#include "host/machine/device_traffic.h"
#include "host/machine/host_machine.h"

bool host::CanSettle()
{
    return false;
}

bool host::WaitUntilIdle(unsigned)
{
    return true;
}

void host::FreezeClock()
{
}

void host::RunClock()
{
}

void host::AdvanceClock(long long)
{
}

void host::SetFollowed(const char*, double)
{
}

std::string host::PlatformPath(const std::string& strPath)
{
    return strPath;
}

const char* host::MachineNote()
{
    return "The machine is this one.";
}

std::vector<std::string> host::MachineErrors()
{
    return {};
}

// What drivers were sent can't be read back.
MachineTraffic ReadTraffic(const CStreamTime&)
{
    return {};
}
