// The embedded controller's channel: connecting step by step, words out, answers back.
#include "tests/hardware/hardware_test.h"

#include "apo/kelvane/apo_kelvane_wmi.h"

namespace
{
constexpr INT64 QUERY = 0x1A0202;
constexpr INT64 SET = 0x0F02;
constexpr char EXEC[] = "m_pServices->ExecMethod(m_pWmiObjectName, m_pWmiMethodName, 0, nullptr, m_pObjectInst, "
                        "&pOutParams, nullptr)";
constexpr char NO_DATA[] = "memcpy_s(uOutValue, WMI_OUTPUT_BUFF_LENGTH, ulRetureValue, WMI_OUTPUT_BUFF_LENGTH)";

class ControllerChannelTest : public HardwareTest
{
protected:
    // A controller that answers with the bytes in front of iCount of them.
    static machine::Controller Answering(std::vector<BYTE> vecBytes, size_t iCount = WMI_OUTPUT_BUFF_LENGTH)
    {
        vecBytes.resize(iCount);
        machine::Controller oController;
        oController.fScript = [vecBytes](UINT64) { return vecBytes; };
        return oController;
    }
    static machine::Controller Refusing(const char* pStep, HRESULT hResult)
    {
        machine::Controller oController = Answering({0, 0, 45, 6});
        oController.mapRefusals[pStep] = hResult;
        return oController;
    }
};

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
            machine::AttachController(Refusing(oRow.pStep, bPointerOnly ? S_OK : hDenied));
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
    machine::Controller oNoArray = Answering({});
    oNoArray.bOutput = false;
    const struct
    {
        machine::Controller oController;
        HRESULT hResult;
        INT32 iTemperature; // what the caller's 7 becomes
        const char* pLine;
    } aRows[] = {
        {Answering({0, 0, 45, 6}), 0, 4560, ""},
        {Answering({0, 1, 3, 5}), 0, -350, ""},
        {Answering({0, 2, 255, 255}), 0, 28050, ""},
        {Answering({7, 0, 45, 6}), 13, 7, "S_OK != uOutValue[WMI_ERRORCODE_LOCATION]"},
        {Answering({0, 0, 45, 6}, 255), 22, 7, NO_DATA},
        {Answering({}, 0), 22, 7, NO_DATA},
        {oNoArray, E_INVALIDARG, 7,
         "SafeArrayAccessData(oVarReturn.parray, reinterpret_cast<void **>(&ulRetureValue))"},
        {Refusing("ExecMethod", hFailed), hFailed, 7, EXEC},
        {Refusing("ExecMethod", S_OK), 12, 7, "pOutParams"},
        {Refusing("Get", hFailed), hFailed, 7, "pOutParams->Get(L\"u8Output\", 0, &oVarReturn, nullptr, 0)"},
        {Refusing("Put", hFailed), hFailed, 7, "m_pObjectInst->Put(L\"u8Input\", 0, &oVar, CIM_EMPTY)"},
    };
    for (const auto& oRow : aRows)
    {
        machine::AttachController(oRow.oController);
        CKelvaneWMI oWMI;
        ASSERT_EQ(oWMI.Initialize(), 0);
        INT32 iTemperature = 7;
        EXPECT_EQ(oWMI.QueryTemperature(QUERY, iTemperature), oRow.hResult) << oRow.pLine;
        EXPECT_EQ(iTemperature, oRow.iTemperature);
        EXPECT_EQ(oWMI.SetECTemperature(SET), oRow.hResult);
        const std::string strLine = std::to_string(oRow.hResult) + " " + oRow.pLine;
        const std::string strFailures = TakeFailures();
        EXPECT_EQ(strFailures.substr(0, strFailures.find('|')), oRow.hResult == 0 ? "" : strLine);
    }
}

TEST_F(ControllerChannelTest, WordsGoInTheFormThatTheFirmwareTakes)
{
    for (const bool bByteArray : {false, true})
    {
        machine::Controller oController = Answering({0, 0, 30, 0});
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
