// The management instrumentation's client interfaces, with the published slot orders. What nobody here calls answers
// E_NOTIMPL, as the interfaces allow.
#pragma once

#include <oleauto.h>

EXTERN_C const IID IID_IWbemClassObject;
EXTERN_C const IID IID_IWbemLocator;
EXTERN_C const IID IID_IWbemServices;
EXTERN_C const CLSID CLSID_WbemLocator;

typedef LONG CIMTYPE;
enum CIMTYPE_ENUMERATION
{
    CIM_EMPTY = 0,
    CIM_STRING = 8,
    CIM_UINT8 = 17,
    CIM_UINT32 = 19,
    CIM_SINT64 = 20,
    CIM_UINT64 = 21,
    CIM_FLAG_ARRAY = 0x2000
};

#define WBEM_E_FAILED static_cast<HRESULT>(0x80041001U)
#define WBEM_E_NOT_FOUND static_cast<HRESULT>(0x80041002U)
#define WBEM_E_ACCESS_DENIED static_cast<HRESULT>(0x80041003U)
#define WBEM_E_TYPE_MISMATCH static_cast<HRESULT>(0x80041005U)
#define WBEM_E_INVALID_PARAMETER static_cast<HRESULT>(0x80041008U)
#define WBEM_E_INVALID_NAMESPACE static_cast<HRESULT>(0x8004100EU)
#define WBEM_E_INVALID_METHOD static_cast<HRESULT>(0x8004102EU)
#define WBEM_E_INVALID_METHOD_PARAMETERS static_cast<HRESULT>(0x8004102FU)

struct IWbemQualifierSet;
struct IWbemContext;
struct IWbemCallResult;
struct IWbemObjectSink;
struct IEnumWbemClassObject;

// A class, an instance of one, or the arguments of a method.
struct IWbemClassObject : public IUnknown
{
    STDMETHOD(GetQualifierSet)(IWbemQualifierSet**) { return E_NOTIMPL; }
    STDMETHOD(Get)(LPCWSTR wszName, LONG lFlags, VARIANT* pVal, CIMTYPE* pType, LONG* plFlavor) PURE;
    STDMETHOD(Put)(LPCWSTR wszName, LONG lFlags, VARIANT* pVal, CIMTYPE Type) PURE;
    STDMETHOD(Delete)(LPCWSTR) { return E_NOTIMPL; }
    STDMETHOD(GetNames)(LPCWSTR, LONG, VARIANT*, SAFEARRAY**) { return E_NOTIMPL; }
    STDMETHOD(BeginEnumeration)(LONG) { return E_NOTIMPL; }
    STDMETHOD(Next)(LONG, BSTR*, VARIANT*, CIMTYPE*, LONG*) { return E_NOTIMPL; }
    STDMETHOD(EndEnumeration)() { return E_NOTIMPL; }
    STDMETHOD(GetPropertyQualifierSet)(LPCWSTR, IWbemQualifierSet**) { return E_NOTIMPL; }
    STDMETHOD(Clone)(IWbemClassObject**) { return E_NOTIMPL; }
    STDMETHOD(GetObjectText)(LONG, BSTR*) { return E_NOTIMPL; }
    STDMETHOD(SpawnDerivedClass)(LONG, IWbemClassObject**) { return E_NOTIMPL; }
    STDMETHOD(SpawnInstance)(LONG lFlags, IWbemClassObject** ppNewInstance) PURE;
    STDMETHOD(CompareTo)(LONG, IWbemClassObject*) { return E_NOTIMPL; }
    STDMETHOD(GetPropertyOrigin)(LPCWSTR, BSTR*) { return E_NOTIMPL; }
    STDMETHOD(InheritsFrom)(LPCWSTR) { return E_NOTIMPL; }
    STDMETHOD(GetMethod)
    (LPCWSTR wszName, LONG lFlags, IWbemClassObject** ppInSignature, IWbemClassObject** ppOutSignature) PURE;
    STDMETHOD(PutMethod)(LPCWSTR, LONG, IWbemClassObject*, IWbemClassObject*) { return E_NOTIMPL; }
    STDMETHOD(DeleteMethod)(LPCWSTR) { return E_NOTIMPL; }
    STDMETHOD(BeginMethodEnumeration)(LONG) { return E_NOTIMPL; }
    STDMETHOD(NextMethod)(LONG, BSTR*, IWbemClassObject**, IWbemClassObject**) { return E_NOTIMPL; }
    STDMETHOD(EndMethodEnumeration)() { return E_NOTIMPL; }
    STDMETHOD(GetMethodQualifierSet)(LPCWSTR, IWbemQualifierSet**) { return E_NOTIMPL; }
    STDMETHOD(GetMethodOrigin)(LPCWSTR, BSTR*) { return E_NOTIMPL; }
};

// A connection to one namespace.
struct IWbemServices : public IUnknown
{
    STDMETHOD(OpenNamespace)(const BSTR, LONG, IWbemContext*, IWbemServices**, IWbemCallResult**) { return E_NOTIMPL; }
    STDMETHOD(CancelAsyncCall)(IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(QueryObjectSink)(LONG, IWbemObjectSink**) { return E_NOTIMPL; }
    STDMETHOD(GetObject)
    (const BSTR strObjectPath, LONG lFlags, IWbemContext* pCtx, IWbemClassObject** ppObject,
     IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(GetObjectAsync)(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(PutClass)(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) { return E_NOTIMPL; }
    STDMETHOD(PutClassAsync)(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(DeleteClass)(const BSTR, LONG, IWbemContext*, IWbemCallResult**) { return E_NOTIMPL; }
    STDMETHOD(DeleteClassAsync)(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(CreateClassEnum)(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) { return E_NOTIMPL; }
    STDMETHOD(CreateClassEnumAsync)(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(PutInstance)(IWbemClassObject*, LONG, IWbemContext*, IWbemCallResult**) { return E_NOTIMPL; }
    STDMETHOD(PutInstanceAsync)(IWbemClassObject*, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(DeleteInstance)(const BSTR, LONG, IWbemContext*, IWbemCallResult**) { return E_NOTIMPL; }
    STDMETHOD(DeleteInstanceAsync)(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(CreateInstanceEnum)(const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) { return E_NOTIMPL; }
    STDMETHOD(CreateInstanceEnumAsync)(const BSTR, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(ExecQuery)(const BSTR, const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**) { return E_NOTIMPL; }
    STDMETHOD(ExecQueryAsync)(const BSTR, const BSTR, LONG, IWbemContext*, IWbemObjectSink*) { return E_NOTIMPL; }
    STDMETHOD(ExecNotificationQuery)(const BSTR, const BSTR, LONG, IWbemContext*, IEnumWbemClassObject**)
    {
        return E_NOTIMPL;
    }
    STDMETHOD(ExecNotificationQueryAsync)(const BSTR, const BSTR, LONG, IWbemContext*, IWbemObjectSink*)
    {
        return E_NOTIMPL;
    }
    STDMETHOD(ExecMethod)
    (const BSTR strObjectPath, const BSTR strMethodName, LONG lFlags, IWbemContext* pCtx, IWbemClassObject* pInParams,
     IWbemClassObject** ppOutParams, IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(ExecMethodAsync)(const BSTR, const BSTR, LONG, IWbemContext*, IWbemClassObject*, IWbemObjectSink*)
    {
        return E_NOTIMPL;
    }
};

struct IWbemLocator : public IUnknown
{
    STDMETHOD(ConnectServer)
    (const BSTR strNetworkResource, const BSTR strUser, const BSTR strPassword, const BSTR strLocale,
     LONG lSecurityFlags, const BSTR strAuthority, IWbemContext* pCtx, IWbemServices** ppNamespace) PURE;
};
