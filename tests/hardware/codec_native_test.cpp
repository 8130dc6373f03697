// The codecs' gain: each step of finding the driver, and the values of both makes.
#include "tests/hardware/hardware_test.h"

#include "apo/kelvane/apo_kelvane_everest.h"
#include "apo/kelvane/apo_kelvane_senary.h"
#include "tests/platform/machine_file.h"

namespace
{
constexpr char EVEREST[] = "{F27CDC00-203E-4107-A503-21211537EA43}";
constexpr char SENARY[] = "{54C9343C-2A17-42E8-B4FD-9F9DA27B94D6}";

using CodecTest = HardwareTest;

// From the control word to DeleteInstance, with a second device of the class that nobody may touch.
TEST_F(CodecTest, EachMakeHasItsOwnScale)
{
    DeclareMachine(
        "<codec kind='senary' name='senary'/><codec kind='everest' name='everest'/>"
        "<codec kind='everest' name='everest2'/><codec interface='{00000001-203E-4107-A503-21211537EA43}'/>");
    for (const int iWord : {0, 2, 1})
    {
        EXPECT_EQ(SentTo("everest") + SentTo("senary"), "");
        CManagerInside::Tuning().m_iAlgoCtrlParam[0] = iWord;
        CKelvaneManager::Instance()->LoadSenaryGain();
        CKelvaneManager::Instance()->LoadEverestGain();
    }
    for (const char* pMake : {"3841117 Senary", "3841116 Everest"})
        EXPECT_EQ(CountLog(pMake + std::string(" Gain is Disable!")) * 2 +
                      CountLog(pMake + std::string(" Gain is enable!")),
                  5U);
    const HANDLE hShared =
        CreateFileA((R"(\\?\kelvane#everest#)" + std::string(EVEREST)).c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(CloseHandle(hShared));
    CEverestGainConfig::DeleteInstance();
    CSenaryGainConfig::DeleteInstance();
    EXPECT_EQ(SentTo("everest"), "open 01 open close 00 cancel close");
    EXPECT_EQ(SentTo("senary"), "open 00000000 02000000 cancel close");
    EXPECT_EQ(SentTo("everest2"), "");
    const machine::SentItem oEverest = machine::Sent("everest")[1];
    const machine::SentItem oSenary = machine::Sent("senary")[1];
    EXPECT_TRUE(oEverest.dwCode == 0x0022042E && oEverest.dwOutputSize == 1);
    EXPECT_TRUE(oSenary.dwCode == 0x00220864 && oSenary.dwOutputSize == 4);
    for (const char* pLine :
         {"Set Everest Gain Status to HWGAIN_HIGH,ReturnCode:1", "Set Everest Gain Status to HWGAIN_LOW,ReturnCode:1",
          "Set Senary Gain Status to HWGAIN_HIGH", "Set Senary Gain Status to HWGAIN_LOW"})
        EXPECT_EQ(FindLog(pLine).at(0).strMessage, pLine);
}

// A driver that doesn't answer is waited for once; when it has answered after all, it is asked again.
TEST_F(CodecTest, ARequestThatFailsIsTold)
{
    const std::string strBegin = " DeviceIoControl(m_hDevicePath, IOCTL_";
    const std::string strSenary = strBegin + "SENARY_SET_HWGAIN_HIGHLOW, (LPVOID)(&iGainStatus), sizeof(ULONG), "
                                             "(LPVOID)(&ulResult), sizeof(ULONG), &cbBytesReturned, NULL)";
    DeviceMood oSenary, oEverest;
    Attach("senary", oSenary, SENARY);
    Attach("everest", oEverest, EVEREST);
    CSenaryGainConfig::Instance()->Initialize();
    oEverest.oAnswer.dwError = 31;
    CEverestGainConfig::Instance()->Initialize();
    EXPECT_EQ(CEverestGainConfig::Instance()->SetLowEverestHWGain(), 31U); // asked again
    EXPECT_EQ(TakeFailures().find("31" + strBegin + "EVEREST_SET_HWGAIN_HIGHLOW, "), 0U);
    oSenary.oAnswer = {1117, machine::Completion::Late, 1, {}};
    EXPECT_EQ(CSenaryGainConfig::Instance()->SetLowSenaryHWGain(), 1117U);
    oSenary.oAnswer = {0, machine::Completion::Deaf, 0, {}};
    machine::ForgetSent();
    machine::DivideTimeouts(20);
    EXPECT_EQ(CSenaryGainConfig::Instance()->SetHighSenaryHWGain(), 1460U);
    EXPECT_EQ(CSenaryGainConfig::Instance()->SetLowSenaryHWGain(), 1460U);
    EXPECT_EQ(SentTo("senary"), "00000000");
    EXPECT_EQ(TakeFailures(), "1117" + strSenary + "|1460" + strSenary + "|1460" + strSenary);
    EXPECT_EQ(machine::CompleteHungRequests(), 1U);
    oSenary.oAnswer = {};
    EXPECT_EQ(CSenaryGainConfig::Instance()->SetLowSenaryHWGain(), 0U);
    CSenaryGainConfig::DeleteInstance();
    CEverestGainConfig::DeleteInstance();
}

TEST_F(CodecTest, EachStepThatFailsIsTold)
{
    const std::string strFind = " FindTargetGuid(GUID_KELVANE_SENARY_INTERFACE, &oDevInterfaceData, ulSize)|";
    const std::string strOpen = " OpenDeviceInterface(oDevInterfaceData, oDevInfoData, ulSize)|";
    const struct
    {
        const char* pCall; // that fails, behind iSkip others
        DWORD dwError;
        int iSkip;
        std::string strCode;
        const char* pLine; // of the step itself
        std::string strCaller;
    } aRows[] = {
        {"no device", 0, 0, "12", "", strFind},
        {"SetupDiGetClassDevsW", 8, 0, "6", " (INVALID_HANDLE_VALUE == m_hDevInfo)|", strFind},
        {"SetupDiEnumDeviceInterfaces", 31, 2, "31",
         " SetupDiEnumDeviceInterfaces(m_hDevInfo, nullptr, (LPGUID)&guidInterface, index, pDevInterfaceData)|",
         strFind},
        {"SetupDiGetDeviceInterfaceDetailW", 31, 0, "31", "", strFind},
        {"SetupDiGetDeviceInterfaceDetailW", 122, 0, "13", " (ulSize == 0)|", strOpen},
        {"LocalAlloc", 8, 0, "12", " pDevInterfaceDetailData|", strOpen},
        {"SetupDiGetDeviceInterfaceDetailW", 31, 1, "31",
         " SetupDiGetDeviceInterfaceDetail(m_hDevInfo, &oDevInterfaceData, pDevInterfaceDetailData, ulSize, nullptr, "
         "&oDevInfoData)|",
         strOpen},
        {"open", 5, 0, "6", " (INVALID_HANDLE_VALUE == m_hDevicePath)|", strOpen},
    };
    for (const auto& oRow : aRows)
    {
        const DeviceMood oMood{{}, oRow.pCall == std::string("open") ? oRow.dwError : 0};
        if (oRow.dwError != 0)
            Attach("senary", oMood, SENARY);
        machine::FailNext(oRow.pCall, oRow.dwError, 1, oRow.iSkip);
        CSenaryGainConfig::Instance()->Initialize();
        machine::ClearFailures();
        EXPECT_EQ(CSenaryGainConfig::Instance()->SetLowSenaryHWGain(), 0U);
        CSenaryGainConfig::DeleteInstance();
        EXPECT_EQ(CountLog("Set Senary Gain"), 0U);
        const std::string strOwn = oRow.pLine[0] != '\0' ? oRow.strCode + oRow.pLine : "";
        EXPECT_EQ(TakeFailures(), strOwn + oRow.strCode + oRow.strCaller + oRow.strCode + " FindSenaryCodecRes()");
    }
}
} // namespace
