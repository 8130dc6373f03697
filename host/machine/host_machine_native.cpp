// The machine that the native platform layer stands for.
#include "host/machine/host_machine.h"

#include "platform/control/devices_native.h"
#include "platform/control/machine_native.h"

bool host::CanSettle()
{
    return true;
}

bool host::WaitUntilIdle(unsigned iMilliseconds)
{
    return machine::WaitUntilIdle(iMilliseconds);
}

void host::FreezeClock()
{
    machine::FreezeClock();
}

void host::RunClock()
{
    machine::RunClock();
}

void host::AdvanceClock(long long iMilliseconds)
{
    machine::AdvanceClock(iMilliseconds);
}

void host::SetFollowed(const char* pWhat, double f64Celsius)
{
    machine::SetFollowed(pWhat, f64Celsius);
}

std::string host::PlatformPath(const std::string& strPath)
{
    return machine::PlatformPath(strPath);
}

const char* host::MachineNote()
{
    return "The machine is the folder in KELVANE_MACHINE.";
}

std::vector<std::string> host::MachineErrors()
{
    std::vector<std::string> vecErrors = machine::DeviceErrors();
    for (std::string& strError : machine::RegistryErrors())
        vecErrors.push_back(std::move(strError));
    return vecErrors;
}
