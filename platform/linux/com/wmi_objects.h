// The objects of the controller's class: the class itself, its method's arguments, and what the method gives back.
#pragma once

#include "devices/device_bus.h"

#include <windows.h>

#include <wbemidl.h>

#include <atomic>

// QueryInterface, AddRef and Release over one interface. Born with one reference.
template <class Base, const IID& iidOwn> class CComObject : public Base
{
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppvObject) override
    {
        if (ppvObject == nullptr)
            return E_POINTER;
        *ppvObject = nullptr;
        if (riid != IID_IUnknown && riid != iidOwn)
            return E_NOINTERFACE;
        *ppvObject = this;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_ulReferences; }
    STDMETHODIMP_(ULONG) Release() override
    {
        const ULONG ulLeft = --m_ulReferences;
        if (ulLeft == 0)
            delete this;
        return ulLeft;
    }

protected:
    virtual ~CComObject() = default;

private:
    std::atomic<ULONG> m_ulReferences{1};
};

// Whether the controller was told to answer the step itself, and with what; a machine without one fails every step.
bool IsRefused(const char* pStep, HRESULT& hResult);

enum class WbemRole
{
    Class,
    InSignature, // its instances take the input
    InArguments,
    OutArguments
};

// An object of at most one property.
class CWbemObject : public CComObject<IWbemClassObject, IID_IWbemClassObject>
{
public:
    explicit CWbemObject(WbemRole eRole, bool bByteArray = false);

    STDMETHODIMP Get(LPCWSTR wszName, LONG lFlags, VARIANT* pVal, CIMTYPE* pType, LONG* plFlavor) override;
    STDMETHODIMP Put(LPCWSTR wszName, LONG lFlags, VARIANT* pVal, CIMTYPE Type) override;
    STDMETHODIMP SpawnInstance(LONG lFlags, IWbemClassObject** ppNewInstance) override;
    STDMETHODIMP GetMethod(LPCWSTR wszName, LONG lFlags, IWbemClassObject** ppInSignature,
                           IWbemClassObject** ppOutSignature) override;

    // The command word of the arguments and its bytes as they were put. False if none was.
    bool ReadInput(UINT64& u64Word, machine::SentItem& oItem);
    // The bytes of the answer, as an array of that length.
    HRESULT SetOutput(const std::vector<BYTE>& vecOutput);

protected:
    ~CWbemObject() override { VariantClear(&m_stValue); }

private:
    const WbemRole m_eRole;
    const bool m_bByteArray;
    const WCHAR* m_pProperty = nullptr; // its name
    CIMTYPE m_lType = CIM_EMPTY;
    std::mutex m_oMutex;
    VARIANT m_stValue{};
};

// E_NOINTERFACE, CLASS_E_NOAGGREGATION or an object with one reference.
HRESULT CreateWbemLocator(IUnknown* pUnkOuter, REFIID riid, void** ppv);
