// The base of the class factories.
#include "apo/base/apo_base_factory.h"

#include "apo/base/apo_base_module.h"
#include "audioapi/audio_api_log.h"

#include <new>

STDMETHODIMP APOClassFactory::QueryInterface(REFIID riid, void** ppv)
try
{
    if (AUDIO_MISSING(ppv, E_POINTER))
        return E_POINTER;
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory)
        return E_NOINTERFACE;
    *ppv = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
}
catch (...)
{
    return CaughtResult();
}

STDMETHODIMP_(ULONG) APOClassFactory::AddRef()
{
    return static_cast<ULONG>(++m_cRef);
}

STDMETHODIMP_(ULONG) APOClassFactory::Release()
{
    const LONG cRef = --m_cRef;
    if (cRef == 0)
        delete this;
    return static_cast<ULONG>(cRef);
}

STDMETHODIMP APOClassFactory::CreateInstance(IUnknown* pUnkOuter, REFIID iid, void** ppv)
try
{
    if (AUDIO_FAIL_IF(ppv == nullptr, E_POINTER))
        return E_POINTER;
    *ppv = nullptr;
    if (pUnkOuter != nullptr && iid != IID_IUnknown)
        return E_NOINTERFACE;
    // The construction's reference goes when this one does, on every way out.
    const auto fRelease = [](CBaseAPO* pObject) { pObject->NonDelegatingRelease(); };
    const std::unique_ptr<CBaseAPO, decltype(fRelease)> pAPOBase(TryCreateAPOInstance(pUnkOuter), fRelease);
    if (AUDIO_MISSING(pAPOBase, E_OUTOFMEMORY))
        return E_OUTOFMEMORY;
    return AUDIO_CHECK(pAPOBase->NonDelegatingQueryInterface(iid, ppv));
}
catch (...)
{
    return CaughtResult();
}

CBaseAPO* APOClassFactory::TryCreateAPOInstance(IUnknown* pUnkOuter)
try
{
    return CreateAPOInstance(pUnkOuter);
}
catch (const std::bad_alloc&)
{
    return nullptr;
}

STDMETHODIMP APOClassFactory::LockServer(BOOL bLock)
{
    if (bLock)
        ++g_lServerLocks;
    else
        --g_lServerLocks;
    return S_OK;
}
