// Automation values: texts, arrays, variants.
#pragma once

#include <combaseapi.h>
#include <oaidl.h>

// Null for null, or when there is no memory; the caller frees it with SysFreeString. Any thread.
EXTERN_C BSTR WINAPI SysAllocString(const OLECHAR* psz);
EXTERN_C void WINAPI SysFreeString(BSTR bstrString);

// One dimension of zeroed bytes; null for anything else, or no memory. Freed with the variant that it is put in.
EXTERN_C SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound);
// The elements; the array stays locked until SafeArrayUnaccessData.
EXTERN_C HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData);
EXTERN_C HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* psa);
EXTERN_C UINT WINAPI SafeArrayGetDim(SAFEARRAY* psa);
EXTERN_C UINT WINAPI SafeArrayGetElemsize(SAFEARRAY* psa); // bytes
// Dimensions count from 1; DISP_E_BADINDEX for one that isn't there.
EXTERN_C HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound);
EXTERN_C HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound);

EXTERN_C void WINAPI VariantInit(VARIANTARG* pvarg);
// Frees what the value owns, its text or array, and leaves it empty. DISP_E_ARRAYISLOCKED while data is accessed.
EXTERN_C HRESULT WINAPI VariantClear(VARIANTARG* pvarg);
// The destination owns a copy; what it held is freed. DISP_E_BADVARTYPE for types that aren't carried here.
EXTERN_C HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, VARIANTARG* pvargSrc);
