// The embedded controller's channel: connecting step by step, words out, answers back.
#include "tests/hardware/hardware_test.h"

#include "apo/kelvane/apo_kelvane_wmi.h"
#include "tests/platform/machine_file.h"

#include <tuple>

namespace
{
constexpr INT64 QUERY = 0x1A0202;
constexpr INT64 SET = 0x0F02;
constexpr char EXEC[] = "m_pServices->ExecMethod(m_pWmiObjectName, m_pWmiMethodName, 0, nullptr, m_pObjectInst, "
                        "&pOutParams, nullptr)";
constexpr char NO_DATA[] = "memcpy_s(uOutValue, WMI_OUTPUT_BUFF_LENGTH, ulRetureValue, WMI_OUTPUT_BUFF_LENGTH)";

using ControllerChannelTest = HardwareTest;

// The machine's own controller, with one sensor at 45.6 degrees.
void DeclareController(const std::string& strAttributes, const std::string& strElements = "")
{
    DeclareMachine("<controller input='u64Input' " + strAttributes + "><sensor id='0x1A' temperature='45.6'/>" +
                   strElements + "</controller>");
}
std::string Refusal(const std::string& strStep, const std::string& strCode)
{
    return "<refuse step='" + strStep + "' code='" + strCode + "'/>";
}

TEST_F(ControllerChannelTest, AFailedConnectionIsToldAndStaysClosed)
{
    const HRESULT hDenied = static_cast<HRESULT>(0x80041003);
    const struct
    {
        const char* pStep;
        const char* pCall;
        const char* pPointer; // that a success without an object is told by
    } aRows[] = {
        {"CoCreateInstance",
         "CoCreateInstance(CLSID_WbemLocator, 0, CLSCTX_INPROC_SERVER, IID_IWbemLocator, (LPVOID *)&m_pLocator)",
         "m_pLocator"},
        {"ConnectServer", "m_pLocator->ConnectServer(m_pWmiRootName, NULL, NULL, 0, NULL, 0, 0, &m_pServices)",
         "m_pServices"},
        {"CoSetProxyBlanket",
         "CoSetProxyBlanket(m_pServices, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL, "
         "RPC_C_IMP_LEVEL_IMPERSONATE, NULL, EOAC_NONE)",
         nullptr},
        {"GetObject", "m_pServices->GetObject(m_pWmiClassName, 0, NULL, &m_pObject, NULL)", "m_pObject"},
        {"GetMethod", "m_pObject->GetMethod(m_pWmiMethodName, 0, &m_pDefinition, nullptr)", "m_pDefinition"},
        {"SpawnInstance", "m_pDefinition->SpawnInstance(0, &m_pObjectInst)", "m_pObjectInst"},
    };
    for (const auto& oRow : aRows)
        for (const bool bPointerOnly : {false, true})
        {
            if (bPointerOnly && oRow.pPointer == nullptr)
                continue;
            DeclareController("", Refusal(oRow.pStep, bPointerOnly ? "0" : "0x80041003"));
            CKelvaneWMI oWMI;
            const HRESULT hResult = bPointerOnly ? 12 : hDenied;
            EXPECT_EQ(oWMI.Initialize(), hResult);
            INT32 iTemperature = 7;
            EXPECT_EQ(oWMI.QueryTemperature(QUERY, iTemperature), 6);
            EXPECT_EQ(oWMI.SetECTemperature(SET), 6);
            EXPECT_EQ(iTemperature, 7);
            EXPECT_EQ(TakeFailures(), std::to_string(hResult) + " " + (bPointerOnly ? oRow.pPointer : oRow.pCall));
            EXPECT_EQ(SentTo("controller"), "");
        }
}

TEST_F(ControllerChannelTest, AnswersAreTakenOrRefused)
{
    const HRESULT hFailed = static_cast<HRESULT>(0x80041001);
    const struct
    {
        const char* pAttributes;
        std::string strElements;
        HRESULT hResult;
        const char* pLine;
    } aRows[] = {
        {"", "", 0, ""},
        {"error='7'", "", 13, "S_OK != uOutValue[WMI_ERRORCODE_LOCATION]"},
        {"bytes='255'", "", 22, NO_DATA},
        {"bytes='0'", "", 22, NO_DATA},
        {"array='no'", "", E_INVALIDARG,
         "SafeArrayAccessData(oVarReturn.parray, reinterpret_cast<void **>(&ulRetureValue))"},
        {"", Refusal("ExecMethod", "0x80041001"), hFailed, EXEC},
        {"", Refusal("ExecMethod", "0"), 12, "pOutParams"},
        {"", Refusal("Get", "0x80041001"), hFailed, "pOutParams->Get(L\"u8Output\", 0, &oVarReturn, nullptr, 0)"},
        {"", Refusal("Put", "0x80041001"), hFailed, "m_pObjectInst->Put(L\"u8Input\", 0, &oVar, CIM_EMPTY)"},
    };
    for (const auto& oRow : aRows)
    {
        DeclareController(oRow.pAttributes, oRow.strElements);
        CKelvaneWMI oWMI;
        ASSERT_EQ(oWMI.Initialize(), 0);
        INT32 iTemperature = 7;
        EXPECT_EQ(oWMI.QueryTemperature(QUERY, iTemperature), oRow.hResult) << oRow.pLine;
        EXPECT_EQ(iTemperature, oRow.hResult == 0 ? 4560 : 7);
        EXPECT_EQ(oWMI.SetECTemperature(SET), oRow.hResult);
        const std::string strLine = std::to_string(oRow.hResult) + " " + oRow.pLine;
        const std::string strFailures = TakeFailures();
        EXPECT_EQ(strFailures.substr(0, strFailures.find('|')), oRow.hResult == 0 ? "" : strLine);
    }
}

TEST_F(ControllerChannelTest, SensorsFollowTheMachinesClock)
{
    machine::FreezeClock();
    DeclareController(
        "", "<sensor id='1' temperature='30' per-second='0.5' until='40'/><sensor id='2'><point at='10' "
            "temperature='-3.5'/><point at='20' temperature='80'/><point at='40' temperature='20'/></sensor>");
    CKelvaneWMI oWMI;
    ASSERT_EQ(oWMI.Initialize(), 0);
    const struct
    {
        int iSeconds; // since the row before
        INT32 iRamp, iPoints;
    } aRows[] = {{0, 3000, -350}, {15, 3750, 3830}, {5, 4000, 8000}, {11, 4000, 4700}, {60, 4000, 2000}};
    for (const auto& oRow : aRows)
    {
        machine::AdvanceClock(oRow.iSeconds * 1000LL);
        INT32 iTemperature = 0;
        EXPECT_EQ(oWMI.QueryTemperature(0x010202, iTemperature), 0);
        EXPECT_EQ(iTemperature, oRow.iRamp);
        EXPECT_EQ(oWMI.QueryTemperature(0x020202, iTemperature), 0);
        EXPECT_EQ(iTemperature, oRow.iPoints);
    }
    INT32 iTemperature = 7;
    EXPECT_EQ(oWMI.QueryTemperature(0x030202, iTemperature), 13) << "no such sensor";
    machine::RemoveController();
    EXPECT_EQ(oWMI.SetECTemperature(SET), WBEM_E_FAILED);
}

TEST_F(ControllerChannelTest, WithoutItsThreadItStaysClosed)
{
    DeclareController("");
    for (const auto& [pCall, iSkip, pFailure] :
         {std::tuple<const char*, int, const char*>{"CreateEventW", 0, "6 m_pState->hCallEvent"},
          {"CreateEventW", 1, "6 m_pState->hDoneEvent"},
          {"CreateEventW", 2, "6 m_pState->hEndEvent"},
          {"CreateThreadpoolWork", 0, "6 Create Thread failed!"}})
    {
        machine::FailNext(pCall, 8, 1, iSkip);
        CKelvaneWMI oWMI;
        EXPECT_EQ(oWMI.Initialize(), 6) << pFailure;
        EXPECT_EQ(oWMI.SetECTemperature(SET), 6) << pFailure;
        EXPECT_EQ(TakeFailures(), pFailure);
    }
}

// A silent controller is waited for once, and again when a call came back in time. Who goes while a call is out leaves
// it its thread, and the module stays; who came meanwhile connects behind it.
// In full time-outs, for the thread measures how late a call comes back.
TEST_F(ControllerChannelTest, ASilentControllerIsWaitedForOnce)
{
    machine::Controller oSound;
    oSound.fScript = [](UINT64) { return machine::TemperatureAnswer(300); };
    machine::Controller oController = oSound;
    oController.eCompletion = machine::Completion::Never;
    for (const bool bLeave : {false, true})
    {
        machine::AttachController(oController);
        auto pWMI = std::make_unique<CKelvaneWMI>();
        ASSERT_EQ(pWMI->Initialize(), 0);
        machine::ForgetSent();
        RestartLog();
        INT32 iTemperature = 7;
        EXPECT_EQ(pWMI->QueryTemperature(QUERY, iTemperature), 1460);
        EXPECT_EQ(TakeFailures(), "1460 " + std::string(EXEC));
        EXPECT_EQ(pWMI->SetECTemperature(SET), 1460);
        EXPECT_EQ(iTemperature, 7);
        EXPECT_EQ(machine::Sent("controller").size(), 1U);
        if (bLeave)
        {
            pWMI = std::make_unique<CKelvaneWMI>();
            EXPECT_EQ(CKelvaneManager::Instance()->CanUnloadNow(), S_FALSE);
            EXPECT_EQ(pWMI->Initialize(), 1460);
            EXPECT_EQ(pWMI->SetECTemperature(SET), 1460);
        }
        else
        {
            EXPECT_EQ(machine::CompleteHungRequests(), 1U);
            EXPECT_TRUE(WaitFor(
                [&] { return pWMI->SetECTemperature(SET) == 1460 && machine::Sent("controller").size() == 2; }));
            EXPECT_EQ(TakeFailures(), "");
        }
        machine::AttachController(oSound);
        EXPECT_TRUE(WaitFor([] { return machine::CompleteHungRequests() == 1; }));
        EXPECT_TRUE(WaitFor([&] { return pWMI->SetECTemperature(SET) == 0; }));
    }
    EXPECT_TRUE(WaitFor([] { return CKelvaneManager::Instance()->CanUnloadNow() == S_OK; }));
}

// One that the pool hasn't begun is taken back, and one whose waits fail ends.
TEST_F(ControllerChannelTest, AThreadWithoutACallIsNotLeftBehind)
{
    for (const bool bBegun : {false, true})
    {
        machine::FailNext("SubmitThreadpoolWork", 31, bBegun ? 0 : 1);
        {
            CKelvaneCallThread oThread;
            EXPECT_EQ(oThread.Start([] {}), 0U);
            oThread.Run([] { return machine::FailNext("WaitForSingleObject", 31, -1), S_OK; },
                        bBegun ? DEVICE_CALL_WAIT : 0);
        }
        EXPECT_TRUE(WaitFor([] { return CKelvaneManager::Instance()->CanUnloadNow() == S_OK; })) << bBegun;
        machine::ClearFailures();
    }
}

TEST_F(ControllerChannelTest, AThreadKeepsItsApartment)
{
    DeclareController("");
    auto pWMI = std::make_unique<CKelvaneWMI>();
    ASSERT_EQ(pWMI->Initialize(), 0);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    EXPECT_EQ(pWMI->SetECTemperature(SET), 0);
    pWMI.reset();
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
}

TEST_F(ControllerChannelTest, WordsGoInTheFormThatTheFirmwareTakes)
{
    for (const bool bByteArray : {false, true})
    {
        machine::Controller oController;
        oController.fScript = [](UINT64) { return machine::TemperatureAnswer(300); };
        oController.bByteArray = bByteArray;
        machine::AttachController(oController);
        CKelvaneWMI oWMI;
        ASSERT_EQ(oWMI.Initialize(), 0);
        machine::ForgetSent();
        INT32 iTemperature = 0;
        EXPECT_EQ(oWMI.QueryTemperature(0x202, iTemperature), 13);
        EXPECT_EQ(oWMI.SetECTemperature(0), 13);
        EXPECT_EQ(oWMI.SetECTemperature(-1), 13);
        EXPECT_EQ(oWMI.QueryTemperature(QUERY, iTemperature), 0);
        EXPECT_EQ(oWMI.QueryTemperature(0x203, iTemperature), 0);
        EXPECT_EQ(oWMI.SetECTemperature(1), 0);
        const std::vector<machine::SentItem> vecSent = machine::Sent("controller");
        ASSERT_EQ(vecSent.size(), 3U);
        std::string strWord = "1704450";
        if (bByteArray)
            strWord = std::string("\x02\x02\x1A") + std::string(61, '\0');
        EXPECT_EQ(std::string(vecSent[0].vecData.begin(), vecSent[0].vecData.end()), strWord);
    }
    // No memory for the array: the first form's refusal stands.
    CKelvaneWMI oWMI;
    ASSERT_EQ(oWMI.Initialize(), 0);
    machine::FailNext("SafeArrayCreate", 8);
    EXPECT_EQ(oWMI.SetECTemperature(SET), WBEM_E_NOT_FOUND);
    machine::FailNext("SysAllocString", 8);
    EXPECT_EQ(oWMI.SetECTemperature(SET), 12);
}
} // namespace
