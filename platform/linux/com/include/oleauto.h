// Automation values: texts, arrays, variants.
#pragma once

#include <combaseapi.h>
#include <oaidl.h>

// Null for null, or when there is no memory; the caller frees it with SysFreeString. Any thread.
EXTERN_C BSTR WINAPI SysAllocString(const OLECHAR* psz);
EXTERN_C BSTR WINAPI SysAllocStringLen(const OLECHAR* strIn, UINT ui);
EXTERN_C void WINAPI SysFreeString(BSTR bstrString);
EXTERN_C UINT WINAPI SysStringLen(BSTR pbstr);    // characters
EXTERN_C UINT WINAPI SysStringByteLen(BSTR bstr); // bytes

// Zeroed elements of a plain number type; null for any other type, for no dimension or no memory.
EXTERN_C SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound);
EXTERN_C SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements);
// DISP_E_ARRAYISLOCKED while data is accessed.
EXTERN_C HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* psa);
// The elements, null if there are none; the array stays locked until SafeArrayUnaccessData.
EXTERN_C HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData);
EXTERN_C HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* psa);
EXTERN_C UINT WINAPI SafeArrayGetDim(SAFEARRAY* psa);
EXTERN_C UINT WINAPI SafeArrayGetElemsize(SAFEARRAY* psa); // bytes
EXTERN_C HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt);
// Dimensions count from 1; DISP_E_BADINDEX for one that isn't there.
EXTERN_C HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound);
EXTERN_C HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound);

EXTERN_C void WINAPI VariantInit(VARIANTARG* pvarg);
// Frees what the value owns, its text or array, and leaves it empty.
EXTERN_C HRESULT WINAPI VariantClear(VARIANTARG* pvarg);
// The destination owns a copy; what it held is freed. DISP_E_BADVARTYPE for types that aren't carried here.
EXTERN_C HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, VARIANTARG* pvargSrc);
