// The power status: what was set, else what the machine declares, else what this system reports of its supplies.
#include "machine/power.h"

#include "base/failure.h"
#include "devices/device_bus.h"
#include "platform/control/machine.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>

namespace
{
constexpr BYTE BATTERY_CHARGING = 8;
constexpr BYTE BATTERY_NONE = 128;
constexpr BYTE STATUS_UNKNOWN = 255;

std::mutex g_oPowerMutex;
std::optional<SYSTEM_POWER_STATUS> g_oSetStatus;

std::string FirstWord(const std::filesystem::path& oFile)
{
    std::ifstream oStream(oFile);
    std::string strWord;
    oStream >> strWord;
    return strWord;
}

// High above 66 percent, low below 33, critical below 5, as the platform sets them.
BYTE BatteryFlagOf(int iPercent, bool bCharging)
{
    const int iLevel = iPercent > 66 ? 1 : iPercent < 5 ? 4 : iPercent < 33 ? 2 : 0;
    return static_cast<BYTE>(iLevel | (bCharging ? BATTERY_CHARGING : 0));
}

void AddSupply(SYSTEM_POWER_STATUS& stStatus, const std::filesystem::path& oSupply)
{
    const std::string strType = FirstWord(oSupply / "type");
    if (strType == "Mains")
    {
        const bool bOnline = FirstWord(oSupply / "online") == "1";
        stStatus.ACLineStatus = bOnline || stStatus.ACLineStatus == 1 ? 1 : 0;
    }
    const std::string strCapacity = FirstWord(oSupply / "capacity");
    if (strType != "Battery" || strCapacity.empty() || FirstWord(oSupply / "scope") == "Device")
        return;
    const int iPercent = std::clamp(std::atoi(strCapacity.c_str()), 0, 100);
    const std::string strState = FirstWord(oSupply / "status");
    stStatus.BatteryLifePercent = static_cast<BYTE>(iPercent);
    stStatus.BatteryFlag = BatteryFlagOf(iPercent, strState == "Charging");
    if (stStatus.ACLineStatus == STATUS_UNKNOWN)
        stStatus.ACLineStatus = strState == "Discharging" ? 0 : 1;
}

SYSTEM_POWER_STATUS ReadSupplies()
{
    SYSTEM_POWER_STATUS stStatus{STATUS_UNKNOWN, STATUS_UNKNOWN, STATUS_UNKNOWN, 0, INFINITE, INFINITE};
    std::error_code oError;
    for (const auto& oSupply : std::filesystem::directory_iterator("/sys/class/power_supply", oError))
        AddSupply(stStatus, oSupply.path());
    if (stStatus.ACLineStatus != STATUS_UNKNOWN && stStatus.BatteryFlag == STATUS_UNKNOWN)
        stStatus.BatteryFlag = BATTERY_NONE;
    return stStatus;
}
} // namespace

BOOL GetSystemPowerStatus(LPSYSTEM_POWER_STATUS lpSystemPowerStatus)
{
    if (IsToldToFail("GetSystemPowerStatus", false))
        return FALSE;
    const std::optional<SYSTEM_POWER_STATUS> oDeclared = CDeviceBus::Instance().Power();
    const std::lock_guard<std::mutex> oLock(g_oPowerMutex);
    if (g_oSetStatus.has_value())
        *lpSystemPowerStatus = *g_oSetStatus;
    else
        *lpSystemPowerStatus = oDeclared.has_value() ? *oDeclared : ReadSupplies();
    return TRUE;
}

SYSTEM_POWER_STATUS PowerStatusOf(BYTE iMains, BYTE iPercent)
{
    SYSTEM_POWER_STATUS stStatus{iMains, STATUS_UNKNOWN, iPercent, 0, INFINITE, INFINITE};
    if (iPercent <= 100)
        stStatus.BatteryFlag = BatteryFlagOf(iPercent, iMains == 1 && iPercent < 100);
    return stStatus;
}

void machine::SetPowerStatus(const SYSTEM_POWER_STATUS& stStatus)
{
    const std::lock_guard<std::mutex> oLock(g_oPowerMutex);
    g_oSetStatus = stStatus;
}

void ResetPowerStatus()
{
    const std::lock_guard<std::mutex> oLock(g_oPowerMutex);
    g_oSetStatus.reset();
}
