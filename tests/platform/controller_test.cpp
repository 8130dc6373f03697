// The embedded controller behind the instrumentation's interfaces, and the values that travel to it and back.
#include "tests/platform/machine_file.h"
#include "tests/support/machine_test.h"

#include <objbase.h>
#include <wbemidl.h>

#include <memory>
#include <thread>

namespace
{
struct ReleaseCall
{
    void operator()(IUnknown* pObject) const { pObject->Release(); }
};
template <class T> using Owned = std::unique_ptr<T, ReleaseCall>;

struct TextFree
{
    void operator()(BSTR bstrText) const { SysFreeString(bstrText); }
};
using Text = std::unique_ptr<OLECHAR, TextFree>;

Text Make(const wchar_t* pText)
{
    return Text(SysAllocString(pText));
}

class ControllerTest : public MachineTest
{
protected:
    void SetUp() override
    {
        MachineTest::SetUp();
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    }
    void TearDown() override
    {
        m_pArguments.reset();
        m_pSignature.reset();
        m_pClass.reset();
        m_pServices.reset();
        m_pLocator.reset();
        CoUninitialize();
        MachineTest::TearDown();
    }

    // Step by step to an instance of the method's arguments; the first failure's step and code, or "".
    std::string Connect()
    {
        IWbemLocator* pLocator = nullptr;
        HRESULT hResult = CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                           reinterpret_cast<LPVOID*>(&pLocator));
        m_pLocator.reset(pLocator);
        if (pLocator == nullptr)
            return Failed("CoCreateInstance", hResult);
        IWbemServices* pServices = nullptr;
        hResult = m_pLocator->ConnectServer(Make(L"ROOT\\WMI").get(), nullptr, nullptr, nullptr, 0, nullptr, nullptr,
                                            &pServices);
        m_pServices.reset(pServices);
        if (pServices == nullptr)
            return Failed("ConnectServer", hResult);
        hResult = CoSetProxyBlanket(pServices, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                                    RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
        if (hResult != S_OK)
            return Failed("CoSetProxyBlanket", hResult);
        IWbemClassObject* pClass = nullptr;
        hResult = m_pServices->GetObject(Make(L"OemWMIMethod").get(), 0, nullptr, &pClass, nullptr);
        m_pClass.reset(pClass);
        if (pClass == nullptr)
            return Failed("GetObject", hResult);
        IWbemClassObject* pSignature = nullptr;
        hResult = m_pClass->GetMethod(L"OemWMIfun", 0, &pSignature, nullptr);
        m_pSignature.reset(pSignature);
        if (pSignature == nullptr)
            return Failed("GetMethod", hResult);
        IWbemClassObject* pArguments = nullptr;
        hResult = m_pSignature->SpawnInstance(0, &pArguments);
        m_pArguments.reset(pArguments);
        return pArguments == nullptr ? Failed("SpawnInstance", hResult) : "";
    }

    static std::string Failed(const char* pStep, HRESULT hResult)
    {
        char cCode[16];
        std::snprintf(cCode, sizeof cCode, " %08X", static_cast<unsigned>(hResult));
        return pStep + std::string(cCode);
    }

    HRESULT PutText(const wchar_t* pDigits)
    {
        const Text pText = Make(pDigits);
        VARIANT oVar{};
        oVar.vt = VT_BSTR;
        oVar.bstrVal = pText.get();
        return m_pArguments->Put(L"u64Input", 0, &oVar, CIM_UINT64);
    }

    HRESULT PutBytes(ULONG ulCount, std::initializer_list<BYTE> oBytes)
    {
        VARIANT oVar{};
        oVar.vt = VT_ARRAY | VT_UI1;
        oVar.parray = SafeArrayCreateVector(VT_UI1, 0, ulCount);
        std::copy(oBytes.begin(), oBytes.end(), static_cast<BYTE*>(oVar.parray->pvData));
        const HRESULT hResult = m_pArguments->Put(L"u8Input", 0, &oVar, CIM_EMPTY);
        EXPECT_EQ(VariantClear(&oVar), S_OK);
        return hResult;
    }

    // The output's bytes; the step that failed goes to hResult. No array leaves S_FALSE.
    std::vector<BYTE> Run(HRESULT& hResult)
    {
        IWbemClassObject* pGiven = nullptr;
        hResult = m_pServices->ExecMethod(Make(L"OemWMIMethod.InstanceName='ACPI\\PNP0C14\\ZVMI_0'").get(),
                                          Make(L"OemWMIfun").get(), 0, nullptr, m_pArguments.get(), &pGiven, nullptr);
        const Owned<IWbemClassObject> pOutput(pGiven);
        if (pOutput == nullptr)
            return {};
        VARIANT oVar{};
        hResult = pOutput->Get(L"u8Output", 0, &oVar, nullptr, nullptr);
        std::vector<BYTE> vecBytes;
        if (hResult == S_OK && oVar.vt == (VT_ARRAY | VT_UI1))
        {
            LONG lLast = -1;
            EXPECT_EQ(SafeArrayGetUBound(oVar.parray, 1, &lLast), S_OK);
            const BYTE* const pData = static_cast<BYTE*>(oVar.parray->pvData);
            vecBytes.assign(pData, pData + lLast + 1);
        }
        else if (hResult == S_OK)
            hResult = S_FALSE;
        EXPECT_EQ(VariantClear(&oVar), S_OK);
        return vecBytes;
    }

    // First four bytes of the answer to a word in decimal digits.
    std::vector<int> Ask(const wchar_t* pDigits)
    {
        HRESULT hResult = PutText(pDigits);
        EXPECT_EQ(hResult, S_OK);
        const std::vector<BYTE> vecBytes = Run(hResult);
        EXPECT_EQ(vecBytes.size(), 256U);
        return std::vector<int>(vecBytes.begin(), vecBytes.begin() + (vecBytes.size() < 4 ? 0 : 4));
    }

    Owned<IWbemLocator> m_pLocator;
    Owned<IWbemServices> m_pServices;
    Owned<IWbemClassObject> m_pClass;
    Owned<IWbemClassObject> m_pSignature;
    Owned<IWbemClassObject> m_pArguments;
};
} // namespace

TEST_F(ControllerTest, TakesTheWordAsTextOrAsBytes)
{
    DeclareMachine("<controller input='u64Input'><sensor id='0x1A' temperature='45.6'/>"
                   "<sensor id='2' temperature='-3.5'/></controller>");
    ASSERT_EQ(Connect(), "");
    EXPECT_EQ(Ask(L"1704450"), (std::vector<int>{0, 0, 45, 6}));
    EXPECT_EQ(Ask(L"131586"), (std::vector<int>{0, 1, 3, 5})) << "the arguments are used again";
    EXPECT_EQ(Ask(L"197122"), (std::vector<int>{1, 0, 0, 0})) << "no such sensor";
    EXPECT_EQ(Ask(L"29691650"), (std::vector<int>{0, 0, 0, 0})) << "a report is taken";
    EXPECT_EQ(PutBytes(64, {2, 2, 0x1A}), WBEM_E_NOT_FOUND);
    EXPECT_EQ(PutText(L"12x"), WBEM_E_TYPE_MISMATCH);

    const std::vector<machine::SentItem> vecSent = machine::Sent("controller");
    ASSERT_EQ(vecSent.size(), 4U);
    EXPECT_EQ(vecSent[0].strWhat, "u64Input");
    EXPECT_EQ(std::string(vecSent[0].vecData.begin(), vecSent[0].vecData.end()), "1704450");

    DeclareMachine("<controller input='u8Input'><sensor id='0x1A' temperature='31.5'/></controller>");
    ASSERT_EQ(Connect(), "");
    HRESULT hResult = S_OK;
    EXPECT_TRUE(Run(hResult).empty());
    EXPECT_EQ(hResult, WBEM_E_INVALID_METHOD_PARAMETERS) << "nothing was put";
    EXPECT_EQ(PutText(L"1704450"), WBEM_E_NOT_FOUND);
    ASSERT_EQ(PutBytes(64, {2, 2, 0x1A}), S_OK);
    const std::vector<BYTE> vecBytes = Run(hResult);
    ASSERT_EQ(vecBytes.size(), 256U);
    EXPECT_EQ(vecBytes[2] * 10 + vecBytes[3], 315);
    const machine::SentItem oLast = machine::Sent("controller").back();
    EXPECT_EQ(oLast.strWhat, "u8Input");
    ASSERT_EQ(oLast.vecData.size(), 64U);
    EXPECT_EQ(oLast.vecData[2], 0x1A);
}

TEST_F(ControllerTest, SensorsFollowTheMachinesClock)
{
    machine::SetClock({2024, 5, 3, 1, 10, 0, 0, 0});
    machine::FreezeClock();
    DeclareMachine("<controller input='u64Input'><sensor id='1' temperature='30' per-second='0.5' until='40'/>"
                   "<sensor id='2'><point at='10' temperature='30'/><point at='20' temperature='80'/>"
                   "<point at='40' temperature='20'/></sensor></controller>");
    ASSERT_EQ(Connect(), "");
    const struct
    {
        int iSeconds;
        std::vector<int> vecRamp;
        std::vector<int> vecPoints;
    } aRows[] = {{0, {0, 0, 30, 0}, {0, 0, 30, 0}},  {5, {0, 0, 32, 5}, {0, 0, 30, 0}},
                 {15, {0, 0, 37, 5}, {0, 0, 55, 0}}, {20, {0, 0, 40, 0}, {0, 0, 80, 0}},
                 {31, {0, 0, 40, 0}, {0, 0, 47, 0}}, {99, {0, 0, 40, 0}, {0, 0, 20, 0}}};
    int iBefore = 0;
    for (const auto& oRow : aRows)
    {
        machine::AdvanceClock((oRow.iSeconds - iBefore) * 1000LL);
        iBefore = oRow.iSeconds;
        EXPECT_EQ(Ask(L"66050"), oRow.vecRamp) << oRow.iSeconds;
        EXPECT_EQ(Ask(L"131586"), oRow.vecPoints) << oRow.iSeconds;
    }
}

// Each step can be refused with a code, or succeed with nothing to show.
TEST_F(ControllerTest, RefusesAnyStep)
{
    EXPECT_EQ(Connect(), "CoCreateInstance 80040154") << "a machine without a controller";
    for (const char* pStep : {"CoCreateInstance", "ConnectServer", "CoSetProxyBlanket", "GetObject", "GetMethod",
                              "SpawnInstance", "Put", "ExecMethod", "Get"})
    {
        const std::string strStep = pStep;
        SCOPED_TRACE(strStep);
        DeclareMachine("<controller input='u64Input'><refuse step='" + strStep + "' code='0x80041003'/></controller>");
        const std::string strFailed = Connect();
        if (strStep != "Put" && strStep != "ExecMethod" && strStep != "Get")
        {
            EXPECT_EQ(strFailed, strStep + " 80041003");
            DeclareMachine("<controller input='u64Input'><refuse step='" + strStep + "' code='0'/></controller>");
            EXPECT_EQ(Connect(), strStep == "CoSetProxyBlanket" ? "" : strStep + " 00000000");
            continue;
        }
        ASSERT_EQ(strFailed, "");
        HRESULT hResult = PutText(L"66050");
        if (hResult == S_OK)
            Run(hResult);
        EXPECT_EQ(hResult, WBEM_E_ACCESS_DENIED);
    }
    machine::RemoveController();
    HRESULT hResult = S_OK;
    Run(hResult);
    EXPECT_EQ(hResult, WBEM_E_FAILED) << "the controller is gone";
}

TEST_F(ControllerTest, AnswersShortWrongLateOrWhenLetGo)
{
    const struct
    {
        const char* pAttributes;
        size_t iBytes;
        HRESULT hResult;
    } aRows[] = {{"error='7'", 256, S_OK}, {"bytes='3'", 3, S_OK}, {"bytes='0'", 0, S_OK}, {"array='no'", 0, S_FALSE}};
    HRESULT hResult = S_OK;
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(oRow.pAttributes);
        DeclareMachine("<controller input='u64Input' " + std::string(oRow.pAttributes) + "/>");
        ASSERT_EQ(Connect(), "");
        ASSERT_EQ(PutText(L"66050"), S_OK);
        const std::vector<BYTE> vecBytes = Run(hResult);
        EXPECT_EQ(vecBytes.size(), oRow.iBytes);
        EXPECT_EQ(hResult, oRow.hResult);
        if (oRow.iBytes == 256)
        {
            EXPECT_EQ(vecBytes[0], 7);
        }
    }

    machine::Controller oController;
    oController.eCompletion = machine::Completion::Never;
    oController.fScript = [](UINT64 u64Word) { return machine::TemperatureAnswer(static_cast<int>(u64Word)); };
    machine::AttachController(oController);
    ASSERT_EQ(Connect(), "");
    ASSERT_EQ(PutText(L"456"), S_OK);
    std::vector<BYTE> vecBytes;
    std::thread oCaller([&] { vecBytes = Run(hResult); });
    EXPECT_TRUE(WaitFor([] { return machine::CompleteHungRequests() == 1; }));
    oCaller.join();
    ASSERT_EQ(vecBytes.size(), 256U);
    EXPECT_EQ(vecBytes[2], 45);
    oController.eCompletion = machine::Completion::Late;
    oController.dwDelay = 10;
    machine::AttachController(oController);
    EXPECT_EQ(Ask(L"321"), (std::vector<int>{0, 0, 32, 1}));
}

TEST(AutomationValues, ArraysAndTextsKeepTheirBoundsAndLocks)
{
    SAFEARRAYBOUND aBounds[] = {{3, 1}, {4, -1}};
    SAFEARRAY* const pArray = SafeArrayCreate(VT_I4, 2, aBounds);
    ASSERT_NE(pArray, nullptr);
    LONG lLow = 0;
    LONG lHigh = 0;
    EXPECT_EQ(SafeArrayGetLBound(pArray, 2, &lLow), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(pArray, 2, &lHigh), S_OK);
    EXPECT_EQ(lLow, -1);
    EXPECT_EQ(lHigh, 2);
    EXPECT_EQ(SafeArrayGetUBound(pArray, 3, &lHigh), DISP_E_BADINDEX);
    void* pData = nullptr;
    ASSERT_EQ(SafeArrayAccessData(pArray, &pData), S_OK);
    static_cast<LONG*>(pData)[11] = 5;
    EXPECT_EQ(SafeArrayDestroy(pArray), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnaccessData(pArray), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(pArray), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayDestroy(pArray), S_OK);
    SAFEARRAYBOUND aHuge[] = {{0xFFFFFFFF, 0}, {0xFFFFFFFF, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_I8, 2, aHuge), nullptr);
    EXPECT_EQ(SafeArrayCreate(VT_BSTR, 1, aBounds), nullptr);
    SAFEARRAY* const pEmpty = SafeArrayCreateVector(VT_UI1, 0, 0);
    ASSERT_EQ(SafeArrayAccessData(pEmpty, &pData), S_OK);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(SafeArrayUnaccessData(pEmpty), S_OK);
    EXPECT_EQ(SafeArrayDestroy(pEmpty), S_OK);

    VARIANT oText{};
    oText.vt = VT_BSTR;
    oText.bstrVal = SysAllocStringLen(L"ab\0cd", 5);
    VARIANT oCopy{};
    EXPECT_EQ(VariantCopy(&oCopy, &oText), S_OK);
    EXPECT_EQ(VariantClear(&oText), S_OK);
    EXPECT_EQ(oText.vt, VT_EMPTY);
    EXPECT_EQ(SysStringLen(oCopy.bstrVal), 5U);
    EXPECT_EQ(oCopy.bstrVal[4], L'd');
    EXPECT_EQ(VariantClear(&oCopy), S_OK);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
}
