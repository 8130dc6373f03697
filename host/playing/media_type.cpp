// The host's own format object.
#include "host/playing/media_type.h"

namespace
{

bool IsSameFormat(const UNCOMPRESSEDAUDIOFORMAT& oLeft, const UNCOMPRESSEDAUDIOFORMAT& oRight)
{
    return oLeft.dwSamplesPerFrame == oRight.dwSamplesPerFrame &&
           oLeft.dwBytesPerSampleContainer == oRight.dwBytesPerSampleContainer &&
           oLeft.dwValidBitsPerSample == oRight.dwValidBitsPerSample &&
           oLeft.fFramesPerSecond == oRight.fFramesPerSecond && oLeft.dwChannelMask == oRight.dwChannelMask;
}

} // namespace

CHostMediaType::CHostMediaType(int iRate, int iChannels)
{
    const DWORD dwChannels = static_cast<DWORD>(iChannels);
    m_oFormat.guidFormatType = AUDIO_FORMAT_IEEE_FLOAT;
    m_oFormat.dwSamplesPerFrame = dwChannels;
    m_oFormat.dwBytesPerSampleContainer = sizeof(FLOAT32);
    m_oFormat.dwValidBitsPerSample = 8 * sizeof(FLOAT32);
    m_oFormat.fFramesPerSecond = static_cast<FLOAT32>(iRate);
    // Front left, front right and on, in the published order of speakers; none beyond its 18.
    m_oFormat.dwChannelMask = dwChannels <= 18 ? (1u << dwChannels) - 1 : 0;
    m_oWaveFormat.wFormatTag = WAVE_FORMAT_IEEE_FLOAT;
    m_oWaveFormat.nChannels = static_cast<WORD>(iChannels);
    m_oWaveFormat.nSamplesPerSec = static_cast<DWORD>(iRate);
    m_oWaveFormat.nBlockAlign = static_cast<WORD>(dwChannels * sizeof(FLOAT32));
    m_oWaveFormat.nAvgBytesPerSec = m_oWaveFormat.nSamplesPerSec * m_oWaveFormat.nBlockAlign;
    m_oWaveFormat.wBitsPerSample = 8 * sizeof(FLOAT32);
}

STDMETHODIMP CHostMediaType::QueryInterface(REFIID iid, void** ppv)
{
    if (ppv == nullptr)
        return E_POINTER;
    *ppv = nullptr;
    if (iid != IID_IUnknown && iid != IID_IAudioMediaType)
        return E_NOINTERFACE;
    *ppv = static_cast<IAudioMediaType*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) CHostMediaType::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_cRef));
}

STDMETHODIMP_(ULONG) CHostMediaType::Release()
{
    return static_cast<ULONG>(InterlockedDecrement(&m_cRef));
}

STDMETHODIMP CHostMediaType::IsCompressedFormat(BOOL* pfCompressed)
{
    if (pfCompressed == nullptr)
        return E_POINTER;
    *pfCompressed = FALSE;
    return S_OK;
}

STDMETHODIMP CHostMediaType::IsEqual(IAudioMediaType* pIAudioType, DWORD* pdwFlags)
{
    if (pIAudioType == nullptr || pdwFlags == nullptr)
        return E_POINTER;
    UNCOMPRESSEDAUDIOFORMAT oOther{};
    const HRESULT hResult = pIAudioType->GetUncompressedAudioFormat(&oOther);
    if (FAILED(hResult))
        return hResult;
    const bool bTypes = oOther.guidFormatType == m_oFormat.guidFormatType;
    const bool bData = IsSameFormat(oOther, m_oFormat);
    *pdwFlags = (bTypes ? AUDIOMEDIATYPE_EQUAL_FORMAT_TYPES : 0u) | (bData ? AUDIOMEDIATYPE_EQUAL_FORMAT_DATA : 0u);
    return bTypes && bData ? S_OK : S_FALSE;
}

STDMETHODIMP_(const WAVEFORMATEX*) CHostMediaType::GetAudioFormat()
{
    return &m_oWaveFormat;
}

STDMETHODIMP CHostMediaType::GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* pUncompressedAudioFormat)
{
    if (pUncompressedAudioFormat == nullptr)
        return E_POINTER;
    *pUncompressedAudioFormat = m_oFormat;
    return S_OK;
}
