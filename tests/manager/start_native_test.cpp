// The manager's start where the native machine's means are wanted: a step that throws, devices on the way down, times
// of files, a locale with a comma.
#include "apo/kelvane/tuning/apo_kelvane_tuning_loader.h"
#include "platform/hostpath.h"
#include "tests/manager/manager_test.h"
#include "tests/platform/machine_file.h"

#include <clocale>
#include <cmath>
#include <filesystem>

namespace
{
using ManagerStartTest = ManagerTest;

// A fault of one step ends that step alone. On the way down the amplifiers go low before the codecs.
TEST_F(ManagerStartTest, GoesOnBehindAStepThatThrows)
{
    DeclareMachine("<amplifier name='KELVANE_DEVICE0'/><codec kind='everest' name='everest'/>");
    PutFile(AUDIO_KELVANE_DLL_PATH, HostFile(FAKE_THROWS_FILE));
    PutFile(std::string(AUDIO_DRIVER_DIR) + "audio_kelvane_params_1.xml",
            "<SENCE_CATEGORY><VENDOR><NV ID='1' VALUE='{0x1,0x1}'/></VENDOR></SENCE_CATEGORY>");
    for (const char* pName : {AUDIO_DEBUG_LEVEL, AUDIO_DEBUG_SIZE, AUDIO_DEBUG_NUM, AUDIO_EVENT_LEVEL})
        SetRegistry(AUDIO_DEBUG_PATH, pName, 1);
    MakeFolder(LogFolder());
    CKelvaneManager::Instance()->Initialize(nullptr);
    EXPECT_TRUE(HasLine("ERROR", 13, "LoadProcessDll failed:no version"));
    EXPECT_FALSE(CKelvaneManager::Instance()->GetLoadDLLStatus());
    CKelvaneManager::DeleteInstance();
    std::string strSent; // each device by its first letter
    for (const machine::SentItem& oItem : machine::Sent())
        strSent += oItem.strDevice.substr(0, 1) + oItem.strWhat + " ";
    EXPECT_EQ(strSent, "Kopen Krequest eopen erequest Krequest Kcancel Kclose erequest ecancel eclose ");
}

// By the later of both times: b is made later, then one of the two is written at another time.
TEST_F(ManagerStartTest, TheNewestFileIsMadeOrWrittenLast)
{
    const std::string strFile = AUDIO_DRIVER_DIR + std::string("audio_kelvane_params_");
    for (const int iNewest : {1, 2})
    {
        CKelvaneManager* const pManager = Restart();
        for (const int iFile : {1, 2})
        {
            DeleteFileA((strFile + std::to_string(iFile) + ".xml").c_str());
            PutFile(strFile + std::to_string(iFile) + ".xml",
                    "<SENCE_CATEGORY><SENSOR_RANGE_COMMAND VALUE='" + std::to_string(iFile) + "'/></SENCE_CATEGORY>");
            LetTimePass();
        }
        const auto oWritten = std::filesystem::file_time_type::clock::now() - std::chrono::hours(iNewest == 2);
        std::filesystem::last_write_time(HostPath(strFile + std::to_string(iNewest) + ".xml"), oWritten);
        pManager->LoadConfigFile();
        EXPECT_EQ(CManagerInside::Tuning().m_vecSensorRangeCommand, std::vector<INT32>{iNewest});
    }
}

// Such a locale, made of the system's own.
TEST_F(ManagerStartTest, NumbersAreReadTheSameUnderEveryLocale)
{
    const std::string strFolder = machine::Folder() + "/locale/comma";
    std::filesystem::create_directories(strFolder);
    std::string strNumeric = HostFile("/usr/lib/locale/C.utf8/LC_NUMERIC");
    strNumeric.at(strNumeric.find('.')) = ',';
    std::ofstream(strFolder + "/LC_NUMERIC") << strNumeric;
    setenv("LOCPATH", (machine::Folder() + "/locale").c_str(), 1);
    ASSERT_NE(setlocale(LC_NUMERIC, "comma"), nullptr);
    EXPECT_EQ(std::to_string(0.5), "0,500000");
    const auto pParam = CKelvaneTuningLoader().ParseAlgorithmPara(
        "0,0,0,0,0,0,0,0,0x1,0.00393,-1.5e1,+.25,0x1F,1e999,-1e-999,.5x,x,--5,-0X1.8p1", "");
    setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    const double aExpected[] = {0.00393, -15, 0.25, 31, HUGE_VAL, 0, 0.5, 0, 0, -3};
    for (size_t i = 0; i < std::size(aExpected); ++i)
        EXPECT_EQ(pParam->sLSMTvcCoef0[i], aExpected[i]) << i;
}
} // namespace
