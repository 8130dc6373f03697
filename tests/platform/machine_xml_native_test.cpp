// machine.xml: the devices of a machine, and what is told of a file that is wrong.
#include "tests/platform/machine_file.h"
#include "tests/support/machine_test.h"

namespace
{
using MachineXmlTest = MachineTest;

bool IsThere(const char* pDevice)
{
    const HANDLE hDevice = CreateFileA(pDevice, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return hDevice != INVALID_HANDLE_VALUE && CloseHandle(hDevice);
}
} // namespace

TEST_F(MachineXmlTest, TellsFileLineAndReason)
{
    const struct
    {
        const char* pElements;
        int iLine; // in the file, where the elements begin on line 2
        const char* pReason;
    } aRows[] = {
        {"\n<amplifier name='A' late='soon'/>", 3, "late=\"soon\" is not a whole number from 0 to 3600000"},
        {"<amplifier name='A' lat='1'/>", 2, "unknown attribute: lat"},
        {"<amplifier name='A'/>\n<amplifier name='A'/>", 3, "name=\"A\" is taken"},
        {"<codec interface='F27C'/>", 2, "is not an id in braces"},
        {"<controller input='u64Input'><sensor id='1' temperature='hot'/></controller>", 2,
         "is not a number from -255.9"},
        {"<fan/>", 2, "<fan> is no element of a machine"},
        {"<power>", 0, "can't be read"},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(oRow.pElements);
        DeclareMachine(oRow.pElements);
        const std::vector<std::string> vecErrors = machine::DeviceErrors();
        ASSERT_FALSE(vecErrors.empty());
        const std::string strPlace = machine::Folder() + "/machine.xml:";
        EXPECT_EQ(vecErrors[0].find(strPlace + (oRow.iLine > 0 ? std::to_string(oRow.iLine) + ": " : "")), 0U)
            << vecErrors[0];
        EXPECT_NE(vecErrors[0].find(oRow.pReason), std::string::npos) << vecErrors[0];
    }
}

TEST_F(MachineXmlTest, SoundElementsCountBesideWrongOnes)
{
    EXPECT_TRUE(machine::DeviceErrors().empty()) << "a machine without the file";
    EXPECT_FALSE(IsThere("\\\\.\\GOOD"));
    DeclareMachine("<amplifier name='BAD' late='-1'/><amplifier name='GOOD'/><power percent='41' ac='0'/>");
    EXPECT_EQ(machine::DeviceErrors().size(), 1U);
    EXPECT_TRUE(IsThere("\\\\.\\GOOD"));
    EXPECT_FALSE(IsThere("\\\\.\\BAD"));
    SYSTEM_POWER_STATUS stPower{};
    EXPECT_TRUE(GetSystemPowerStatus(&stPower));
    EXPECT_EQ(stPower.BatteryLifePercent, 41);
    EXPECT_EQ(stPower.ACLineStatus, 0);
    machine::SetPowerStatus({1, 0, 99, 0, 0, 0});
    EXPECT_TRUE(GetSystemPowerStatus(&stPower));
    EXPECT_EQ(stPower.BatteryLifePercent, 99) << "what a test sets comes first";
}
