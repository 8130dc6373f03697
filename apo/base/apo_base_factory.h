// The base of the class factories: counts references and server locks, and hands out what its heir builds.
#pragma once

#include "apo/base/apo_base_class.h"

#include <unknwn.h>
#include <windows.h>

#include <atomic>

// Lives as long as its caller's reference. A factory alone doesn't keep the module loaded; LockServer does. Any thread.
class APOClassFactory : public IClassFactory
{
public:
    APOClassFactory() = default;
    APOClassFactory(const APOClassFactory&) = delete;
    APOClassFactory& operator=(const APOClassFactory&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // Builds an object and gives its interface iid, the only reference. With an outer unknown only IID_IUnknown is
    // given. E_POINTER, E_NOINTERFACE, E_OUTOFMEMORY, with null in *ppv.
    STDMETHODIMP CreateInstance(IUnknown* pUnkOuter, REFIID iid, void** ppv) override;
    STDMETHODIMP LockServer(BOOL bLock) override;

    virtual ~APOClassFactory() = default;

protected:
    // A new object with one reference, or null.
    virtual CBaseAPO* CreateAPOInstance(IUnknown* pUnkOuter) = 0;

    std::atomic<LONG> m_cRef{1};

public:
    INT32 m_iAPOType = 11; // index into the type tags: 8 EFX, 10 OMFX, 11 none

private:
    // The same; null too when the memory ends while it is built.
    CBaseAPO* TryCreateAPOInstance(IUnknown* pUnkOuter);
};
