// Automation values: texts, arrays of bytes, variants.
#include "base/failure.h"

#include <windows.h>

#include <oleauto.h>

#include <cstdlib>
#include <cstring>

namespace
{
constexpr VARTYPE BYTE_ARRAY = VT_ARRAY | VT_UI1;

HRESULT CopyArray(SAFEARRAY* pFrom, SAFEARRAY*& pTo)
{
    pTo = nullptr;
    if (pFrom == nullptr)
        return S_OK;
    pTo = SafeArrayCreate(VT_UI1, 1, pFrom->rgsabound);
    if (pTo == nullptr)
        return E_OUTOFMEMORY;
    std::memcpy(pTo->pvData, pFrom->pvData, pFrom->rgsabound[0].cElements);
    return S_OK;
}
} // namespace

EXTERN_C BSTR WINAPI SysAllocString(const OLECHAR* psz)
{
    return psz == nullptr || IsToldToFail("SysAllocString") ? nullptr : wcsdup(psz);
}

EXTERN_C void WINAPI SysFreeString(BSTR bstrString)
{
    std::free(bstrString);
}

// The elements lie behind the record.
EXTERN_C SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound)
{
    if (IsToldToFail("SafeArrayCreate") || vt != VT_UI1 || cDims != 1 || rgsabound == nullptr)
        return nullptr;
    auto* const psa = static_cast<SAFEARRAY*>(std::calloc(1, sizeof(SAFEARRAY) + rgsabound->cElements));
    if (psa == nullptr)
        return nullptr;
    psa->cDims = 1;
    psa->cbElements = 1;
    psa->rgsabound[0] = *rgsabound;
    psa->pvData = psa + 1;
    return psa;
}

EXTERN_C HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData)
{
    HRESULT hResult = S_OK;
    if (IsToldToFailWith("SafeArrayAccessData", hResult))
        return hResult;
    if (psa == nullptr || ppvData == nullptr)
        return E_INVALIDARG;
    psa->cLocks++;
    *ppvData = psa->pvData;
    return S_OK;
}

EXTERN_C HRESULT WINAPI SafeArrayUnaccessData(SAFEARRAY* psa)
{
    if (psa == nullptr)
        return E_INVALIDARG;
    if (psa->cLocks == 0)
        return E_UNEXPECTED;
    psa->cLocks--;
    return S_OK;
}

EXTERN_C UINT WINAPI SafeArrayGetDim(SAFEARRAY* psa)
{
    return psa == nullptr ? 0 : psa->cDims;
}

EXTERN_C UINT WINAPI SafeArrayGetElemsize(SAFEARRAY* psa)
{
    return psa == nullptr ? 0 : psa->cbElements;
}

EXTERN_C HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound)
{
    if (psa == nullptr || plLbound == nullptr)
        return E_INVALIDARG;
    if (nDim != 1)
        return DISP_E_BADINDEX;
    *plLbound = psa->rgsabound[0].lLbound;
    return S_OK;
}

EXTERN_C HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound)
{
    const HRESULT hResult = SafeArrayGetLBound(psa, nDim, plUbound);
    if (SUCCEEDED(hResult))
        *plUbound += static_cast<LONG>(psa->rgsabound[0].cElements) - 1;
    return hResult;
}

EXTERN_C void WINAPI VariantInit(VARIANTARG* pvarg)
{
    *pvarg = VARIANTARG{};
}

EXTERN_C HRESULT WINAPI VariantClear(VARIANTARG* pvarg)
{
    if (pvarg == nullptr)
        return E_INVALIDARG;
    if (pvarg->vt == BYTE_ARRAY)
    {
        if (pvarg->parray != nullptr && pvarg->parray->cLocks > 0)
            return DISP_E_ARRAYISLOCKED;
        std::free(pvarg->parray);
    }
    else if (pvarg->vt == VT_BSTR)
        SysFreeString(pvarg->bstrVal);
    VariantInit(pvarg);
    return S_OK;
}

EXTERN_C HRESULT WINAPI VariantCopy(VARIANTARG* pvargDest, VARIANTARG* pvargSrc)
{
    if (pvargDest == nullptr || pvargSrc == nullptr)
        return E_INVALIDARG;
    VARIANT stCopy = *pvargSrc;
    HRESULT hResult = S_OK;
    if (stCopy.vt == BYTE_ARRAY)
        hResult = CopyArray(pvargSrc->parray, stCopy.parray);
    else if (stCopy.vt == VT_BSTR)
    {
        stCopy.bstrVal = SysAllocString(pvargSrc->bstrVal);
        hResult = stCopy.bstrVal != nullptr || pvargSrc->bstrVal == nullptr ? S_OK : E_OUTOFMEMORY;
    }
    else if (stCopy.vt != VT_EMPTY && stCopy.vt != VT_NULL)
        return DISP_E_BADVARTYPE;
    if (SUCCEEDED(hResult))
        hResult = VariantClear(pvargDest);
    if (SUCCEEDED(hResult))
        *pvargDest = stCopy;
    else
        VariantClear(&stCopy);
    return hResult;
}
