// Both sides of a processing object's calls as the audio engine makes them: formats to lock, buffers of one period.
#pragma once

#include <windows.h>

#include <audioenginebaseapo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

// A float format that lives on the stack and so counts no references.
class CStackMediaType : public IAudioMediaType
{
public:
    CStackMediaType(DWORD dwChannels, FLOAT32 f32Rate, DWORD dwBits)
    {
        const auto wBlockAlign = static_cast<WORD>(dwChannels * dwBits / 8);
        const auto dwRate = static_cast<DWORD>(f32Rate);
        m_oWave = {WAVE_FORMAT_IEEE_FLOAT,
                   static_cast<WORD>(dwChannels),
                   dwRate,
                   dwRate * wBlockAlign,
                   wBlockAlign,
                   static_cast<WORD>(dwBits),
                   0};
        m_oFormat = {AUDIO_FORMAT_IEEE_FLOAT, dwChannels, dwBits / 8, dwBits, f32Rate, 3};
    }
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* pfCompressed) override
    {
        *pfCompressed = FALSE;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE IsEqual(IAudioMediaType*, DWORD*) override { return E_NOTIMPL; }
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override { return &m_oWave; }
    HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* pFormat) override
    {
        *pFormat = m_oFormat;
        return S_OK;
    }

private:
    WAVEFORMATEX m_oWave{};
    UNCOMPRESSEDAUDIOFORMAT m_oFormat{};
};

// The descriptors of one connection each way, of one format.
class CFormatPair
{
public:
    CFormatPair(DWORD dwChannels, FLOAT32 f32Rate, DWORD dwBits = 32) : m_oMediaType(dwChannels, f32Rate, dwBits) {}
    CFormatPair(const CFormatPair&) = delete;
    CFormatPair& operator=(const CFormatPair&) = delete;

    HRESULT Lock(IAudioProcessingObjectConfiguration& oObject)
    {
        return oObject.LockForProcess(1, &m_pInput, 1, &m_pOutput);
    }

private:
    CStackMediaType m_oMediaType;
    APO_CONNECTION_DESCRIPTOR m_oDescriptor = {APO_CONNECTION_BUFFER_TYPE_EXTERNAL, 0, 4800, &m_oMediaType,
                                               APO_CONNECTION_DESCRIPTOR_SIGNATURE};

public:
    APO_CONNECTION_DESCRIPTOR* m_pInput = &m_oDescriptor;
    APO_CONNECTION_DESCRIPTOR* m_pOutput = &m_oDescriptor;
};

// An object of the module's own type, with its own reference.
struct ApoRelease
{
    template <class T> void operator()(T* pObject) const { pObject->NonDelegatingRelease(); }
};
template <class T> using ApoObject = std::unique_ptr<T, ApoRelease>;

// Initialises the object for the default mode and locks it.
template <class T> ApoObject<T> OpenObject(T* pObject, DWORD dwChannels = 2, FLOAT32 f32Rate = 48000)
{
    ApoObject<T> pOpened(pObject);
    BYTE aInit[sizeof(APOInitSystemEffects)] = {};
    EXPECT_EQ(pObject->Initialize(sizeof(aInit), aInit), S_OK);
    EXPECT_EQ(CFormatPair(dwChannels, f32Rate).Lock(*pObject), S_OK);
    return pOpened;
}

// The buffers and records of one period: input of ones, output of minus ones flagged 3, no valid frames.
class CPeriod
{
public:
    CPeriod(int iChannels, UINT32 u32FrameCount, int iFlags = BUFFER_VALID, bool bInPlace = false)
        : m_vecInput(static_cast<UINT32>(iChannels) * u32FrameCount, 1.0F), m_vecOutput(m_vecInput.size(), -1.0F)
    {
        m_oInput.pBuffer = reinterpret_cast<UINT_PTR>(m_vecInput.data());
        m_oInput.u32ValidFrameCount = u32FrameCount;
        m_oInput.u32BufferFlags = static_cast<APO_BUFFER_FLAGS>(iFlags);
        m_oInput.u32Signature = APO_CONNECTION_PROPERTY_SIGNATURE;
        m_oOutput = m_oInput;
        if (!bInPlace)
            m_oOutput.pBuffer = reinterpret_cast<UINT_PTR>(m_vecOutput.data());
        m_oOutput.u32ValidFrameCount = 0;
        m_oOutput.u32BufferFlags = iUntouched;
    }

    void Run(IAudioProcessingObjectRT& oObject) { oObject.APOProcess(1, &m_pInput, 1, &m_pOutput); }

    static bool IsAll(const std::vector<FLOAT32>& vecSamples, FLOAT32 f32Value)
    {
        return std::all_of(vecSamples.begin(), vecSamples.end(), [=](FLOAT32 f32) { return f32 == f32Value; });
    }

    static constexpr APO_BUFFER_FLAGS iUntouched = static_cast<APO_BUFFER_FLAGS>(3);
    std::vector<FLOAT32> m_vecInput;
    std::vector<FLOAT32> m_vecOutput;
    APO_CONNECTION_PROPERTY m_oInput{};
    APO_CONNECTION_PROPERTY m_oOutput{};
    APO_CONNECTION_PROPERTY* m_pInput = &m_oInput;
    APO_CONNECTION_PROPERTY* m_pOutput = &m_oOutput;
};
