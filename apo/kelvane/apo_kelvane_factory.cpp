// The class factory of both variants, and their registration records.
#include "apo/kelvane/apo_kelvane_factory.h"

#include "apo/kelvane/apo_kelvane_guid.h"
#include "apo/kelvane/apo_kelvane_postefx.h"
#include "audioapi/audio_api_log.h"

#include <new>

static constexpr WCHAR aCopyright[] = L"Copyright (C) the KelvaneAPO authors. All rights reserved.";

const CKelvaneRegProperties CKelvaneClassFactory::KelvanePostEFX_Property(KELVANE_RENDER_EFX_GUID, L"KELVANEPostEFX",
                                                                          aCopyright);
const CKelvaneRegProperties CKelvaneClassFactory::KelvanePostOMFX_Property(KELVANE_RENDER_OMFX_GUID, L"KELVANEPostOMFX",
                                                                           aCopyright);

CBaseAPO* CKelvaneClassFactory::CreateAPOInstance(IUnknown* pUnkOuter)
{
    switch (m_iAPOType)
    {
    case 8:
        return new (std::nothrow) CKelvanePostEFX(pUnkOuter, KelvanePostEFX_Property);
    case 10:
        return new (std::nothrow) CKelvanePostEFX(pUnkOuter, KelvanePostOMFX_Property);
    default:
        AUDIOLOG_WARN("Invalid APO Type!");
        return nullptr;
    }
}
