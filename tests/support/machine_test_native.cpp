// The fixture's half that makes and removes the machine: a temporary folder that the native layer stands for.
#include "platform/linux/machine.h"
#include "tests/support/machine_test.h"

#include <stdlib.h>

#include <filesystem>

void MachineTest::SetUp()
{
    std::string strFolder = (std::filesystem::temp_directory_path() / "kelvane-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(strFolder.data()), nullptr);
    m_strHostFolder = strFolder;
    std::filesystem::create_directory(strFolder + "/c");
    std::filesystem::create_directory(strFolder + "/d");
    machine::UseFolder(strFolder);
    m_iResources = CountResources();
}

void MachineTest::TearDown()
{
    machine::ClearFailures();
    EXPECT_TRUE(WaitFor([this] { return CountResources() == m_iResources; }))
        << "handles or thread pool work left open: " << CountResources() << " after " << m_iResources;
    machine::ResetClock();
    machine::ResetPowerStatus();
    std::error_code oIgnored; // what is left in the temporary folder does no harm
    std::filesystem::remove_all(m_strHostFolder, oIgnored);
}

void MachineTest::WaitForWorkers()
{
    ASSERT_TRUE(machine::WaitUntilIdle(10000)) << "a worker never comes to rest";
}

size_t MachineTest::CountResources()
{
    return machine::LiveHandles() + machine::LiveWork();
}
