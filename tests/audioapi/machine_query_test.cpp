// What is read of the event log's records and of the machine's registry.
#include "tests/support/logged_machine_test.h"

#include <tuple>
#include <utility>

namespace
{
using MachineQueryTest = LoggedMachineTest;

// Lengths that lie must not lead out of the buffer, nor in circles.
TEST_F(MachineQueryTest, BrokenRecordsEndTheWalk)
{
    EVENTLOGRECORD aRecords[2] = {};
    aRecords[0].Length = sizeof(EVENTLOGRECORD);
    aRecords[1].EventID = 0x40020F01;
    const auto* const pBytes = reinterpret_cast<const BYTE*>(aRecords);
    for (const auto& [iLength, dwBytes, bFound] :
         {std::tuple<size_t, size_t, bool>{sizeof(EVENTLOGRECORD), sizeof(aRecords), true},
          {0, sizeof(aRecords), false},
          {sizeof(EVENTLOGRECORD) + 1, sizeof(aRecords), false},
          {sizeof(EVENTLOGRECORD), sizeof(aRecords) - 1, false},
          {sizeof(EVENTLOGRECORD), sizeof(EVENTLOGRECORD) + 20, false},
          {sizeof(EVENTLOGRECORD), 0, false}})
    {
        aRecords[1].Length = static_cast<DWORD>(iLength);
        const std::vector<BYTE> vecBytes(pBytes, pBytes + dwBytes);
        EXPECT_EQ(!CAudioSYS::TraversalSystemEvent(vecBytes.data(), static_cast<DWORD>(dwBytes), 0x0F01).empty(),
                  bFound)
            << iLength << " " << dwBytes;
    }
}

TEST_F(MachineQueryTest, MachineIsToldFromTheRegistry)
{
    StartLog();
    EXPECT_EQ(CAudioSYS::GetCPUVendors(), AUDIO_CPU_UNKNOWN);
    EXPECT_EQ(CountLog("CAudioREG::ReadRegValue(CPU_INFO_PATH, CPU_NAME_STRING, strCPUName)"), 1U);
    for (const auto& [pName, eVendor] : {std::pair<const char*, AudioCPUVendor>{"intel(r) Core(TM)", AUDIO_CPU_INTEL},
                                         {"Amd Ryzen", AUDIO_CPU_AMD},
                                         {"SnapDragon X", AUDIO_CPU_SNAPDRAGON},
                                         {"Other", AUDIO_CPU_UNKNOWN}})
    {
        SetRegistry(CPU_INFO_PATH, CPU_NAME_STRING, pName);
        EXPECT_EQ(CAudioSYS::GetCPUVendors(), eVendor) << pName;
    }
    EXPECT_EQ(CAudioSYS::IsWindows11System(), 0);
    EXPECT_EQ(CountLog("CAudioREG::ReadRegValue(AUDIO_SYSTEM_VERSION_PATH, "), 3U);
    SetRegistry(AUDIO_SYSTEM_VERSION_PATH, AUDIO_SYSTEM_NAME, "Windows 10 Pro");
    for (const auto& [dwMajor, pBuild, pLine] :
         {std::tuple<DWORD, const char*, const char*>{10, "22000", "Current System:WINDOWS 11 PRO Build Number:22000"},
          {10, "21999", "Current System:Windows 10 Pro Build Number:21999"},
          {6, "22000", "Current System:Windows 10 Pro Build Number:22000"}})
    {
        SetRegistry(AUDIO_SYSTEM_VERSION_PATH, AUDIO_MAJOR_VERSION, dwMajor);
        SetRegistry(AUDIO_SYSTEM_VERSION_PATH, AUDIO_SYSTEM_VERSION, pBuild);
        EXPECT_EQ(CAudioSYS::IsWindows11System(), 0);
        EXPECT_EQ(CountLog(pLine), 1U);
    }
}
} // namespace
