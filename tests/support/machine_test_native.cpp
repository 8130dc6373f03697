// The fixture's half that makes and removes the machine: a temporary folder that the native layer stands for.
#include "platform/control/machine_native.h"
#include "tests/support/machine_test.h"

#include <cstdlib>
#include <filesystem>

void MachineTest::MakeMachine()
{
    std::string strFolder = (std::filesystem::temp_directory_path() / "kelvane-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(strFolder.data()), nullptr);
    m_strHostFolder = strFolder;
    std::filesystem::create_directory(strFolder + "/c");
    std::filesystem::create_directory(strFolder + "/d");
    machine::UseFolder(strFolder);
}

void MachineTest::RemoveMachine()
{
    std::error_code oIgnored; // what is left in the temporary folder does no harm
    std::filesystem::remove_all(m_strHostFolder, oIgnored);
}

void MachineTest::SetElsewhere(const std::string& strPath, const std::string& strName, DWORD dwValue)
{
    const auto oHost = std::filesystem::read_symlink("/proc/self/exe").replace_filename("apohost");
    const std::string strCommand = "KELVANE_MACHINE='" + machine::Folder() + "' '" + oHost.string() + "' reg set '" +
                                   strPath + "\\" + strName + "=" + std::to_string(dwValue) + "' >/dev/null";
    ASSERT_EQ(std::system(strCommand.c_str()), 0) << strCommand;
}
