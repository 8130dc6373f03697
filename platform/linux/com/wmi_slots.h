// The slots of the instrumentation's interfaces that nobody here calls: they answer E_NOTIMPL, as the interface allows.
#pragma once

#include <windows.h>

#include <wbemidl.h>

class CWbemClassObjectSlots : public IWbemClassObject
{
public:
    STDMETHODIMP GetQualifierSet(IWbemQualifierSet**) override { return E_NOTIMPL; }
    STDMETHODIMP Delete(LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP GetNames(LPCWSTR, LONG, VARIANT*, SAFEARRAY**) override { return E_NOTIMPL; }
    STDMETHODIMP BeginEnumeration(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP Next(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndEnumeration() override { return E_NOTIMPL; }
    STDMETHODIMP GetPropertyQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return E_NOTIMPL; }
    STDMETHODIMP Clone(IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP GetObjectText(LONG, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP SpawnDerivedClass(LONG, IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP CompareTo(LONG, IWbemClassObject*) override { return E_NOTIMPL; }
    STDMETHODIMP GetPropertyOrigin(LPCWSTR, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP InheritsFrom(LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP PutMethod(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteMethod(LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP BeginMethodEnumeration(LONG) override { return E_NOTIMPL; }
    STDMETHODIMP NextMethod(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP EndMethodEnumeration() override { return E_NOTIMPL; }
    STDMETHODIMP GetMethodQualifierSet(LPCWSTR, IWbemQualifierSet**) override { return E_NOTIMPL; }
    STDMETHODIMP GetMethodOrigin(LPCWSTR, BSTR*) override { return E_NOTIMPL; }

protected:
    ~CWbemClassObjectSlots() = default;
};

class CWbemServicesSlots : public IWbemServices
{
public:
    STDMETHODIMP OpenNamespace(const BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP CancelAsyncCall(IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryObjectSink(LONG, IWbemObjectSink**) override { return E_NOTIMPL; }
    STDMETHODIMP GetObjectAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP PutClass(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP PutClassAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteClass(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteClassAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP CreateClassEnum(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override { return E_NOTIMPL; }
    STDMETHODIMP CreateClassEnumAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP PutInstance(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP PutInstanceAsync(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP DeleteInstance(const BSTR, LONG, IWbemContext*, IWbemCallResult**) override { return E_NOTIMPL; }
    STDMETHODIMP DeleteInstanceAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override { return E_NOTIMPL; }
    STDMETHODIMP CreateInstanceEnum(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP CreateInstanceEnumAsync(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ExecQuery(const BSTR, const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ExecQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ExecNotificationQuery(const BSTR, const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ExecNotificationQueryAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemObjectSink*) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP ExecMethodAsync(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*,
                                 IWbemObjectSink*) override
    {
        return E_NOTIMPL;
    }

protected:
    ~CWbemServicesSlots() = default;
};
