// Automation values: texts with their length in front, arrays of numbers, variants.
#include "base/failure.h"

#include <windows.h>

#include <oleauto.h>

#include <cstdlib>
#include <cstring>

namespace
{
constexpr size_t TEXT_PREFIX = 8; // bytes; the length is the last four of them
constexpr UINT LONGEST_TEXT = 0x3FFFFFF0;

struct CElementType
{
    VARTYPE vt;
    ULONG ulSize; // bytes
};
constexpr CElementType g_aElementTypes[] = {{VT_I1, 1}, {VT_UI1, 1}, {VT_I2, 2}, {VT_UI2, 2}, {VT_BOOL, 2},
                                            {VT_I4, 4}, {VT_UI4, 4}, {VT_R4, 4}, {VT_INT, 4}, {VT_UINT, 4},
                                            {VT_I8, 8}, {VT_UI8, 8}, {VT_R8, 8}};

ULONG ElementSize(VARTYPE vt)
{
    for (const CElementType& oType : g_aElementTypes)
        if (oType.vt == vt)
            return oType.ulSize;
    return 0;
}

// The element type stands in front of the record; the bounds of the further dimensions behind it.
struct CArrayBlock
{
    alignas(16) VARTYPE vt;
    alignas(16) SAFEARRAY stArray;
};

CArrayBlock* BlockOf(SAFEARRAY* psa)
{
    return reinterpret_cast<CArrayBlock*>(reinterpret_cast<BYTE*>(psa) - offsetof(CArrayBlock, stArray));
}

// The number of elements, or 0 with bFits false when the bytes can't be counted.
size_t CountElements(const SAFEARRAYBOUND* pBounds, UINT cDims, ULONG ulSize, bool& bFits)
{
    size_t iCount = 1;
    bFits = true;
    for (UINT i = 0; i < cDims && bFits; i++)
        bFits = !__builtin_mul_overflow(iCount, static_cast<size_t>(pBounds[i].cElements), &iCount);
    size_t iBytes = 0;
    bFits = bFits && !__builtin_mul_overflow(iCount, static_cast<size_t>(ulSize), &iBytes);
    return bFits ? iCount : 0;
}

// The platform keeps the dimensions in reverse.
const SAFEARRAYBOUND* BoundOf(const SAFEARRAY* psa, UINT nDim)
{
    return psa != nullptr && nDim >= 1 && nDim <= psa->cDims ? &psa->rgsabound[psa->cDims - nDim] : nullptr;
}

// An armed failure's code is the call's result.
bool IsToldTo(const char* pCall, HRESULT& hResult)
{
    if (!IsToldToFail(pCall))
        return false;
    hResult = static_cast<HRESULT>(GetLastError());
    return true;
}

HRESULT CopyArray(SAFEARRAY* pFrom, SAFEARRAY*& pTo)
{
    VARTYPE vt = VT_EMPTY;
    pTo = nullptr;
    if (pFrom == nullptr)
        return S_OK;
    SafeArrayGetVartype(pFrom, &vt);
    pTo = SafeArrayCreateVector(vt, pFrom->rgsabound[0].lLbound, pFrom->rgsabound[0].cElements);
    if (pTo == nullptr)
        return E_OUTOFMEMORY;
    if (pFrom->pvData != nullptr)
        std::memcpy(pTo->pvData, pFrom->pvData, static_cast<size_t>(pFrom->cbElements) * pFrom->rgsabound[0].cElements);
    return S_OK;
}
} // namespace

EXTERN_C BSTR WINAPI SysAllocString(const OLECHAR* psz)
{
    return psz == nullptr ? nullptr : SysAllocStringLen(psz, static_cast<UINT>(wcslen(psz)));
}

EXTERN_C BSTR WINAPI SysAllocStringLen(const OLECHAR* strIn, UINT ui)
{
    if (IsToldToFail("SysAllocString") || ui > LONGEST_TEXT)
        return nullptr;
    const UINT uiBytes = ui * static_cast<UINT>(sizeof(OLECHAR));
    BYTE* const pBlock = static_cast<BYTE*>(std::calloc(1, TEXT_PREFIX + uiBytes + sizeof(OLECHAR)));
    if (pBlock == nullptr)
        return nullptr;
    std::memcpy(pBlock + TEXT_PREFIX - sizeof uiBytes, &uiBytes, sizeof uiBytes);
    if (strIn != nullptr)
        std::memcpy(pBlock + TEXT_PREFIX, strIn, uiBytes);
    return reinterpret_cast<BSTR>(pBlock + TEXT_PREFIX);
}

EXTERN_C void WINAPI SysFreeString(BSTR bstrString)
{
    if (bstrString != nullptr)
        std::free(reinterpret_cast<BYTE*>(bstrString) - TEXT_PREFIX);
}

EXTERN_C UINT WINAPI SysStringByteLen(BSTR bstr)
{
    UINT uiBytes = 0;
    if (bstr != nullptr)
        std::memcpy(&uiBytes, reinterpret_cast<const BYTE*>(bstr) - sizeof uiBytes, sizeof uiBytes);
    return uiBytes;
}

EXTERN_C UINT WINAPI SysStringLen(BSTR pbstr)
{
    return SysStringByteLen(pbstr) / static_cast<UINT>(sizeof(OLECHAR));
}

EXTERN_C SAFEARRAY* WINAPI SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound)
{
    const ULONG ulSize = ElementSize(vt);
    if (IsToldToFail("SafeArrayCreate") || ulSize == 0 || cDims == 0 || cDims > 0xFFFF || rgsabound == nullptr)
        return nullptr;
    bool bFits = false;
    const size_t iCount = CountElements(rgsabound, cDims, ulSize, bFits);
    if (!bFits)
        return nullptr;
    auto* const pBlock =
        static_cast<CArrayBlock*>(std::calloc(1, sizeof(CArrayBlock) + (cDims - 1) * sizeof(SAFEARRAYBOUND)));
    if (pBlock == nullptr)
        return nullptr;
    pBlock->vt = vt;
    SAFEARRAY* const psa = &pBlock->stArray;
    psa->cDims = static_cast<USHORT>(cDims);
    psa->fFeatures = FADF_HAVEVARTYPE;
    psa->cbElements = ulSize;
    for (UINT i = 0; i < cDims; i++)
        psa->rgsabound[cDims - 1 - i] = rgsabound[i];
    psa->pvData = iCount > 0 ? std::calloc(iCount, ulSize) : nullptr;
    if (iCount > 0 && psa->pvData == nullptr)
    {
        std::free(pBlock);
        return nullptr;
    }
    return psa;
}

EXTERN_C SAFEARRAY* WINAPI SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements)
{
    SAFEARRAYBOUND stBound{cElements, lLbound};
    return SafeArrayCreate(vt, 1, &stBound);
}

EXTERN_C HRESULT WINAPI SafeArrayDestroy(SAFEARRAY* psa)
{
    if (psa == nullptr)
        return S_OK;
    if (psa->cLocks > 0)
        return DISP_E_ARRAYISLOCKED;
    std::free(psa->pvData);
    std::free(BlockOf(psa));
    return S_OK;
}

EXTERN_C HRESULT WINAPI SafeArrayAccessData(SAFEARRAY* psa, void** ppvData)
{
    HRESULT hResult = S_OK;
    if (IsToldTo("SafeArrayAccessData", hResult))
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

EXTERN_C HRESULT WINAPI SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt)
{
    if (psa == nullptr || pvt == nullptr)
        return E_INVALIDARG;
    *pvt = BlockOf(psa)->vt;
    return S_OK;
}

EXTERN_C HRESULT WINAPI SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound)
{
    const SAFEARRAYBOUND* const pBound = BoundOf(psa, nDim);
    if (psa == nullptr || plLbound == nullptr)
        return E_INVALIDARG;
    if (pBound == nullptr)
        return DISP_E_BADINDEX;
    *plLbound = pBound->lLbound;
    return S_OK;
}

EXTERN_C HRESULT WINAPI SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound)
{
    const SAFEARRAYBOUND* const pBound = BoundOf(psa, nDim);
    if (psa == nullptr || plUbound == nullptr)
        return E_INVALIDARG;
    if (pBound == nullptr)
        return DISP_E_BADINDEX;
    *plUbound = static_cast<LONG>(pBound->lLbound + static_cast<LONGLONG>(pBound->cElements) - 1);
    return S_OK;
}

EXTERN_C void WINAPI VariantInit(VARIANTARG* pvarg)
{
    *pvarg = VARIANTARG{};
}

EXTERN_C HRESULT WINAPI VariantClear(VARIANTARG* pvarg)
{
    if (pvarg == nullptr)
        return E_INVALIDARG;
    if ((pvarg->vt & VT_ARRAY) != 0 && (pvarg->vt & VT_BYREF) == 0)
    {
        const HRESULT hResult = SafeArrayDestroy(pvarg->parray);
        if (FAILED(hResult))
            return hResult;
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
    const VARTYPE vt = pvargSrc->vt;
    const bool bVector = (vt & VT_ARRAY) != 0 && SafeArrayGetDim(pvargSrc->parray) <= 1;
    if ((vt & VT_BYREF) != 0 || (vt != VT_EMPTY && vt != VT_NULL && vt != VT_BSTR && !bVector && ElementSize(vt) == 0))
        return DISP_E_BADVARTYPE;
    VARIANT stCopy = *pvargSrc;
    HRESULT hResult = S_OK;
    if (bVector)
        hResult = CopyArray(pvargSrc->parray, stCopy.parray);
    else if (vt == VT_BSTR && pvargSrc->bstrVal != nullptr)
    {
        stCopy.bstrVal = SysAllocStringLen(pvargSrc->bstrVal, SysStringLen(pvargSrc->bstrVal));
        hResult = stCopy.bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    if (SUCCEEDED(hResult))
        hResult = VariantClear(pvargDest);
    if (SUCCEEDED(hResult))
        *pvargDest = stCopy;
    else if (bVector)
        SafeArrayDestroy(stCopy.parray);
    else if (vt == VT_BSTR)
        SysFreeString(stCopy.bstrVal);
    return hResult;
}
