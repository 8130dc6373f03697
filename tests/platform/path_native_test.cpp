// Paths of the machine.
#include "platform/control/machine_native.h"
#include "platform/hostpath.h"
#include "tests/support/machine_test.h"

namespace
{
using PathTest = MachineTest;
} // namespace

TEST_F(PathTest, PathsFindTheirPlaceWithoutRegardToCase)
{
    PutFile("C:\\Windows\\System32\\Some File.XML", "x");
    const std::string strMachine = machine::Folder();
    const struct
    {
        std::string strPath;
        std::string strHost;
    } aCases[] = {
        {"C:\\Windows\\System32\\Some File.XML", strMachine + "/c/Windows/System32/Some File.XML"},
        {"c:/WINDOWS\\system32/some file.xml", strMachine + "/c/Windows/System32/Some File.XML"},
        {"C:\\windows\\New\\Name.txt", strMachine + "/c/Windows/New/Name.txt"},
        {"C:\\..\\..\\windows\\.\\x\\..\\system32\\", strMachine + "/c/Windows/System32"},
        {"\\\\?\\C:\\windows", strMachine + "/c/Windows"},
        {"D:\\", strMachine + "/d"},
        {"Z:\\proc\\self", "/proc/self"},
        {"/proc/SELF", "/proc/self"},
        {"", ""},
    };
    for (const auto& stCase : aCases)
        EXPECT_EQ(HostPath(stCase.strPath), stCase.strHost) << stCase.strPath;
    EXPECT_EQ(machine::PlatformPath(strMachine + "/c/Windows/x.log"), "C:\\Windows\\x.log");
    EXPECT_EQ(machine::PlatformPath("/proc/self"), "Z:\\proc\\self");
}
