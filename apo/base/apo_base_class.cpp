// The processing object as the audio engine sees it outside the periodic call: interfaces and initialisation.
#include "apo/base/apo_base_class.h"

#include "apo/base/apo_base_module.h"
#include "audioapi/audio_api_log.h"

#include <cstddef>
#include <cstring>

namespace
{
// Where the mode stands in the longer init record.
constexpr size_t iModeOffset = offsetof(APOInitSystemEffects2, AudioProcessingMode);
static_assert(sizeof(APOInitSystemEffects) == 56 && sizeof(APOInitSystemEffects2) == 88 && iModeOffset == 64,
              "the init records are told apart by their sizes");
} // namespace

STDMETHODIMP CNonDelegatingUnknown::QueryInterface(REFIID iid, void** ppv)
{
    return m_oObject.NonDelegatingQueryInterface(iid, ppv);
}

STDMETHODIMP_(ULONG) CNonDelegatingUnknown::AddRef()
{
    return m_oObject.NonDelegatingAddRef();
}

STDMETHODIMP_(ULONG) CNonDelegatingUnknown::Release()
{
    return m_oObject.NonDelegatingRelease();
}

CBaseAPO::CBaseAPO(IUnknown* pUnkOuter, const APO_REG_PROPERTIES* pProperties)
    : CBaseAudioProcessingObject(pProperties), m_pUnkOuter(pUnkOuter != nullptr ? pUnkOuter : &m_oOwnUnknown)
{
    ++g_lObjectCount;
}

CBaseAPO::~CBaseAPO()
{
    m_pEngine.reset();
    --g_lObjectCount;
}

STDMETHODIMP CBaseAPO::QueryInterface(REFIID iid, void** ppv)
{
    return m_pUnkOuter->QueryInterface(iid, ppv);
}

STDMETHODIMP_(ULONG) CBaseAPO::AddRef()
{
    return m_pUnkOuter->AddRef();
}

STDMETHODIMP_(ULONG) CBaseAPO::Release()
{
    return m_pUnkOuter->Release();
}

STDMETHODIMP CBaseAPO::NonDelegatingQueryInterface(REFIID iid, void** ppv)
try
{
    if (AUDIO_MISSING(ppv, E_POINTER))
        return E_POINTER;
    *ppv = nullptr;
    if (iid == IID_IUnknown)
    {
        *ppv = static_cast<IUnknown*>(&m_oOwnUnknown);
        NonDelegatingAddRef();
        return S_OK;
    }
    if (iid == IID_IAudioProcessingObject)
        *ppv = static_cast<IAudioProcessingObject*>(this);
    else if (iid == IID_IAudioProcessingObjectRT)
        *ppv = static_cast<IAudioProcessingObjectRT*>(this);
    else if (iid == IID_IAudioProcessingObjectConfiguration)
        *ppv = static_cast<IAudioProcessingObjectConfiguration*>(this);
    else if (iid == IID_IAudioSystemEffects || iid == IID_IAudioSystemEffects2)
        *ppv = static_cast<IAudioSystemEffects2*>(this);
    else
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}
catch (...)
{
    return CaughtResult();
}

STDMETHODIMP_(ULONG) CBaseAPO::NonDelegatingAddRef()
{
    return static_cast<ULONG>(++m_cRef);
}

STDMETHODIMP_(ULONG) CBaseAPO::NonDelegatingRelease()
{
    const LONG cRef = --m_cRef;
    if (cRef == 0)
        delete this;
    return static_cast<ULONG>(cRef);
}

STDMETHODIMP CBaseAPO::GetLatency(HNSTIME* pTime)
try
{
    if (AUDIO_MISSING(pTime, E_POINTER))
        return E_POINTER;
    *pTime = 0;
    return S_OK;
}
catch (...)
{
    return CaughtResult();
}

STDMETHODIMP CBaseAPO::GetEffectsList(LPGUID* ppEffectsIds, UINT* pcEffects, HANDLE)
{
    if (ppEffectsIds != nullptr)
        *ppEffectsIds = nullptr;
    if (pcEffects != nullptr)
        *pcEffects = 0;
    return S_OK;
}

STDMETHODIMP CBaseAPO::Initialize(UINT32 cbDataSize, BYTE* pbyData)
try
{
    if (AUDIO_FAIL_IF(((pbyData == nullptr) && (cbDataSize) != 0), E_INVALIDARG) ||
        AUDIO_FAIL_IF(((pbyData != nullptr) && (cbDataSize == 0)), E_INVALIDARG))
        return E_INVALIDARG;
    switch (cbDataSize)
    {
    case sizeof(APOInitSystemEffects2):
        if (m_pEngine != nullptr)
            m_pEngine->SetInitData(pbyData);
        std::memcpy(&m_oAudioModeGUID, pbyData + iModeOffset, sizeof(m_oAudioModeGUID));
        break;
    case sizeof(APOInitSystemEffects):
        m_oAudioModeGUID = AUDIO_SIGNALPROCESSINGMODE_DEFAULT;
        break;
    default:
        AUDIOLOG_WARN("Invalid cbDataSize Parameter!");
        return E_INVALIDARG;
    }
    PrintAudioModuleGUID(m_oAudioModeGUID);
    return AUDIO_CHECK(CBaseAudioProcessingObject::Initialize(cbDataSize, pbyData));
}
catch (...)
{
    return CaughtResult();
}

void CBaseAPO::PrintAudioModuleGUID(const GUID& oGuid) const
{
    static const struct
    {
        const GUID& oGuid;
        const char* pText;
    } aModes[] = {
        {AUDIO_SIGNALPROCESSINGMODE_DEFAULT, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_DEFAULT"},
        {AUDIO_SIGNALPROCESSINGMODE_RAW, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_RAW"},
        {AUDIO_SIGNALPROCESSINGMODE_COMMUNICATIONS, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_COMMUNICATIONS"},
        {AUDIO_SIGNALPROCESSINGMODE_SPEECH, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_SPEECH"},
        {AUDIO_SIGNALPROCESSINGMODE_MEDIA, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_MEDIA"},
        {AUDIO_SIGNALPROCESSINGMODE_MOVIE, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_MOVIE"},
        {AUDIO_SIGNALPROCESSINGMODE_NOTIFICATION, "APO Init AudioMode = AUDIO_SIGNALPROCESSINGMODE_NOTIFICATION"},
    };
    for (const auto& oMode : aModes)
    {
        if (oMode.oGuid == oGuid)
        {
            AUDIOLOG_INFO(oMode.pText);
            return;
        }
    }
    AUDIOLOG_INFO("APO Init AudioMode unknow!");
}
