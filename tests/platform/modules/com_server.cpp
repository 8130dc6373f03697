// A server module with one class, for the COM tests.
#include "tests/platform/modules/com_server.h"

#include <windows.h>

namespace
{
LONG g_lSerial = 0;
LONG g_lObjects = 0;

class CTestObject : public ITestObject
{
public:
    CTestObject() { InterlockedIncrement(&g_lObjects); }
    virtual ~CTestObject() { InterlockedDecrement(&g_lObjects); }
    STDMETHOD(QueryInterface)(REFIID riid, void** ppv) override
    {
        *ppv = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_ITestObject))
            return E_NOINTERFACE;
        *ppv = static_cast<ITestObject*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHOD_(ULONG, AddRef)() override { return static_cast<ULONG>(InterlockedIncrement(&m_cRef)); }
    STDMETHOD_(ULONG, Release)() override
    {
        const LONG cRef = InterlockedDecrement(&m_cRef);
        if (cRef == 0)
            delete this;
        return static_cast<ULONG>(cRef);
    }
    STDMETHOD_(ULONG, GetSerial)() override { return m_ulSerial; }

private:
    LONG m_cRef = 1;
    ULONG m_ulSerial = static_cast<ULONG>(InterlockedIncrement(&g_lSerial));
};

class CTestFactory : public IClassFactory
{
public:
    STDMETHOD(QueryInterface)(REFIID riid, void** ppv) override
    {
        *ppv = IsEqualIID(riid, IID_IClassFactory) ? this : nullptr;
        return *ppv != nullptr ? S_OK : E_NOINTERFACE;
    }
    STDMETHOD_(ULONG, AddRef)() override { return 2; } // lives as long as the module
    STDMETHOD_(ULONG, Release)() override { return 1; }
    STDMETHOD(CreateInstance)(IUnknown* pUnkOuter, REFIID riid, void** ppv) override
    {
        if (pUnkOuter != nullptr)
            return CLASS_E_NOAGGREGATION;
        CTestObject* pObject = new CTestObject;
        const HRESULT hResult = pObject->QueryInterface(riid, ppv);
        pObject->Release();
        return hResult;
    }
    STDMETHOD(LockServer)(BOOL) override { return S_OK; }
};
CTestFactory g_oFactory;
} // namespace

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv)
{
    return IsEqualCLSID(rclsid, CLSID_TestServer) ? g_oFactory.QueryInterface(riid, ppv) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow()
{
    return g_lObjects == 0 ? S_OK : S_FALSE;
}
