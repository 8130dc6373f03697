// The controller's method: connecting to it, putting a word in, reading the answer.
#include "apo/kelvane/apo_kelvane_wmi_method.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <cstring>
#include <string>
#include <utility>

namespace
{

// A call that may take for ever: its text, which names it in the log, is noted before. A failure of the first is none.
#define CONTROLLER_ASK(expression) (m_pStep = #expression, (expression))
#define CONTROLLER_CALL(expression, text) (m_pStep = (text), AudioCheckResult((expression), AUDIO_LOG_SITE, (text)))
#define CONTROLLER_STEP(expression) CONTROLLER_CALL(expression, #expression)

// A value that is cleared, with what it owns, at its end.
struct CVariant : VARIANT
{
    CVariant() { VariantInit(this); }
    ~CVariant() { VariantClear(this); }
    CVariant(const CVariant&) = delete;
    CVariant& operator=(const CVariant&) = delete;
};

// The array's bytes from its first dimension; 0 for anything but a list of bytes.
ULONG ByteCount(SAFEARRAY* pSafeArray)
{
    LONG lLower = 0;
    LONG lUpper = -1;
    if (SafeArrayGetDim(pSafeArray) != 1 || SafeArrayGetElemsize(pSafeArray) != 1 ||
        FAILED(SafeArrayGetLBound(pSafeArray, 1, &lLower)) || FAILED(SafeArrayGetUBound(pSafeArray, 1, &lUpper)) ||
        lUpper < lLower)
        return 0;
    return static_cast<ULONG>(INT64{lUpper} - lLower + 1);
}
} // namespace

CKelvaneWMIMethod::CKelvaneWMIMethod()
    : m_pWmiRootName(AUDIO_WMI_ROOT_NAME),
      m_pWmiClassName(AUDIO_WMI_CLASS_NAME),
      m_pWmiMethodName(AUDIO_WMI_METHOD_NAME),
      m_pWmiObjectName(
          (std::wstring(AUDIO_WMI_CLASS_NAME) + L".InstanceName='" + AUDIO_WMI_INSTANCE_NAME + L"'").c_str())
{
}

void CKelvaneWMIMethod::Disconnect()
{
    m_pWmiRootName.Release();
    m_pWmiClassName.Release();
    m_pWmiMethodName.Release();
    m_pWmiObjectName.Release();
    m_pDefinition.Release();
    m_pObjectInst.Release();
    m_pObject.Release();
    m_pServices.Release();
    m_pLocator.Release();
    if (std::exchange(m_bComEntered, false))
        CoUninitialize();
}

HRESULT CKelvaneWMIMethod::Connect()
{
    // Failures mean that the process has settings of its own, which apply then.
    m_bComEntered = SUCCEEDED(CONTROLLER_ASK(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
    CONTROLLER_ASK(CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT,
                                        RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE, nullptr));
    if (const HRESULT hResult = ConnectNamespace())
        return hResult;
    if (const HRESULT hResult = CONTROLLER_STEP(m_pServices->GetObject(m_pWmiClassName, 0, NULL, &m_pObject, NULL)))
        return hResult;
    if (AUDIO_MISSING(m_pObject, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    if (const HRESULT hResult = CONTROLLER_STEP(m_pObject->GetMethod(m_pWmiMethodName, 0, &m_pDefinition, nullptr)))
        return hResult;
    if (AUDIO_MISSING(m_pDefinition, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    if (const HRESULT hResult = CONTROLLER_STEP(m_pDefinition->SpawnInstance(0, &m_pObjectInst)))
        return hResult;
    if (AUDIO_MISSING(m_pObjectInst, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    AUDIOLOG_INFO("Kelvane WMI interface initial success!");
    return 0;
}

// Reaches the namespace.
HRESULT CKelvaneWMIMethod::ConnectNamespace()
{
    if (const HRESULT hResult =
            CONTROLLER_CALL(CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator,
                                             reinterpret_cast<LPVOID*>(&m_pLocator)),
                            "CoCreateInstance(CLSID_WbemLocator, 0, CLSCTX_INPROC_SERVER, IID_IWbemLocator, "
                            "(LPVOID *)&m_pLocator)"))
        return hResult;
    if (AUDIO_MISSING(m_pLocator, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    if (const HRESULT hResult = CONTROLLER_CALL(
            m_pLocator->ConnectServer(m_pWmiRootName, nullptr, nullptr, nullptr, 0, nullptr, nullptr, &m_pServices),
            "m_pLocator->ConnectServer(m_pWmiRootName, NULL, NULL, 0, NULL, 0, 0, &m_pServices)"))
        return hResult;
    if (AUDIO_MISSING(m_pServices, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    return CONTROLLER_STEP(CoSetProxyBlanket(m_pServices, RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr,
                                             RPC_C_AUTHN_LEVEL_CALL, RPC_C_IMP_LEVEL_IMPERSONATE, NULL, EOAC_NONE));
}

HRESULT CKelvaneWMIMethod::PutCommond(const INT64& ulCmd)
{
    if (AUDIO_MISSING(m_pObjectInst, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    CVariant oVar;
    oVar.vt = VT_BSTR;
    oVar.bstrVal = SysAllocString(std::to_wstring(ulCmd).c_str());
    if (AUDIO_MISSING(oVar.bstrVal, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    const HRESULT hResult = CONTROLLER_ASK(m_pObjectInst->Put(L"u64Input", 0, &oVar, CIM_UINT64));
    return hResult == 0 ? 0 : PutByteArray(ulCmd, hResult);
}

// The form of a method that has no number input; hTextResult is the result that the number form gave.
HRESULT CKelvaneWMIMethod::PutByteArray(const INT64& ulCmd, HRESULT hTextResult)
{
    SAFEARRAYBOUND stBound = {WMI_INPUT_BUFF_LENGTH, 0};
    SAFEARRAY* const pSafeArray = SafeArrayCreate(VT_UI1, 1, &stBound);
    if (pSafeArray == nullptr)
        return hTextResult;
    CVariant oVar; // owns the array
    oVar.vt = VT_ARRAY | VT_UI1;
    oVar.parray = pSafeArray;
    BYTE* pTempArray = nullptr;
    if (const HRESULT hResult =
            AudioCheckResult(SafeArrayAccessData(pSafeArray, reinterpret_cast<void**>(&pTempArray)), AUDIO_LOG_SITE,
                             "SafeArrayAccessData(pSafeArray, reinterpret_cast<void **>(&pTempArray))"))
        return hResult;
    memcpy(pTempArray, &ulCmd, sizeof(ulCmd));
    SafeArrayUnaccessData(pSafeArray);
    return CONTROLLER_STEP(m_pObjectInst->Put(L"u8Input", 0, &oVar, CIM_EMPTY));
}

HRESULT CKelvaneWMIMethod::QueryTemperature(const INT64& ulCmd, INT32& iTemperature)
{
    BYTE uOutValue[WMI_OUTPUT_BUFF_LENGTH];
    if (const HRESULT hResult = ExecuteCommond(ulCmd, uOutValue))
        return hResult;
    const INT32 iValue = (uOutValue[2] * 10 + uOutValue[3]) * 10;
    iTemperature = uOutValue[1] == 1 ? -iValue : iValue;
    return 0;
}

HRESULT CKelvaneWMIMethod::SetECTemperature(const INT64& ulCmd)
{
    BYTE uOutValue[WMI_OUTPUT_BUFF_LENGTH];
    return ExecuteCommond(ulCmd, uOutValue);
}

// Sends the word and reads the controller's answer, which is a success when this is.
HRESULT CKelvaneWMIMethod::ExecuteCommond(const INT64& ulCmd, BYTE (&uOutValue)[WMI_OUTPUT_BUFF_LENGTH])
{
    if (m_pLocator == nullptr || m_pServices == nullptr || m_pObject == nullptr || m_pObjectInst == nullptr ||
        m_pDefinition == nullptr)
        return AUDIO_NO_HANDLE;
    if (const HRESULT hResult = AUDIO_CHECK(PutCommond(ulCmd)))
        return hResult;
    CKelvaneComPointer<IWbemClassObject> pOutParams;
    if (const HRESULT hResult = CONTROLLER_STEP(m_pServices->ExecMethod(m_pWmiObjectName, m_pWmiMethodName, 0, nullptr,
                                                                        m_pObjectInst, &pOutParams, nullptr)))
        return hResult;
    if (AUDIO_MISSING(pOutParams, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    if (const HRESULT hResult = ReadOutput(pOutParams, uOutValue))
        return hResult;
    return AUDIO_FAIL_IF(S_OK != uOutValue[WMI_ERRORCODE_LOCATION], AUDIO_BAD_DATA) ? AUDIO_BAD_DATA : 0;
}

// Anything but a whole output is no data.
HRESULT CKelvaneWMIMethod::ReadOutput(IWbemClassObject* pOutParams, BYTE (&uOutValue)[WMI_OUTPUT_BUFF_LENGTH])
{
    CVariant oVarReturn;
    if (const HRESULT hResult = CONTROLLER_STEP(pOutParams->Get(L"u8Output", 0, &oVarReturn, nullptr, 0)))
        return hResult;
    SAFEARRAY* const pSafeArray = oVarReturn.vt == (VT_ARRAY | VT_UI1) ? oVarReturn.parray : nullptr;
    BYTE* ulRetureValue = nullptr;
    if (const HRESULT hResult =
            AudioCheckResult(SafeArrayAccessData(pSafeArray, reinterpret_cast<void**>(&ulRetureValue)), AUDIO_LOG_SITE,
                             "SafeArrayAccessData(oVarReturn.parray, reinterpret_cast<void **>(&ulRetureValue))"))
        return hResult;
    const bool bWhole = ulRetureValue != nullptr && ByteCount(pSafeArray) >= WMI_OUTPUT_BUFF_LENGTH;
    if (bWhole)
        memcpy(uOutValue, ulRetureValue, WMI_OUTPUT_BUFF_LENGTH);
    SafeArrayUnaccessData(pSafeArray);
    if (bWhole)
        return 0;
    AUDIOLOG_ERROR(AUDIO_BAD_COPY,
                   "memcpy_s(uOutValue, WMI_OUTPUT_BUFF_LENGTH, ulRetureValue, WMI_OUTPUT_BUFF_LENGTH)");
    return AUDIO_BAD_COPY;
}
