// Requests and command words in their devices' terms.
#include "host/machine/device_traffic.h"

#include "platform/control/devices_native.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

// A driver's request: its number stands little-endian in so many bytes of the input.
struct RequestForm
{
    DWORD dwCode;
    size_t iOffset;
    size_t iSize;
    DWORD dwValue;
    const char* pMeaning;
};
constexpr RequestForm REQUEST_FORMS[] = {
    {0x04001C14, 4, 4, 0, "active"},    {0x04001C14, 4, 4, 2, "deactivated"}, // amplifier
    {0x0022042E, 0, 1, 1, "gain high"}, {0x0022042E, 0, 1, 0, "gain low"},    // one make of codec
    {0x00220864, 0, 4, 0, "gain high"}, {0x00220864, 0, 4, 2, "gain low"},    // the other
};

constexpr UINT64 COMMAND_MASK = 0xFFFF;
constexpr UINT64 COMMAND_QUERY = 0x0202;  // above it the sensor
constexpr UINT64 COMMAND_REPORT = 0x0F02; // above it the temperature, 0 takes the report back

std::string FormatNumber(const char* pFormat, unsigned long long ullNumber)
{
    char strText[64];
    std::snprintf(strText, sizeof(strText), pFormat, ullNumber);
    return strText;
}

std::string Meaning(const machine::SentItem& oItem)
{
    if (oItem.strWhat == "open" && oItem.dwCode != 0)
        return FormatNumber("not opened, error %llu", oItem.dwCode);
    if (oItem.strWhat != "request")
        return oItem.strWhat;
    for (const RequestForm& oForm : REQUEST_FORMS)
    {
        DWORD dwValue = 0;
        if (oForm.dwCode != oItem.dwCode || oItem.vecData.size() < oForm.iOffset + oForm.iSize)
            continue;
        std::memcpy(&dwValue, oItem.vecData.data() + oForm.iOffset, oForm.iSize);
        if (dwValue == oForm.dwValue)
            return oForm.pMeaning;
    }
    return FormatNumber("request 0x%08llX", oItem.dwCode);
}

// The method takes the word as digits or as bytes.
UINT64 WordOf(const machine::SentItem& oItem)
{
    if (oItem.strWhat == "u64Input")
        return std::strtoull(std::string(oItem.vecData.begin(), oItem.vecData.end()).c_str(), nullptr, 10);
    UINT64 u64Word = 0;
    std::memcpy(&u64Word, oItem.vecData.data(), std::min(sizeof(u64Word), oItem.vecData.size()));
    return u64Word;
}

void AddWord(ControllerTraffic& oController, double f64Seconds, UINT64 u64Word)
{
    const UINT64 u64Argument = u64Word >> 16;
    if ((u64Word & COMMAND_MASK) == COMMAND_QUERY && u64Argument <= 0xFF)
        oController.mapQueries[static_cast<int>(u64Argument)].push_back(f64Seconds);
    else if (u64Word == COMMAND_REPORT)
        oController.vecCancels.push_back(f64Seconds);
    else if ((u64Word & COMMAND_MASK) == COMMAND_REPORT && u64Argument <= 0xFFFF)
        oController.vecReports.push_back({f64Seconds, static_cast<int>(u64Argument)});
    else
        oController.vecOther.push_back({f64Seconds, FormatNumber("word 0x%llX", u64Word)});
}

DeviceTraffic& DeviceOf(std::vector<DeviceTraffic>& vecDevices, const std::string& strName)
{
    const auto itDevice = std::find_if(vecDevices.begin(), vecDevices.end(),
                                       [&](const DeviceTraffic& oDevice) { return oDevice.strName == strName; });
    return itDevice != vecDevices.end() ? *itDevice : vecDevices.emplace_back(DeviceTraffic{strName, {}});
}

} // namespace

MachineTraffic ReadTraffic(const CStreamTime& oTime)
{
    MachineTraffic oTraffic;
    for (const machine::SentItem& oItem : machine::Sent())
    {
        const double f64Seconds = oTime.SecondsOf(oItem.stTime);
        if (oItem.strDevice == "controller")
            AddWord(oTraffic.oController, f64Seconds, WordOf(oItem));
        else
            DeviceOf(oTraffic.vecDevices, oItem.strDevice).vecEvents.push_back({f64Seconds, Meaning(oItem)});
    }
    return oTraffic;
}
