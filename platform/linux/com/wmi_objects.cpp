// The controller's class, its method's arguments, and the values in them.
#include "com/wmi_objects.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

namespace
{
constexpr const WCHAR* METHOD_NAME = L"OemWMIfun";

// One whole number of decimal digits, as the type CIM_UINT64 travels in text.
bool IsDecimal(BSTR bstrText)
{
    const size_t iLength = bstrText == nullptr ? 0 : wcslen(bstrText);
    return iLength > 0 && iLength <= 20 && wcsspn(bstrText, L"0123456789") == iLength;
}

bool IsByteArray(const VARIANT& stValue)
{
    return stValue.vt == (VT_ARRAY | VT_UI1) && SafeArrayGetDim(stValue.parray) == 1;
}
} // namespace

CWbemObject::CWbemObject(WbemRole eRole, bool bByteArray) : m_eRole(eRole), m_bByteArray(bByteArray)
{
    m_stValue.vt = VT_NULL;
    if (eRole == WbemRole::InSignature || eRole == WbemRole::InArguments)
    {
        m_pProperty = bByteArray ? L"u8Input" : L"u64Input";
        m_lType = bByteArray ? CIM_UINT8 | CIM_FLAG_ARRAY : CIM_UINT64;
    }
    else if (eRole == WbemRole::OutArguments)
    {
        m_pProperty = L"u8Output";
        m_lType = CIM_UINT8 | CIM_FLAG_ARRAY;
    }
}

STDMETHODIMP CWbemObject::Get(LPCWSTR wszName, LONG, VARIANT* pVal, CIMTYPE* pType, LONG* plFlavor)
{
    HRESULT hResult = S_OK;
    if (IsRefused("Get", hResult))
        return hResult;
    if (wszName == nullptr)
        return WBEM_E_INVALID_PARAMETER;
    if (m_pProperty == nullptr || wcscasecmp(wszName, m_pProperty) != 0)
        return WBEM_E_NOT_FOUND;
    if (pType != nullptr)
        *pType = m_lType;
    if (plFlavor != nullptr)
        *plFlavor = 0;
    if (pVal == nullptr)
        return S_OK;
    VariantInit(pVal); // the caller's may hold anything, as with the published interface
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    return VariantCopy(pVal, &m_stValue);
}

STDMETHODIMP CWbemObject::Put(LPCWSTR wszName, LONG, VARIANT* pVal, CIMTYPE Type)
{
    HRESULT hResult = S_OK;
    if (IsRefused("Put", hResult))
        return hResult;
    if (wszName == nullptr || pVal == nullptr)
        return WBEM_E_INVALID_PARAMETER;
    if (m_eRole != WbemRole::InArguments)
        return WBEM_E_ACCESS_DENIED;
    if (wcscasecmp(wszName, m_pProperty) != 0)
        return WBEM_E_NOT_FOUND;
    const bool bFits = m_bByteArray ? IsByteArray(*pVal) : pVal->vt == VT_BSTR && IsDecimal(pVal->bstrVal);
    if (!bFits || (Type != CIM_EMPTY && Type != m_lType))
        return WBEM_E_TYPE_MISMATCH;
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    return VariantCopy(&m_stValue, pVal);
}

STDMETHODIMP CWbemObject::SpawnInstance(LONG, IWbemClassObject** ppNewInstance)
{
    if (ppNewInstance == nullptr)
        return WBEM_E_INVALID_PARAMETER;
    *ppNewInstance = nullptr;
    HRESULT hResult = S_OK;
    if (IsRefused("SpawnInstance", hResult))
        return hResult;
    if (m_eRole != WbemRole::InSignature)
        return WBEM_E_FAILED;
    *ppNewInstance = new CWbemObject(WbemRole::InArguments, m_bByteArray);
    return S_OK;
}

STDMETHODIMP CWbemObject::GetMethod(LPCWSTR wszName, LONG, IWbemClassObject** ppInSignature,
                                    IWbemClassObject** ppOutSignature)
{
    if (ppInSignature != nullptr)
        *ppInSignature = nullptr;
    if (ppOutSignature != nullptr)
        *ppOutSignature = nullptr;
    HRESULT hResult = S_OK;
    if (IsRefused("GetMethod", hResult))
        return hResult;
    if (wszName == nullptr)
        return WBEM_E_INVALID_PARAMETER;
    if (m_eRole != WbemRole::Class || wcscasecmp(wszName, METHOD_NAME) != 0)
        return WBEM_E_NOT_FOUND;
    if (ppInSignature != nullptr)
        *ppInSignature = new CWbemObject(WbemRole::InSignature, m_bByteArray);
    if (ppOutSignature != nullptr)
        *ppOutSignature = new CWbemObject(WbemRole::OutArguments);
    return S_OK;
}

bool CWbemObject::ReadInput(UINT64& u64Word, machine::SentItem& oItem)
{
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    u64Word = 0;
    if (m_stValue.vt == VT_BSTR)
    {
        oItem.strWhat = "u64Input";
        oItem.vecData.assign(m_stValue.bstrVal, m_stValue.bstrVal + wcslen(m_stValue.bstrVal)); // digits
        u64Word = wcstoull(m_stValue.bstrVal, nullptr, 10);
        return true;
    }
    if (m_stValue.vt != (VT_ARRAY | VT_UI1))
        return false;
    const BYTE* const pBytes = static_cast<const BYTE*>(m_stValue.parray->pvData);
    oItem.strWhat = "u8Input";
    oItem.vecData.assign(pBytes, pBytes + m_stValue.parray->rgsabound[0].cElements);
    std::memcpy(&u64Word, pBytes, std::min(sizeof u64Word, oItem.vecData.size()));
    return true;
}

HRESULT CWbemObject::SetOutput(const std::vector<BYTE>& vecOutput)
{
    SAFEARRAYBOUND stBound{static_cast<ULONG>(vecOutput.size()), 0};
    SAFEARRAY* const pArray = SafeArrayCreate(VT_UI1, 1, &stBound);
    if (pArray == nullptr)
        return E_OUTOFMEMORY;
    std::copy(vecOutput.begin(), vecOutput.end(), static_cast<BYTE*>(pArray->pvData));
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    VariantClear(&m_stValue);
    m_stValue.vt = VT_ARRAY | VT_UI1;
    m_stValue.parray = pArray;
    return S_OK;
}
