// The base of every processing object: format checks, life states, connection counts.
#include <baseaudioprocessingobject.h>

#include <cstring>

namespace
{
// Holds a critical section for a scope.
class CScopedLock
{
public:
    explicit CScopedLock(CRITICAL_SECTION& csLock) : m_csLock(csLock) { EnterCriticalSection(&m_csLock); }
    CScopedLock(const CScopedLock&) = delete;
    CScopedLock& operator=(const CScopedLock&) = delete;
    ~CScopedLock() { LeaveCriticalSection(&m_csLock); }

private:
    CRITICAL_SECTION& m_csLock;
};
} // namespace

CBaseAudioProcessingObject::CBaseAudioProcessingObject(const APO_REG_PROPERTIES* pRegProperties)
    : m_pRegProperties(pRegProperties)
{
    InitializeCriticalSection(&m_csLock);
}

CBaseAudioProcessingObject::~CBaseAudioProcessingObject()
{
    DeleteCriticalSection(&m_csLock);
}

STDMETHODIMP CBaseAudioProcessingObject::Reset()
{
    return S_OK;
}

STDMETHODIMP CBaseAudioProcessingObject::GetLatency(HNSTIME* pTime)
{
    if (pTime == nullptr)
        return E_POINTER;
    *pTime = 0;
    return S_OK;
}

STDMETHODIMP CBaseAudioProcessingObject::GetRegistrationProperties(APO_REG_PROPERTIES** ppRegProps)
{
    if (ppRegProps == nullptr)
        return E_POINTER;
    const UINT32 u32Interfaces = m_pRegProperties->u32NumAPOInterfaces;
    const size_t iSize = sizeof(APO_REG_PROPERTIES) + (u32Interfaces > 1 ? (u32Interfaces - 1) * sizeof(IID) : 0);
    void* pCopy = CoTaskMemAlloc(iSize);
    *ppRegProps = static_cast<APO_REG_PROPERTIES*>(pCopy);
    if (pCopy == nullptr)
        return E_OUTOFMEMORY;
    memcpy(pCopy, m_pRegProperties, iSize);
    return S_OK;
}

STDMETHODIMP CBaseAudioProcessingObject::Initialize(UINT32 cbDataSize, BYTE* pbyData)
{
    if ((pbyData == nullptr) != (cbDataSize == 0))
        return E_INVALIDARG;
    CScopedLock oLock(m_csLock);
    if (m_bIsInitialized)
        return APOERR_ALREADY_INITIALIZED;
    m_bIsInitialized = true;
    return S_OK;
}

STDMETHODIMP CBaseAudioProcessingObject::IsInputFormatSupported(IAudioMediaType* pOppositeFormat,
                                                                IAudioMediaType* pRequestedInputFormat,
                                                                IAudioMediaType** ppSupportedInputFormat)
{
    return IsFormatSupported(pOppositeFormat, pRequestedInputFormat, ppSupportedInputFormat);
}

STDMETHODIMP CBaseAudioProcessingObject::IsOutputFormatSupported(IAudioMediaType* pOppositeFormat,
                                                                 IAudioMediaType* pRequestedOutputFormat,
                                                                 IAudioMediaType** ppSupportedOutputFormat)
{
    return IsFormatSupported(pOppositeFormat, pRequestedOutputFormat, ppSupportedOutputFormat);
}

// Input and output are asked the same way: an object is one to one but for what its flags leave free.
HRESULT CBaseAudioProcessingObject::IsFormatSupported(IAudioMediaType* pOppositeFormat,
                                                      IAudioMediaType* pRequestedFormat,
                                                      IAudioMediaType** ppSupportedFormat)
{
    if (pRequestedFormat == nullptr || ppSupportedFormat == nullptr)
        return E_POINTER;
    *ppSupportedFormat = nullptr;

    UNCOMPRESSEDAUDIOFORMAT oFormat{};
    if (FAILED(pRequestedFormat->GetUncompressedAudioFormat(&oFormat)))
        return APOERR_FORMAT_NOT_SUPPORTED;
    bool bAsRequested = true;
    if (FAILED(ValidateDefaultFormat(&oFormat)))
    {
        oFormat.guidFormatType = AUDIO_FORMAT_IEEE_FLOAT;
        oFormat.dwBytesPerSampleContainer = sizeof(FLOAT32);
        oFormat.dwValidBitsPerSample = 32;
        bAsRequested = false;
    }
    if (pOppositeFormat != nullptr)
    {
        UNCOMPRESSEDAUDIOFORMAT oOpposite{};
        if (FAILED(pOppositeFormat->GetUncompressedAudioFormat(&oOpposite)))
            return APOERR_FORMAT_NOT_SUPPORTED;
        bAsRequested = MatchByFlags(oOpposite, &oFormat) && bAsRequested;
    }
    if (FAILED(ValidateDefaultFormat(&oFormat)))
        return APOERR_FORMAT_NOT_SUPPORTED;
    if (!bAsRequested)
    {
        const HRESULT hResult = CreateAudioMediaTypeFromUncompressedAudioFormat(&oFormat, ppSupportedFormat);
        return FAILED(hResult) ? hResult : S_FALSE;
    }
    *ppSupportedFormat = pRequestedFormat;
    pRequestedFormat->AddRef();
    return S_OK;
}

bool CBaseAudioProcessingObject::MatchByFlags(const UNCOMPRESSEDAUDIOFORMAT& oModel,
                                              UNCOMPRESSEDAUDIOFORMAT* pFormat) const
{
    bool bMatched = true;
    if (HasFlag(APO_FLAG_SAMPLESPERFRAME_MUST_MATCH) && pFormat->dwSamplesPerFrame != oModel.dwSamplesPerFrame)
    {
        pFormat->dwSamplesPerFrame = oModel.dwSamplesPerFrame;
        pFormat->dwChannelMask = oModel.dwChannelMask;
        bMatched = false;
    }
    if (HasFlag(APO_FLAG_FRAMESPERSECOND_MUST_MATCH) && pFormat->fFramesPerSecond != oModel.fFramesPerSecond)
    {
        pFormat->fFramesPerSecond = oModel.fFramesPerSecond;
        bMatched = false;
    }
    if (HasFlag(APO_FLAG_BITSPERSAMPLE_MUST_MATCH) &&
        (pFormat->dwBytesPerSampleContainer != oModel.dwBytesPerSampleContainer ||
         pFormat->dwValidBitsPerSample != oModel.dwValidBitsPerSample))
    {
        pFormat->dwBytesPerSampleContainer = oModel.dwBytesPerSampleContainer;
        pFormat->dwValidBitsPerSample = oModel.dwValidBitsPerSample;
        bMatched = false;
    }
    return bMatched;
}

STDMETHODIMP CBaseAudioProcessingObject::GetInputChannelCount(UINT32* pu32ChannelCount)
{
    if (pu32ChannelCount == nullptr)
        return E_POINTER;
    CScopedLock oLock(m_csLock);
    if (!m_bIsLocked)
        return APOERR_ALREADY_UNLOCKED;
    *pu32ChannelCount = m_u32SamplesPerFrame;
    return S_OK;
}

STDMETHODIMP_(UINT32) CBaseAudioProcessingObject::CalcInputFrames(UINT32 u32OutputFrameCount)
{
    return u32OutputFrameCount;
}

STDMETHODIMP_(UINT32) CBaseAudioProcessingObject::CalcOutputFrames(UINT32 u32InputFrameCount)
{
    return u32InputFrameCount;
}

STDMETHODIMP CBaseAudioProcessingObject::LockForProcess(UINT32 u32NumInputConnections,
                                                        APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                                        UINT32 u32NumOutputConnections,
                                                        APO_CONNECTION_DESCRIPTOR** ppOutputConnections)
{
    CScopedLock oLock(m_csLock);
    if (!m_bIsInitialized)
        return APOERR_NOT_INITIALIZED;
    if (m_bIsLocked)
        return APOERR_APO_LOCKED;
    const HRESULT hResult = ValidateAndCacheConnectionInfo(u32NumInputConnections, ppInputConnections,
                                                           u32NumOutputConnections, ppOutputConnections);
    m_bIsLocked = SUCCEEDED(hResult);
    return hResult;
}

STDMETHODIMP CBaseAudioProcessingObject::UnlockForProcess()
{
    CScopedLock oLock(m_csLock);
    if (!m_bIsLocked)
        return APOERR_ALREADY_UNLOCKED;
    m_bIsLocked = false;
    return S_OK;
}

HRESULT CBaseAudioProcessingObject::ValidateAndCacheConnectionInfo(UINT32 u32NumInputConnections,
                                                                   APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                                                   UINT32 u32NumOutputConnections,
                                                                   APO_CONNECTION_DESCRIPTOR** ppOutputConnections)
{
    const APO_REG_PROPERTIES& oReg = *m_pRegProperties;
    if (u32NumInputConnections < oReg.u32MinInputConnections || u32NumInputConnections > oReg.u32MaxInputConnections ||
        u32NumOutputConnections < oReg.u32MinOutputConnections ||
        u32NumOutputConnections > oReg.u32MaxOutputConnections)
        return APOERR_NUM_CONNECTIONS_INVALID;

    UNCOMPRESSEDAUDIOFORMAT oFirst{};
    for (UINT32 i = 0; i < u32NumInputConnections + u32NumOutputConnections; i++)
    {
        const bool bInput = i < u32NumInputConnections;
        APO_CONNECTION_DESCRIPTOR** ppConnections = bInput ? ppInputConnections : ppOutputConnections;
        const UINT32 u32Index = bInput ? i : i - u32NumInputConnections;
        if (ppConnections == nullptr || ppConnections[u32Index] == nullptr)
            return E_POINTER;
        UNCOMPRESSEDAUDIOFORMAT oFormat{};
        IAudioMediaType* pFormat = ppConnections[u32Index]->pFormat;
        if (pFormat == nullptr || FAILED(pFormat->GetUncompressedAudioFormat(&oFormat)))
            return APOERR_INVALID_CONNECTION_FORMAT;
        const HRESULT hResult = ValidateDefaultFormat(&oFormat);
        if (FAILED(hResult))
            return hResult;
        if (i == 0)
            oFirst = oFormat;
        else if (!MatchByFlags(oFirst, &oFormat))
            return APOERR_INVALID_CONNECTION_FORMAT;
    }
    m_u32SamplesPerFrame = oFirst.dwSamplesPerFrame;
    return S_OK;
}

HRESULT CBaseAudioProcessingObject::ValidateDefaultFormat(const UNCOMPRESSEDAUDIOFORMAT* pFormat)
{
    if (pFormat == nullptr)
        return E_POINTER;
    const bool bValid =
        IsEqualGUID(pFormat->guidFormatType, AUDIO_FORMAT_IEEE_FLOAT) &&
        pFormat->dwBytesPerSampleContainer == sizeof(FLOAT32) && pFormat->dwValidBitsPerSample == 32 &&
        pFormat->dwSamplesPerFrame >= AUDIO_MIN_CHANNELS && pFormat->dwSamplesPerFrame <= AUDIO_MAX_CHANNELS &&
        pFormat->fFramesPerSecond >= AUDIO_MIN_FRAMERATE && pFormat->fFramesPerSecond <= AUDIO_MAX_FRAMERATE;
    return bValid ? S_OK : APOERR_FORMAT_NOT_SUPPORTED;
}
