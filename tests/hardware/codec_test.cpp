// The codecs' gain: each step of finding the driver, and the values of both makes.
#include "tests/hardware/hardware_test.h"

#include "apo/kelvane/apo_kelvane_everest.h"
#include "apo/kelvane/apo_kelvane_senary.h"

namespace
{
constexpr char EVEREST[] = "{F27CDC00-203E-4107-A503-21211537EA43}";
constexpr char SENARY[] = "{54C9343C-2A17-42E8-B4FD-9F9DA27B94D6}";

using CodecTest = HardwareTest;

// From Initialize to DeleteInstance, with a second device of the class that nobody may touch.
TEST_F(CodecTest, EachMakeHasItsOwnScale)
{
    StartLog(AUDIO_LEVEL_DEBUG);
    DeviceMood oMood;
    oMood.oAnswer.vecOutput = {0, 0, 0, 0};
    Attach("everest", oMood, EVEREST);
    Attach("everest2", oMood, EVEREST);
    Attach("senary", oMood, SENARY);
    CEverestGainConfig::Instance()->Initialize();
    CSenaryGainConfig::Instance()->Initialize();
    EXPECT_EQ(SentTo("everest"), "open 01");
    EXPECT_EQ(SentTo("senary"), "open 00000000");
    EXPECT_EQ(machine::Sent("everest")[1].dwCode, 0x0022042EU);
    EXPECT_EQ(machine::Sent("everest")[1].dwOutputSize, 1U);
    EXPECT_EQ(machine::Sent("senary")[1].dwCode, 0x00220864U);
    EXPECT_EQ(machine::Sent("senary")[1].dwOutputSize, 4U);
    CEverestGainConfig::DeleteInstance();
    CSenaryGainConfig::DeleteInstance();
    EXPECT_EQ(SentTo("everest").substr(0, 10), "open 01 00");
    EXPECT_EQ(SentTo("senary").substr(0, 22), "open 00000000 02000000");
    EXPECT_EQ(SentTo("everest2"), "");
    for (const char* pLine :
         {"Set Everest Gain Status to HWGAIN_HIGH,ReturnCode:1", "Set Everest Gain Status to HWGAIN_LOW,ReturnCode:1",
          "Set Senary Gain Status to HWGAIN_HIGH", "Set Senary Gain Status to HWGAIN_LOW"})
        EXPECT_TRUE(HasLine(pLine, 0, "DEBUG")) << pLine;
}

TEST_F(CodecTest, EachStepThatFailsIsTold)
{
    const std::string strFind = "FindTargetGuid(GUID_KELVANE_SENARY_INTERFACE, &oDevInterfaceData, ulSize)";
    const std::string strOpen = "OpenDeviceInterface(oDevInterfaceData, oDevInfoData, ulSize)";
    const struct
    {
        const char* pCall; // that fails, behind iSkip others
        DWORD dwError;
        int iSkip;
        int iCode;
        const char* pLine; // of the step itself
        std::string strCaller;
    } aRows[] = {
        {"no device", 0, 0, 12, "", strFind},
        {"SetupDiGetClassDevsW", 8, 0, 6, "(INVALID_HANDLE_VALUE == m_hDevInfo)", strFind},
        {"SetupDiEnumDeviceInterfaces", 31, 2, 31,
         "SetupDiEnumDeviceInterfaces(m_hDevInfo, nullptr, (LPGUID)&guidInterface, index, pDevInterfaceData)", strFind},
        {"SetupDiGetDeviceInterfaceDetailW", 31, 0, 31, "", strFind},
        {"SetupDiGetDeviceInterfaceDetailW", 122, 0, 13, "(ulSize == 0)", strOpen},
        {"LocalAlloc", 8, 0, 12, "pDevInterfaceDetailData", strOpen},
        {"SetupDiGetDeviceInterfaceDetailW", 31, 1, 31,
         "SetupDiGetDeviceInterfaceDetail(m_hDevInfo, &oDevInterfaceData, pDevInterfaceDetailData, ulSize, nullptr, "
         "&oDevInfoData)",
         strOpen},
        {"refused", 5, 0, 6, "(INVALID_HANDLE_VALUE == m_hDevicePath)", strOpen},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(std::string(oRow.pCall) + " " + oRow.pLine);
        RestartLog();
        const DeviceMood oMood{{}, oRow.pCall == std::string("refused") ? oRow.dwError : 0};
        if (oRow.dwError != 0)
            Attach("senary", oMood, SENARY);
        machine::FailNext(oRow.pCall, oRow.dwError, 1, oRow.iSkip);
        CSenaryGainConfig::Instance()->Initialize();
        machine::ClearFailures();
        EXPECT_EQ(oRow.pLine[0] == '\0' || HasLine(oRow.pLine, oRow.iCode), true);
        EXPECT_TRUE(HasLine(oRow.strCaller, oRow.iCode));
        EXPECT_TRUE(HasLine("FindSenaryCodecRes()", oRow.iCode));
        EXPECT_EQ(CSenaryGainConfig::Instance()->SetLowSenaryHWGain(), 0U);
        CSenaryGainConfig::DeleteInstance();
        EXPECT_EQ(CountLog("Set Senary Gain"), 0U);
    }
}
} // namespace
