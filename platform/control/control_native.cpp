// Controls of the native platform layer, which offers them itself.
#include "platform/control/control.h"
#include "platform/linux/machine.h"

#include <fstream>
#include <unistd.h>

void control::FailNext(const std::string& strCall, DWORD dwError, int iTimes, int iSkip)
{
    machine::FailNext(strCall, dwError, iTimes, iSkip);
}

void control::ClearFailures()
{
    machine::ClearFailures();
}

void control::SetClock(const SYSTEMTIME& stLocalTime)
{
    machine::SetClock(stLocalTime);
}

void control::AdvanceClock(long long iMilliseconds)
{
    machine::AdvanceClock(iMilliseconds);
}

void control::FreezeClock()
{
    machine::FreezeClock();
}

void control::SetPowerStatus(const SYSTEM_POWER_STATUS& stStatus)
{
    machine::SetPowerStatus(stStatus);
}

void control::Reset()
{
    machine::ResetClock();
    machine::ResetPowerStatus();
}

bool control::WaitUntilIdle(DWORD dwMilliseconds)
{
    return machine::WaitUntilIdle(dwMilliseconds);
}

size_t control::LiveWork()
{
    return machine::LiveWork();
}

size_t control::LiveHandles()
{
    return machine::LiveHandles();
}

size_t control::CallsThatMayWait()
{
    return machine::CallsThatMayWait();
}

control::Footprint control::GetFootprint()
{
    std::ifstream oFile("/proc/self/statm");
    size_t iSize = 0;
    size_t iResident = 0;
    oFile >> iSize >> iResident;
    return {iResident * static_cast<size_t>(sysconf(_SC_PAGESIZE)), LiveHandles() + LiveWork()};
}

std::vector<std::string> control::ReportedEvents()
{
    std::vector<std::string> vecRecords;
    std::ifstream oFile(machine::Folder() + "/eventlog.txt");
    for (std::string strLine; std::getline(oFile, strLine);)
        vecRecords.push_back(strLine.substr(strLine.find('\t') + 1)); // behind the time
    return vecRecords;
}
