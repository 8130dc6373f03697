// The host's own format object: one 32-bit float format, offered to the module at negotiation and lock.
#pragma once

#include <windows.h>

#include <audioenginebaseapo.h>

// Lives on its owner's stack or as a member; the count only says who still looks at it. Any thread.
class CHostMediaType : public IAudioMediaType
{
public:
    // Rate in Hz, interleaved channels.
    CHostMediaType(int iRate, int iChannels);

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP IsCompressedFormat(BOOL* pfCompressed) override;
    STDMETHODIMP IsEqual(IAudioMediaType* pIAudioType, DWORD* pdwFlags) override;
    STDMETHODIMP_(const WAVEFORMATEX*) GetAudioFormat() override;
    STDMETHODIMP GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* pUncompressedAudioFormat) override;

private:
    UNCOMPRESSEDAUDIOFORMAT m_oFormat{};
    WAVEFORMATEX m_oWaveFormat{};
    LONG m_cRef = 1;
};
