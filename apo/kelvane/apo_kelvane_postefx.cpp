// The one concrete processing object.
#include "apo/kelvane/apo_kelvane_postefx.h"

#include "apo/base/apo_base_module.h"
#include "apo/kelvane/apo_kelvane_guid.h"
#include "apo/kelvane/apo_kelvane_postengine.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_string.h"

namespace
{
std::string AddressTag(const void* pObject)
{
    return CAudioSTR::ToHexTag(static_cast<INT64>(reinterpret_cast<UINT_PTR>(pObject)));
}

// Turns a fresh engine into the inline one: the algorithm in the caller's thread, no lead-in.
void MakeInline(CBaseEngine& oEngine)
{
    oEngine.m_iAPOType = 10;
    oEngine.m_strDumpInName = AUDIO_DUMP_POST_OMFX_DATA_IN;
    oEngine.m_strDumpOutName = AUDIO_DUMP_POST_OMFX_DATA_OUT;
    oEngine.m_iCacheFrameCount = 0;
    oEngine.m_bInlineMode = 1;
}
} // namespace

CKelvanePostEFX::CKelvanePostEFX(IUnknown* pUnkOuter, const APO_REG_PROPERTIES* pProperties)
    : CKelvaneEFX(pUnkOuter, pProperties)
{
    m_pEngine.reset(new (std::nothrow) CKelvanePostEngine());
    if (m_pEngine != nullptr && pProperties->clsid == KELVANE_RENDER_OMFX_GUID)
    {
        MakeInline(*m_pEngine);
        AUDIOLOG_DEBUG("Create OMFX Engine" + AddressTag(m_pEngine.get()));
        return;
    }
    AUDIOLOG_DEBUG("Create Post Engine" + AddressTag(m_pEngine.get()));
}

CKelvanePostEFX::~CKelvanePostEFX()
{
    m_pEngine.reset();
}

STDMETHODIMP CKelvanePostEFX::LockForProcess(UINT32 u32NumInputConnections,
                                             APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                             UINT32 u32NumOutputConnections,
                                             APO_CONNECTION_DESCRIPTOR** ppOutputConnections)
try
{
    CAudioMonitor::Instance()->WaitForFirstRead(); // the start and the first frame go by the registry's values
    if (m_pEngine != nullptr)
        AUDIO_CHECK(m_pEngine->InitAlgorithmParameter());
    const HRESULT hResult = AUDIO_CHECK(CBaseAPO::LockForProcess(u32NumInputConnections, ppInputConnections,
                                                                 u32NumOutputConnections, ppOutputConnections));
    // A refused lock leaves the object in its last format, which the engine, started afresh, must know before a period.
    if (hResult != S_OK && m_pEngine != nullptr)
        HandFormatToEngine();
    return hResult;
}
catch (...)
{
    return CaughtResult();
}

RT_CODE int CKelvanePostEFX::GetRenderMode()
{
    return CAudioMonitor::Instance()->GetRenderMode();
}
