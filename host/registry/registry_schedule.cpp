// Registry values that change by the audio's time.
#include "host/registry/registry_schedule.h"

#include "host/host_error.h"
#include "host/registry/registry_text.h"

namespace
{

constexpr double SHORTEST_INTERVAL = 0.01; // seconds

} // namespace

CRegistrySchedule::CRegistrySchedule(const std::vector<RegistryCycle>& vecCycles, int iRate)
{
    for (const auto& [f64Seconds, strAssignment] : vecCycles)
    {
        if (!(f64Seconds >= SHORTEST_INTERVAL))
            throw CHostError(strAssignment + ": not changed more often than every 0.01 s");
        Cycle oCycle;
        oCycle.f64Interval = f64Seconds * iRate;
        const size_t iEqual = strAssignment.find('=');
        if (iEqual == std::string::npos)
            throw CHostError("\"" + strAssignment + "\": KEY\\VALUE=DATA,DATA,... is expected");
        oCycle.strPlace = strAssignment.substr(0, iEqual);
        ParseRegistryValue(oCycle.strPlace);
        for (size_t iBegin = iEqual + 1, iEnd = 0; iEnd != std::string::npos; iBegin = iEnd + 1)
        {
            iEnd = strAssignment.find(',', iBegin);
            oCycle.vecData.push_back(strAssignment.substr(iBegin, iEnd - iBegin));
            ParseRegistryData(oCycle.vecData.back());
        }
        m_vecCycles.push_back(std::move(oCycle));
    }
}

bool CRegistrySchedule::SetDue(int64_t i64Frame)
{
    bool bSet = false;
    for (Cycle& oCycle : m_vecCycles)
    {
        while (static_cast<double>(oCycle.i64Done + 1) * oCycle.f64Interval <= static_cast<double>(i64Frame))
        {
            const size_t iData = static_cast<size_t>(oCycle.i64Done++) % oCycle.vecData.size();
            SetRegistryValue(oCycle.strPlace + "=" + oCycle.vecData[iData]);
            bSet = true;
        }
    }
    return bSet;
}
