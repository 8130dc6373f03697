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

// What a start chooses the parameter set by. A change behind it, before the lock has taken its own look at the system,
// is left for the first period to find.
struct ChosenBy
{
    int iSpeakerVolume;
    int iSpeakerMode;
    int iMicrophoneMode;
};

ChosenBy MirrorsOf(CBaseEngine& oEngine)
{
    return {oEngine.GetSpeakerVolume(0), oEngine.GetSpeakerMode(0), oEngine.GetMicrophoneMode(0)};
}

void SetMirrors(CBaseEngine& oEngine, const ChosenBy& stChosenBy)
{
    oEngine.SetSpeakerVolume(stChosenBy.iSpeakerVolume);
    oEngine.SetSpeakerMode(stChosenBy.iSpeakerMode);
    oEngine.SetMicrophoneMode(stChosenBy.iMicrophoneMode);
}
} // namespace

CKelvanePostEFX::CKelvanePostEFX(IUnknown* pUnkOuter, const APO_REG_PROPERTIES* pProperties)
    : CKelvaneEFX(pUnkOuter, pProperties), m_bInline(pProperties->clsid == KELVANE_RENDER_OMFX_GUID)
{
    MakeEngine();
}

void CKelvanePostEFX::MakeEngine()
{
    std::unique_ptr<CKelvanePostEngine> pEngine(new (std::nothrow) CKelvanePostEngine());
    if (pEngine != nullptr && m_bInline)
        pEngine->MakeInline();
    m_pEngine = std::move(pEngine);
    AUDIOLOG_DEBUG((m_pEngine != nullptr && m_bInline ? "Create OMFX Engine" : "Create Post Engine") +
                   AddressTag(m_pEngine.get()));
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
    if (m_pEngine == nullptr)
        MakeEngine(); // there was no memory for it so far
    // A lock that will be refused leaves a running stream as it is.
    UNCOMPRESSEDAUDIOFORMAT oInFormat{};
    bool bStarted = false;
    ChosenBy stChosenBy{};
    if (m_pEngine != nullptr && IsLockTaken(u32NumInputConnections, ppInputConnections, u32NumOutputConnections,
                                            ppOutputConnections, oInFormat))
    {
        CAudioMonitor::Instance()->WaitForFirstRead(); // the start and the first frame go by the registry's values
        m_pEngine->SetStreamChannelCount(static_cast<int>(oInFormat.dwSamplesPerFrame));
        bStarted = AUDIO_CHECK(m_pEngine->InitAlgorithmParameter()) == 0;
        stChosenBy = MirrorsOf(*m_pEngine);
    }
    const HRESULT hResult = AUDIO_CHECK(CBaseAPO::LockForProcess(u32NumInputConnections, ppInputConnections,
                                                                 u32NumOutputConnections, ppOutputConnections));
    if (bStarted && hResult == S_OK)
        SetMirrors(*m_pEngine, stChosenBy);
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
