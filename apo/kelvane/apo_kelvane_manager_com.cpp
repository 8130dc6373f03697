// The manager behind the module's exports: class objects and registration.
#include "apo/kelvane/apo_kelvane_manager.h"

#include "apo/base/apo_base_module.h"
#include "apo/kelvane/apo_kelvane_factory.h"
#include "apo/kelvane/apo_kelvane_guid.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"

#include <new>

HRESULT CKelvaneManager::CanUnloadNow() const
{
    return g_lObjectCount != 0 || g_lServerLocks != 0 ? S_FALSE : S_OK;
}

HRESULT CKelvaneManager::GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    if (AUDIO_FAIL_IF(ppv == nullptr, E_POINTER))
        return E_POINTER;
    const int iAPOType = rclsid == KELVANE_RENDER_EFX_GUID ? 8 : rclsid == KELVANE_RENDER_OMFX_GUID ? 10 : 0;
    if (iAPOType == 0)
    {
        AUDIOLOG_ERROR(E_INVALIDARG, "Invalid cisid:" + CAudioSTR::GuidToString(rclsid));
        return E_INVALIDARG; // a class of somebody else's: what the caller holds stays
    }
    *ppv = nullptr;
    // The construction's reference goes when this one does, on every way out.
    const auto fRelease = [](CKelvaneClassFactory* pObject) { pObject->Release(); };
    const std::unique_ptr<CKelvaneClassFactory, decltype(fRelease)> pFactory(new (std::nothrow) CKelvaneClassFactory(),
                                                                             fRelease);
    if (AUDIO_MISSING(pFactory, E_OUTOFMEMORY))
        return E_OUTOFMEMORY;
    pFactory->m_iAPOType = iAPOType;
    const IID& iid = riid;
    return AUDIO_CHECK(pFactory->QueryInterface(iid, ppv));
}

// A failed registration undoes itself, and the caller hears the result of the undoing. Without the module's name
// nothing is written that could be undone.
HRESULT CKelvaneManager::RegisterAllFX()
{
    const std::string strModuleName = CAudioSYS::GetModuleBaseName(m_hInstance);
    if (AUDIO_FAIL_IF(strModuleName.empty(), E_FAIL))
        return E_FAIL;
    if (AUDIO_CHECK(CAudioREG::RegisterAudioAPO(CKelvaneClassFactory::KelvanePostEFX_Property, "KELVANE Post EFX Class",
                                                strModuleName)) == 0 &&
        AUDIO_CHECK(CAudioREG::RegisterAudioAPO(CKelvaneClassFactory::KelvanePostOMFX_Property,
                                                "KELVANE Post OMFX Class", strModuleName)) == 0)
        return S_OK;
    return UnregisterAllFX();
}

// A class that can't be removed stops the removal; the other stays registered.
HRESULT CKelvaneManager::UnregisterAllFX()
{
    const HRESULT hResult = AUDIO_CHECK(CAudioREG::UnregisterAudioAPO(KELVANE_RENDER_EFX_GUID));
    if (hResult != 0)
        return hResult;
    return AUDIO_CHECK(CAudioREG::UnregisterAudioAPO(KELVANE_RENDER_OMFX_GUID));
}
