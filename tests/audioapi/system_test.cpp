// File searches and the module's place.
#include "tests/support/logged_machine_test.h"

namespace
{
using SystemTest = LoggedMachineTest;

constexpr char PATTERN[] = "params_*.xml";

TEST_F(SystemTest, SearchFindsEveryFileWithBothTexts)
{
    StartLog();
    for (const char* pName : {"params_1.xml", "xparams_2.xml.bak", "Params_3.xml", "params_4.txt", "other.xml"})
        PutFile(std::string("C:\\t\\") + pName, "x");
    MakeFolder("C:\\t\\params_5.xml");
    std::vector<WIN32_FIND_DATAA> vecFile;
    CAudioSYS::GetMatchFileList("C:\\t\\", PATTERN, vecFile);
    std::vector<std::string> vecName;
    for (const WIN32_FIND_DATAA& stFile : vecFile)
        vecName.push_back(stFile.cFileName);
    std::sort(vecName.begin(), vecName.end());
    EXPECT_EQ(vecName, (std::vector<std::string>{"params_1.xml", "xparams_2.xml.bak"}));

    EXPECT_EQ(CAudioSYS::GetFuzzyMatchFile("C:\\none\\", PATTERN), "");
    EXPECT_EQ(FindLog("Find First File failed!C:\\none\\*").at(0).iErrorCode, ERROR_PATH_NOT_FOUND);
}

TEST_F(SystemTest, ModuleNameIsCutAtItsFirstDot)
{
    EXPECT_EQ(CAudioSYS::GetModuleBaseName(nullptr), "test_audioapi");
    EXPECT_STRCASEEQ(CAudioSYS::GetDiagnosticsPath("KelvaneAPO").c_str(), "C:\\PROGRAMDATA\\ZVAudio\\KelvaneAPO");
}
} // namespace
