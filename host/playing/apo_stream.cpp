// One stream through the module.
#include "host/playing/apo_stream.h"

#include "host/host_error.h"
#include "host/machine/rest.h"

#include <algorithm>
#include <cstdio>

namespace
{

// No module writes this count: tells whether the output record was written.
constexpr UINT32 UNWRITTEN_FRAME_COUNT = 0xFFFFFFFF;
constexpr APO_BUFFER_FLAGS UNWRITTEN_FLAGS = BUFFER_INVALID;

void Check(HRESULT hResult, const char* pStep)
{
    if (hResult == S_OK)
        return;
    char strCode[16];
    std::snprintf(strCode, sizeof(strCode), "0x%08X", static_cast<unsigned>(hResult));
    if (hResult == REGDB_E_CLASSNOTREG)
        throw CHostError("the module is not registered on this machine; run: apohost register");
    throw CHostError(std::string(pStep) + " failed with " + strCode);
}

template <class T> ComPtr<T> Query(IUnknown* pUnknown, REFIID iid, const char* pStep)
{
    void* pInterface = nullptr;
    Check(pUnknown->QueryInterface(iid, &pInterface), pStep);
    return ComPtr<T>(static_cast<T*>(pInterface));
}

} // namespace

CComApartment::CComApartment()
{
    const HRESULT hResult = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(hResult))
        Check(hResult, "CoInitializeEx");
}

CComApartment::~CComApartment()
{
    CoFreeUnusedLibraries();
    CoUninitialize();
}

CApoStream::CApoStream(const StreamSetup& oSetup)
    : m_oSetup(oSetup),
      m_oMediaType(oSetup.iRate, oSetup.iChannels),
      m_vecInput(static_cast<size_t>(oSetup.iPeriodFrames) * static_cast<size_t>(oSetup.iChannels))
{
    if (!m_oSetup.bInPlace)
        m_vecOutput.resize(m_vecInput.size());
    m_pOutput = m_oSetup.bInPlace ? m_vecInput.data() : m_vecOutput.data();
    Activate();
    Initialize();
    Negotiate();
    Lock();
}

CApoStream::~CApoStream()
{
    if (m_bLocked)
        m_pConfiguration->UnlockForProcess();
}

void CApoStream::Activate()
{
    void* pObject = nullptr;
    Check(CoCreateInstance(m_oSetup.bInlineVariant ? APO_RENDER_OMFX : APO_RENDER_EFX, nullptr, CLSCTX_INPROC_SERVER,
                           IID_IAudioProcessingObject, &pObject),
          "CoCreateInstance");
    m_pObject.reset(static_cast<IAudioProcessingObject*>(pObject));
    // The watchers have read the registry before the stream reads their record, so that every run begins alike.
    m_bRested = WaitForRest(m_oSetup.iRestLimitS);
    m_pRealtime = Query<IAudioProcessingObjectRT>(m_pObject.get(), IID_IAudioProcessingObjectRT, "QueryInterface (RT)");
    m_pConfiguration = Query<IAudioProcessingObjectConfiguration>(
        m_pObject.get(), IID_IAudioProcessingObjectConfiguration, "QueryInterface (Configuration)");
}

void CApoStream::Initialize()
{
    APOInitSystemEffects2 oInit{};
    oInit.APOInit.cbSize = sizeof(oInit);
    oInit.APOInit.clsid = m_oSetup.bInlineVariant ? APO_RENDER_OMFX : APO_RENDER_EFX;
    oInit.AudioProcessingMode = AUDIO_SIGNALPROCESSINGMODE_DEFAULT;
    Check(m_pObject->Initialize(sizeof(oInit), reinterpret_cast<BYTE*>(&oInit)), "Initialize");
}

void CApoStream::Negotiate()
{
    IAudioMediaType* pSupported = nullptr;
    const HRESULT hResult = m_pObject->IsInputFormatSupported(&m_oMediaType, &m_oMediaType, &pSupported);
    const ComPtr<IAudioMediaType> pOwned(pSupported);
    if (hResult != S_OK)
        throw CHostError("the module refuses " + std::to_string(m_oSetup.iChannels) + " channel(s) at " +
                         std::to_string(m_oSetup.iRate) + " Hz");
}

void CApoStream::Lock()
{
    APO_CONNECTION_DESCRIPTOR oInput{};
    oInput.Type = APO_CONNECTION_BUFFER_TYPE_EXTERNAL;
    oInput.pBuffer = reinterpret_cast<UINT_PTR>(m_vecInput.data());
    oInput.u32MaxFrameCount = static_cast<UINT32>(m_oSetup.iPeriodFrames);
    oInput.pFormat = &m_oMediaType;
    oInput.u32Signature = APO_CONNECTION_DESCRIPTOR_SIGNATURE;
    APO_CONNECTION_DESCRIPTOR oOutput = oInput;
    oOutput.pBuffer = reinterpret_cast<UINT_PTR>(m_pOutput);
    APO_CONNECTION_DESCRIPTOR* pInput = &oInput;
    APO_CONNECTION_DESCRIPTOR* pOutput = &oOutput;
    Check(m_pConfiguration->LockForProcess(1, &pInput, 1, &pOutput), "LockForProcess");
    m_bLocked = true;
}

void CApoStream::PrepareCall(APO_BUFFER_FLAGS eFlags)
{
    m_oInput.pBuffer = reinterpret_cast<UINT_PTR>(m_vecInput.data());
    m_oInput.u32ValidFrameCount = static_cast<UINT32>(m_oSetup.iPeriodFrames);
    m_oInput.u32BufferFlags = eFlags;
    m_oInput.u32Signature = APO_CONNECTION_PROPERTY_SIGNATURE;
    m_oOutput = m_oInput;
    m_oOutput.pBuffer = reinterpret_cast<UINT_PTR>(m_pOutput);
    m_oOutput.u32ValidFrameCount = UNWRITTEN_FRAME_COUNT;
    m_oOutput.u32BufferFlags = UNWRITTEN_FLAGS;
    FillSentinel(m_vecOutput.data(), m_vecOutput.size());
}

void CApoStream::Fill(const float* pf32Source)
{
    std::copy_n(pf32Source, m_vecInput.size(), m_vecInput.data());
    PrepareCall(BUFFER_VALID);
}

void CApoStream::Process()
{
    APO_CONNECTION_PROPERTY* pInput = &m_oInput;
    APO_CONNECTION_PROPERTY* pOutput = &m_oOutput;
    m_pRealtime->APOProcess(1, &pInput, 1, &pOutput);
}

PeriodPath CApoStream::Judge(const float* pf32Source) const
{
    return JudgePeriod({pf32Source, m_vecInput.data(), m_pOutput, m_vecInput.size(),
                        m_oOutput.u32ValidFrameCount != UNWRITTEN_FRAME_COUNT});
}

bool CApoStream::ProbeBypass()
{
    // Without a bypass a silent buffer is zeroed and its answer flagged valid, or the output stays unwritten. A bypass
    // alone hands flags and samples through, and so the mark.
    const float f32Mark = -1e-30f;
    std::fill(m_vecInput.begin(), m_vecInput.end(), 0.0f);
    m_vecInput[0] = f32Mark;
    PrepareCall(BUFFER_SILENT);
    Process();
    return m_oOutput.u32BufferFlags == BUFFER_SILENT && m_pOutput[0] == f32Mark;
}
