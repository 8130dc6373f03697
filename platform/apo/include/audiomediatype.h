// The audio media type: a format that two sides of a connection negotiate.
#pragma once

#include <windows.h>

#include <mmreg.h>
#include <objbase.h>

// Flags that IAudioMediaType::IsEqual gives.
#define AUDIOMEDIATYPE_EQUAL_FORMAT_TYPES 0x00000002
#define AUDIOMEDIATYPE_EQUAL_FORMAT_DATA 0x00000004
#define AUDIOMEDIATYPE_EQUAL_FORMAT_USER_DATA 0x00000008

// Format type of samples in 32-bit float.
inline constexpr GUID AUDIO_FORMAT_IEEE_FLOAT = {
    0x00000003, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

typedef struct UNCOMPRESSEDAUDIOFORMAT
{
    GUID guidFormatType;
    DWORD dwSamplesPerFrame; // channels
    DWORD dwBytesPerSampleContainer;
    DWORD dwValidBitsPerSample;
    FLOAT fFramesPerSecond; // Hz
    DWORD dwChannelMask;
} UNCOMPRESSEDAUDIOFORMAT;

inline constexpr IID IID_IAudioMediaType = {
    0x4E997F73, 0xB71F, 0x4798, {0x87, 0x3B, 0xED, 0x7D, 0xFC, 0xF1, 0x5B, 0x4D}};

struct IAudioMediaType : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* pfCompressed) = 0;
    // S_OK if all is equal, S_FALSE with the flags of what is.
    virtual HRESULT STDMETHODCALLTYPE IsEqual(IAudioMediaType* pIAudioType, DWORD* pdwFlags) = 0;
    // Lives as long as the media type.
    virtual const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* pUncompressedAudioFormat) = 0;
};

// Build a media type with one reference, the caller's. Any thread.
// 0x80004003 for a null pointer, 0x80070057 for a record that doesn't fit its size, 0x8007000E without memory.
STDAPI CreateAudioMediaType(const WAVEFORMATEX* pAudioFormat, UINT32 cbAudioFormatSize,
                            IAudioMediaType** ppIAudioMediaType);
STDAPI CreateAudioMediaTypeFromUncompressedAudioFormat(const UNCOMPRESSEDAUDIOFORMAT* pUncompressedAudioFormat,
                                                       IAudioMediaType** ppIAudioMediaType);
