// The management instrumentation, as far as the embedded controller's method is reached through it.
#include "com/wmi_objects.h"
#include "devices/device_bus.h"

#include <cwchar>

EXTERN_C const IID IID_IWbemClassObject = {
    0xDC12A681, 0x737F, 0x11CF, {0x88, 0x4D, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};
EXTERN_C const IID IID_IWbemLocator = {0xDC12A687, 0x737F, 0x11CF, {0x88, 0x4D, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};
EXTERN_C const IID IID_IWbemServices = {0x9556DC99, 0x828C, 0x11CF, {0xA3, 0x7E, 0x00, 0xAA, 0x00, 0x32, 0x40, 0xC7}};
EXTERN_C const CLSID CLSID_WbemLocator = {0x4590F811, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};

namespace
{
constexpr const WCHAR* NAMESPACE_NAME = L"ROOT\\WMI";
constexpr const WCHAR* CLASS_NAME = L"OemWMIMethod";
constexpr const WCHAR* METHOD_NAME = L"OemWMIfun";
constexpr const WCHAR* INSTANCE_PATH = L"OemWMIMethod.InstanceName='ACPI\\PNP0C14\\ZVMI_0'";

bool IsName(const BSTR bstrText, const WCHAR* pName)
{
    return bstrText != nullptr && wcscasecmp(bstrText, pName) == 0;
}

// Runs the method: the controller's bytes for the arguments' word.
HRESULT Execute(const machine::Controller& oController, CWbemObject& oArguments, IWbemClassObject** ppOutParams)
{
    machine::SentItem oItem;
    oItem.strDevice = "controller";
    UINT64 u64Word = 0;
    if (!oArguments.ReadInput(u64Word, oItem))
        return WBEM_E_INVALID_METHOD_PARAMETERS;
    CDeviceBus::Instance().Record(std::move(oItem));
    if (oController.eCompletion == machine::Completion::Late)
        Sleep(oController.dwDelay);
    else if (oController.eCompletion != machine::Completion::AtOnce)
        CDeviceBus::Instance().WaitForHungCompletion();
    auto* const pOutput = new CWbemObject(WbemRole::OutArguments);
    const HRESULT hResult =
        oController.bOutput && oController.fScript ? pOutput->SetOutput(oController.fScript(u64Word)) : S_OK;
    if (SUCCEEDED(hResult) && ppOutParams != nullptr)
        *ppOutParams = pOutput;
    else
        pOutput->Release();
    return hResult;
}

class CWbemServices : public CComObject<IWbemServices, IID_IWbemServices>
{
public:
    STDMETHODIMP GetObject(const BSTR strObjectPath, LONG, IWbemContext*, IWbemClassObject** ppObject,
                           IWbemCallResult**) override
    {
        if (ppObject == nullptr)
            return WBEM_E_INVALID_PARAMETER;
        *ppObject = nullptr;
        HRESULT hResult = S_OK;
        if (IsRefused("GetObject", hResult))
            return hResult;
        const CControllerPointer pController = CDeviceBus::Instance().Controller();
        if (pController == nullptr || !IsName(strObjectPath, CLASS_NAME))
            return WBEM_E_NOT_FOUND;
        *ppObject = new CWbemObject(WbemRole::Class, pController->bByteArray);
        return S_OK;
    }

    STDMETHODIMP ExecMethod(const BSTR strObjectPath, const BSTR strMethodName, LONG, IWbemContext*,
                            IWbemClassObject* pInParams, IWbemClassObject** ppOutParams, IWbemCallResult**) override
    {
        if (ppOutParams != nullptr)
            *ppOutParams = nullptr;
        HRESULT hResult = S_OK;
        if (IsRefused("ExecMethod", hResult))
            return hResult;
        const CControllerPointer pController = CDeviceBus::Instance().Controller();
        if (pController == nullptr || !IsName(strObjectPath, INSTANCE_PATH))
            return WBEM_E_NOT_FOUND;
        if (!IsName(strMethodName, METHOD_NAME))
            return WBEM_E_INVALID_METHOD;
        auto* const pArguments = dynamic_cast<CWbemObject*>(pInParams);
        return pArguments == nullptr ? WBEM_E_INVALID_METHOD_PARAMETERS
                                     : Execute(*pController, *pArguments, ppOutParams);
    }
};

class CWbemLocator : public CComObject<IWbemLocator, IID_IWbemLocator>
{
public:
    STDMETHODIMP ConnectServer(const BSTR strNetworkResource, const BSTR, const BSTR, const BSTR, LONG, const BSTR,
                               IWbemContext*, IWbemServices** ppNamespace) override
    {
        if (ppNamespace == nullptr)
            return WBEM_E_INVALID_PARAMETER;
        *ppNamespace = nullptr;
        HRESULT hResult = S_OK;
        if (IsRefused("ConnectServer", hResult))
            return hResult;
        if (!IsName(strNetworkResource, NAMESPACE_NAME))
            return WBEM_E_INVALID_NAMESPACE;
        *ppNamespace = new CWbemServices;
        return S_OK;
    }
};
} // namespace

bool IsRefused(const char* pStep, HRESULT& hResult)
{
    const CControllerPointer pController = CDeviceBus::Instance().Controller();
    if (pController == nullptr)
    {
        hResult = WBEM_E_FAILED;
        return true;
    }
    const auto itStep = pController->mapRefusals.find(pStep);
    if (itStep == pController->mapRefusals.end())
        return false;
    hResult = itStep->second;
    return true;
}

HRESULT CreateWbemLocator(IUnknown* pUnkOuter, REFIID riid, void** ppv)
{
    HRESULT hResult = S_OK;
    if (CDeviceBus::Instance().Controller() == nullptr)
        return REGDB_E_CLASSNOTREG;
    if (IsRefused("CoCreateInstance", hResult))
        return hResult;
    if (pUnkOuter != nullptr)
        return CLASS_E_NOAGGREGATION;
    auto* const pLocator = new CWbemLocator;
    hResult = pLocator->QueryInterface(riid, ppv);
    pLocator->Release();
    return hResult;
}
