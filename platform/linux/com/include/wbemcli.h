// The management instrumentation's client interfaces, with the published slot orders.
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
    STDMETHOD(GetQualifierSet)(IWbemQualifierSet** ppQualSet) PURE;
    STDMETHOD(Get)(LPCWSTR wszName, LONG lFlags, VARIANT* pVal, CIMTYPE* pType, LONG* plFlavor) PURE;
    STDMETHOD(Put)(LPCWSTR wszName, LONG lFlags, VARIANT* pVal, CIMTYPE Type) PURE;
    STDMETHOD(Delete)(LPCWSTR wszName) PURE;
    STDMETHOD(GetNames)(LPCWSTR wszQualifierName, LONG lFlags, VARIANT* pQualifierVal, SAFEARRAY** pNames) PURE;
    STDMETHOD(BeginEnumeration)(LONG lEnumFlags) PURE;
    STDMETHOD(Next)(LONG lFlags, BSTR* strName, VARIANT* pVal, CIMTYPE* pType, LONG* plFlavor) PURE;
    STDMETHOD(EndEnumeration)() PURE;
    STDMETHOD(GetPropertyQualifierSet)(LPCWSTR wszProperty, IWbemQualifierSet** ppQualSet) PURE;
    STDMETHOD(Clone)(IWbemClassObject** ppCopy) PURE;
    STDMETHOD(GetObjectText)(LONG lFlags, BSTR* pstrObjectText) PURE;
    STDMETHOD(SpawnDerivedClass)(LONG lFlags, IWbemClassObject** ppNewClass) PURE;
    STDMETHOD(SpawnInstance)(LONG lFlags, IWbemClassObject** ppNewInstance) PURE;
    STDMETHOD(CompareTo)(LONG lFlags, IWbemClassObject* pCompareTo) PURE;
    STDMETHOD(GetPropertyOrigin)(LPCWSTR wszName, BSTR* pstrClassName) PURE;
    STDMETHOD(InheritsFrom)(LPCWSTR strAncestor) PURE;
    STDMETHOD(GetMethod)
    (LPCWSTR wszName, LONG lFlags, IWbemClassObject** ppInSignature, IWbemClassObject** ppOutSignature) PURE;
    STDMETHOD(PutMethod)
    (LPCWSTR wszName, LONG lFlags, IWbemClassObject* pInSignature, IWbemClassObject* pOutSignature) PURE;
    STDMETHOD(DeleteMethod)(LPCWSTR wszName) PURE;
    STDMETHOD(BeginMethodEnumeration)(LONG lEnumFlags) PURE;
    STDMETHOD(NextMethod)
    (LONG lFlags, BSTR* pstrName, IWbemClassObject** ppInSignature, IWbemClassObject** ppOutSignature) PURE;
    STDMETHOD(EndMethodEnumeration)() PURE;
    STDMETHOD(GetMethodQualifierSet)(LPCWSTR wszMethod, IWbemQualifierSet** ppQualSet) PURE;
    STDMETHOD(GetMethodOrigin)(LPCWSTR wszMethodName, BSTR* pstrClassName) PURE;
};

// A connection to one namespace.
struct IWbemServices : public IUnknown
{
    STDMETHOD(OpenNamespace)
    (const BSTR strNamespace, LONG lFlags, IWbemContext* pCtx, IWbemServices** ppWorkingNamespace,
     IWbemCallResult** ppResult) PURE;
    STDMETHOD(CancelAsyncCall)(IWbemObjectSink* pSink) PURE;
    STDMETHOD(QueryObjectSink)(LONG lFlags, IWbemObjectSink** ppResponseHandler) PURE;
    STDMETHOD(GetObject)
    (const BSTR strObjectPath, LONG lFlags, IWbemContext* pCtx, IWbemClassObject** ppObject,
     IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(GetObjectAsync)
    (const BSTR strObjectPath, LONG lFlags, IWbemContext* pCtx, IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(PutClass)
    (IWbemClassObject* pObject, LONG lFlags, IWbemContext* pCtx, IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(PutClassAsync)
    (IWbemClassObject* pObject, LONG lFlags, IWbemContext* pCtx, IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(DeleteClass)
    (const BSTR strClass, LONG lFlags, IWbemContext* pCtx, IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(DeleteClassAsync)
    (const BSTR strClass, LONG lFlags, IWbemContext* pCtx, IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(CreateClassEnum)
    (const BSTR strSuperclass, LONG lFlags, IWbemContext* pCtx, IEnumWbemClassObject** ppEnum) PURE;
    STDMETHOD(CreateClassEnumAsync)
    (const BSTR strSuperclass, LONG lFlags, IWbemContext* pCtx, IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(PutInstance)
    (IWbemClassObject* pInst, LONG lFlags, IWbemContext* pCtx, IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(PutInstanceAsync)
    (IWbemClassObject* pInst, LONG lFlags, IWbemContext* pCtx, IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(DeleteInstance)
    (const BSTR strObjectPath, LONG lFlags, IWbemContext* pCtx, IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(DeleteInstanceAsync)
    (const BSTR strObjectPath, LONG lFlags, IWbemContext* pCtx, IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(CreateInstanceEnum)
    (const BSTR strFilter, LONG lFlags, IWbemContext* pCtx, IEnumWbemClassObject** ppEnum) PURE;
    STDMETHOD(CreateInstanceEnumAsync)
    (const BSTR strFilter, LONG lFlags, IWbemContext* pCtx, IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(ExecQuery)
    (const BSTR strQueryLanguage, const BSTR strQuery, LONG lFlags, IWbemContext* pCtx,
     IEnumWbemClassObject** ppEnum) PURE;
    STDMETHOD(ExecQueryAsync)
    (const BSTR strQueryLanguage, const BSTR strQuery, LONG lFlags, IWbemContext* pCtx,
     IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(ExecNotificationQuery)
    (const BSTR strQueryLanguage, const BSTR strQuery, LONG lFlags, IWbemContext* pCtx,
     IEnumWbemClassObject** ppEnum) PURE;
    STDMETHOD(ExecNotificationQueryAsync)
    (const BSTR strQueryLanguage, const BSTR strQuery, LONG lFlags, IWbemContext* pCtx,
     IWbemObjectSink* pResponseHandler) PURE;
    STDMETHOD(ExecMethod)
    (const BSTR strObjectPath, const BSTR strMethodName, LONG lFlags, IWbemContext* pCtx, IWbemClassObject* pInParams,
     IWbemClassObject** ppOutParams, IWbemCallResult** ppCallResult) PURE;
    STDMETHOD(ExecMethodAsync)
    (const BSTR strObjectPath, const BSTR strMethodName, LONG lFlags, IWbemContext* pCtx, IWbemClassObject* pInParams,
     IWbemObjectSink* pResponseHandler) PURE;
};

struct IWbemLocator : public IUnknown
{
    STDMETHOD(ConnectServer)
    (const BSTR strNetworkResource, const BSTR strUser, const BSTR strPassword, const BSTR strLocale,
     LONG lSecurityFlags, const BSTR strAuthority, IWbemContext* pCtx, IWbemServices** ppNamespace) PURE;
};
