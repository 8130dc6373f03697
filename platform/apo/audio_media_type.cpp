// The audio media type over a wave format, as the platform's own library offers it.
#include <audiomediatype.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

namespace
{
// Format type whose first field is the wave format's tag.
constexpr GUID WaveFormatGUID(WORD wFormatTag)
{
    GUID oGuid = AUDIO_FORMAT_IEEE_FLOAT;
    oGuid.Data1 = wFormatTag;
    return oGuid;
}

class CAudioMediaType : public IAudioMediaType
{
public:
    CAudioMediaType(std::vector<BYTE> vecWaveFormat, const UNCOMPRESSEDAUDIOFORMAT& oFormat, bool bCompressed)
        : m_vecWaveFormat(std::move(vecWaveFormat)), m_oFormat(oFormat), m_bCompressed(bCompressed)
    {
    }
    virtual ~CAudioMediaType() = default;

    STDMETHOD(QueryInterface)(REFIID riid, void** ppvObject) override;
    STDMETHOD_(ULONG, AddRef)() override { return static_cast<ULONG>(InterlockedIncrement(&m_cRef)); }
    STDMETHOD_(ULONG, Release)() override;
    STDMETHOD(IsCompressedFormat)(BOOL* pfCompressed) override;
    STDMETHOD(IsEqual)(IAudioMediaType* pIAudioType, DWORD* pdwFlags) override;
    STDMETHOD_(const WAVEFORMATEX*, GetAudioFormat)() override
    {
        return reinterpret_cast<const WAVEFORMATEX*>(m_vecWaveFormat.data());
    }
    STDMETHOD(GetUncompressedAudioFormat)(UNCOMPRESSEDAUDIOFORMAT* pUncompressedAudioFormat) override;

private:
    LONG m_cRef = 1;
    std::vector<BYTE> m_vecWaveFormat; // a WAVEFORMATEX and the cbSize bytes behind it
    UNCOMPRESSEDAUDIOFORMAT m_oFormat;
    bool m_bCompressed;
};

STDMETHODIMP CAudioMediaType::QueryInterface(REFIID riid, void** ppvObject)
{
    if (ppvObject == nullptr)
        return E_POINTER;
    *ppvObject = nullptr;
    if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IAudioMediaType))
        return E_NOINTERFACE;
    *ppvObject = static_cast<IAudioMediaType*>(this);
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) CAudioMediaType::Release()
{
    const LONG cRef = InterlockedDecrement(&m_cRef);
    if (cRef == 0)
        delete this;
    return static_cast<ULONG>(cRef);
}

STDMETHODIMP CAudioMediaType::IsCompressedFormat(BOOL* pfCompressed)
{
    if (pfCompressed == nullptr)
        return E_POINTER;
    *pfCompressed = m_bCompressed ? TRUE : FALSE;
    return S_OK;
}

STDMETHODIMP CAudioMediaType::IsEqual(IAudioMediaType* pIAudioType, DWORD* pdwFlags)
{
    if (pIAudioType == nullptr || pdwFlags == nullptr)
        return E_POINTER;
    *pdwFlags = 0;
    const WAVEFORMATEX* pOther = pIAudioType->GetAudioFormat();
    if (pOther == nullptr)
        return E_INVALIDARG;
    const WAVEFORMATEX* pOwn = GetAudioFormat();
    UNCOMPRESSEDAUDIOFORMAT oOther{};
    const bool bOtherUncompressed = SUCCEEDED(pIAudioType->GetUncompressedAudioFormat(&oOther));
    const bool bSameType = m_bCompressed
                               ? !bOtherUncompressed && pOwn->wFormatTag == pOther->wFormatTag
                               : bOtherUncompressed && IsEqualGUID(m_oFormat.guidFormatType, oOther.guidFormatType);
    const size_t iDataLen = offsetof(WAVEFORMATEX, cbSize) - offsetof(WAVEFORMATEX, nChannels);
    if (bSameType)
        *pdwFlags |= AUDIOMEDIATYPE_EQUAL_FORMAT_TYPES;
    if (memcmp(&pOwn->nChannels, &pOther->nChannels, iDataLen) == 0)
        *pdwFlags |= AUDIOMEDIATYPE_EQUAL_FORMAT_DATA;
    if (pOwn->cbSize == pOther->cbSize && memcmp(pOwn + 1, pOther + 1, pOwn->cbSize) == 0)
        *pdwFlags |= AUDIOMEDIATYPE_EQUAL_FORMAT_USER_DATA;
    const DWORD dwAll =
        AUDIOMEDIATYPE_EQUAL_FORMAT_TYPES | AUDIOMEDIATYPE_EQUAL_FORMAT_DATA | AUDIOMEDIATYPE_EQUAL_FORMAT_USER_DATA;
    return *pdwFlags == dwAll ? S_OK : S_FALSE;
}

STDMETHODIMP CAudioMediaType::GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* pUncompressedAudioFormat)
{
    if (pUncompressedAudioFormat == nullptr)
        return E_POINTER;
    if (m_bCompressed)
        return E_INVALIDARG;
    *pUncompressedAudioFormat = m_oFormat;
    return S_OK;
}

HRESULT CreateMediaType(std::vector<BYTE> vecWaveFormat, const UNCOMPRESSEDAUDIOFORMAT& oFormat, bool bCompressed,
                        IAudioMediaType** ppIAudioMediaType)
{
    *ppIAudioMediaType = new (std::nothrow) CAudioMediaType(std::move(vecWaveFormat), oFormat, bCompressed);
    return *ppIAudioMediaType != nullptr ? S_OK : E_OUTOFMEMORY;
}
} // namespace

STDAPI CreateAudioMediaType(const WAVEFORMATEX* pAudioFormat, UINT32 cbAudioFormatSize,
                            IAudioMediaType** ppIAudioMediaType)
try
{
    if (pAudioFormat == nullptr || ppIAudioMediaType == nullptr)
        return E_POINTER;
    *ppIAudioMediaType = nullptr;
    if (cbAudioFormatSize < sizeof(WAVEFORMATEX) || cbAudioFormatSize - sizeof(WAVEFORMATEX) < pAudioFormat->cbSize)
        return E_INVALIDARG;
    UNCOMPRESSEDAUDIOFORMAT oFormat{};
    oFormat.guidFormatType = WaveFormatGUID(pAudioFormat->wFormatTag);
    oFormat.dwSamplesPerFrame = pAudioFormat->nChannels;
    oFormat.dwBytesPerSampleContainer = pAudioFormat->wBitsPerSample / 8U;
    oFormat.dwValidBitsPerSample = pAudioFormat->wBitsPerSample;
    oFormat.fFramesPerSecond = static_cast<FLOAT>(pAudioFormat->nSamplesPerSec);
    if (pAudioFormat->wFormatTag == WAVE_FORMAT_EXTENSIBLE)
    {
        if (pAudioFormat->cbSize < sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX))
            return E_INVALIDARG;
        WAVEFORMATEXTENSIBLE oExtensible;
        memcpy(&oExtensible, pAudioFormat, sizeof(oExtensible));
        oFormat.guidFormatType = oExtensible.SubFormat;
        oFormat.dwValidBitsPerSample = oExtensible.Samples.wValidBitsPerSample;
        oFormat.dwChannelMask = oExtensible.dwChannelMask;
    }
    const bool bCompressed = !IsEqualGUID(oFormat.guidFormatType, WaveFormatGUID(WAVE_FORMAT_PCM)) &&
                             !IsEqualGUID(oFormat.guidFormatType, AUDIO_FORMAT_IEEE_FLOAT);
    const BYTE* pBytes = reinterpret_cast<const BYTE*>(pAudioFormat);
    return CreateMediaType({pBytes, pBytes + sizeof(WAVEFORMATEX) + pAudioFormat->cbSize}, oFormat, bCompressed,
                           ppIAudioMediaType);
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}

STDAPI CreateAudioMediaTypeFromUncompressedAudioFormat(const UNCOMPRESSEDAUDIOFORMAT* pUncompressedAudioFormat,
                                                       IAudioMediaType** ppIAudioMediaType)
try
{
    if (pUncompressedAudioFormat == nullptr || ppIAudioMediaType == nullptr)
        return E_POINTER;
    *ppIAudioMediaType = nullptr;
    const UNCOMPRESSEDAUDIOFORMAT& oFormat = *pUncompressedAudioFormat;
    const DWORD dwContainer = oFormat.dwBytesPerSampleContainer;
    const bool bRate = oFormat.fFramesPerSecond >= 1 && oFormat.fFramesPerSecond <= 16777216;
    if (oFormat.dwSamplesPerFrame > 0xFFFF || dwContainer > 8 || oFormat.dwSamplesPerFrame * dwContainer > 0xFFFF ||
        oFormat.dwValidBitsPerSample > dwContainer * 8 || !bRate)
        return E_INVALIDARG;

    WAVEFORMATEXTENSIBLE oExtensible{};
    WAVEFORMATEX& oWave = oExtensible.Format;
    oWave.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    oWave.nChannels = static_cast<WORD>(oFormat.dwSamplesPerFrame);
    oWave.nSamplesPerSec = static_cast<DWORD>(oFormat.fFramesPerSecond);
    oWave.nBlockAlign = static_cast<WORD>(oFormat.dwSamplesPerFrame * dwContainer);
    oWave.nAvgBytesPerSec = oWave.nSamplesPerSec * oWave.nBlockAlign;
    oWave.wBitsPerSample = static_cast<WORD>(dwContainer * 8);
    oWave.cbSize = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);
    oExtensible.Samples.wValidBitsPerSample = static_cast<WORD>(oFormat.dwValidBitsPerSample);
    oExtensible.dwChannelMask = oFormat.dwChannelMask;
    oExtensible.SubFormat = oFormat.guidFormatType;
    const BYTE* pBytes = reinterpret_cast<const BYTE*>(&oExtensible);
    return CreateMediaType({pBytes, pBytes + sizeof(oExtensible)}, oFormat, false, ppIAudioMediaType);
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
