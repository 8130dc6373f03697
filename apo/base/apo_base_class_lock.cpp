// The lock of a format: what it asks before, what it takes over from the connections and from the system.
#include "apo/base/apo_base_class.h"

#include "apo/base/apo_base_connections.h"
#include "apo/base/apo_base_module.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <audiomediatype.h>

namespace
{
std::string FormatText(const UNCOMPRESSEDAUDIOFORMAT& oFormat)
{
    return "{" + CAudioSTR::ToString(oFormat.dwSamplesPerFrame) + "," +
           CAudioSTR::ToString(oFormat.dwBytesPerSampleContainer) + "," +
           CAudioSTR::ToString(oFormat.dwValidBitsPerSample) + "," +
           CAudioSTR::FloatToString(oFormat.fFramesPerSecond) + "," + CAudioSTR::ToString(oFormat.dwChannelMask) + "," +
           CAudioSTR::GuidToString(oFormat.guidFormatType) + "}";
}

// Whether an object takes the format as it is.
using FormatQuestion = HRESULT (CBaseAudioProcessingObject::*)(IAudioMediaType*, IAudioMediaType*, IAudioMediaType**);
bool IsTaken(CBaseAudioProcessingObject& oObject, FormatQuestion fnAsk, IAudioMediaType* pOpposite,
             IAudioMediaType* pFormat)
{
    IAudioMediaType* pSupported = nullptr;
    const HRESULT hResult = (oObject.*fnAsk)(pOpposite, pFormat, &pSupported);
    if (pSupported != nullptr)
        pSupported->Release();
    return hResult == S_OK;
}
} // namespace

STDMETHODIMP CBaseAPO::LockForProcess(UINT32 u32NumInputConnections, APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                      UINT32 u32NumOutputConnections, APO_CONNECTION_DESCRIPTOR** ppOutputConnections)
try
{
    const int iMissing = CheckConnections(AUDIO_LOG_SITE, ppInputConnections, ppOutputConnections);
    if (iMissing != 0)
        return iMissing;
    HRESULT hResult = AUDIO_CHECK(CBaseAudioProcessingObject::LockForProcess(
        u32NumInputConnections, ppInputConnections, u32NumOutputConnections, ppOutputConnections));
    if (FAILED(hResult))
        return hResult;
    hResult = TakeStream(ppInputConnections, ppOutputConnections);
    if (hResult != S_OK)
        UnlockForProcess();
    return hResult;
}
catch (...)
{
    return CaughtResult();
}

bool CBaseAPO::IsLockTaken(UINT32 u32NumInputConnections, APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                           UINT32 u32NumOutputConnections, APO_CONNECTION_DESCRIPTOR** ppOutputConnections,
                           UNCOMPRESSEDAUDIOFORMAT& oInFormat)
{
    if (!m_bIsInitialized || m_bIsLocked || u32NumInputConnections != 1 || u32NumOutputConnections != 1 ||
        ppInputConnections == nullptr || *ppInputConnections == nullptr || ppOutputConnections == nullptr ||
        *ppOutputConnections == nullptr)
        return false;
    IAudioMediaType* const pInFormat = ppInputConnections[0]->pFormat;
    return IsTaken(*this, &CBaseAudioProcessingObject::IsInputFormatSupported, nullptr, pInFormat) &&
           IsTaken(*this, &CBaseAudioProcessingObject::IsOutputFormatSupported, pInFormat,
                   ppOutputConnections[0]->pFormat) &&
           SUCCEEDED(pInFormat->GetUncompressedAudioFormat(&oInFormat));
}

// The rest of a lock, behind the base's.
HRESULT CBaseAPO::TakeStream(APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                             APO_CONNECTION_DESCRIPTOR** ppOutputConnections)
try
{
    HRESULT hResult = AUDIO_CHECK(ppInputConnections[0]->pFormat->GetUncompressedAudioFormat(&m_pInFormat));
    if (hResult != S_OK)
        return hResult;
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_LOCK_FORMAT) +
                        "Input format in LockForProcess:" + FormatText(m_pInFormat));
    hResult = AUDIO_CHECK(ppOutputConnections[0]->pFormat->GetUncompressedAudioFormat(&m_pOutFormat));
    if (hResult != S_OK)
        return hResult;
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_LOCK_FORMAT) +
                        "Output format in LockForProcess:" + FormatText(m_pOutFormat));
    if (AUDIO_MISSING(m_pEngine, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    HandFormatToEngine();
    TakeSystemState();
    AUDIOLOG_EVENT_INFO(std::string(AUDIO_EVENT_LOCK_FORMAT) + m_pEngine->GetAPOTypeTag() +
                        "AuidoMode=" + std::to_string(m_pEngine->GetAudioMode()) +
                        ",HeadsetStatus=" + std::to_string(m_pEngine->GetHeadsetStatus(1)));
    return S_OK;
}
catch (...)
{
    return CaughtResult();
}

void CBaseAPO::HandFormatToEngine()
{
    m_pEngine->SetAudioModeGUID(m_oAudioModeGUID);
    m_pEngine->SetSampleRate(static_cast<int>(m_pInFormat.fFramesPerSecond));
    m_pEngine->SetInChannelCount(static_cast<int>(m_pInFormat.dwSamplesPerFrame));
    m_pEngine->SetOutChannelCount(static_cast<int>(m_pOutFormat.dwSamplesPerFrame));
}

// A first look at the system, so that the stream's first period finds nothing changed.
void CBaseAPO::TakeSystemState()
{
    CAudioMonitor* const pMonitor = CAudioMonitor::Instance();
    m_pEngine->SetHeadsetStatus(pMonitor->GetHeadSetStatus());
    m_pEngine->SetSpeakerVolume(pMonitor->GetSpeakerVolume());
    m_pEngine->SetHeadsetType(pMonitor->GetHeadSetType());
    m_pEngine->SetSpeakerMode(pMonitor->GetSpeakerMode());
    m_pEngine->SetHeadphoneMode(pMonitor->GetHeadphoneMode());
    m_pEngine->SetMicrophoneMode(pMonitor->GetMicrophoneMode());
    m_pEngine->SetLyranaMode(pMonitor->GetLyranaMode());
}
