// The published interfaces and records of audio processing objects, written down once more: what a program that was
// built without any of the module's headers calls by.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <cstddef>

namespace published
{
inline constexpr CLSID RENDER_EFX = {0xD3BDE93A, 0x50C2, 0x439A, {0xB2, 0x38, 0x44, 0xF1, 0xCB, 0x50, 0x55, 0xB0}};
inline constexpr CLSID RENDER_OMFX = {0x6CB3EF4C, 0xBC00, 0x4A60, {0xBC, 0x34, 0x73, 0x4F, 0x01, 0x48, 0xF8, 0x56}};
inline constexpr const CLSID* CLASSES[] = {&RENDER_EFX, &RENDER_OMFX}; // alike in all that isn't their own

inline constexpr IID UNKNOWN = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID CLASS_FACTORY = {0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID OBJECT = {0xFD7F2B29, 0x24D0, 0x4B5C, {0xB1, 0x77, 0x59, 0x2C, 0x39, 0xF9, 0xCA, 0x10}};
inline constexpr IID REALTIME = {0x9E1D6A6D, 0xDDBC, 0x4E95, {0xA4, 0xC7, 0xAD, 0x64, 0xBA, 0x37, 0x84, 0x6C}};
inline constexpr IID CONFIGURATION = {0x0E5ED805, 0xABA6, 0x49C3, {0x8F, 0x9A, 0x2B, 0x8C, 0x88, 0x9C, 0x4F, 0xA8}};
inline constexpr IID EFFECTS = {0x5FA00F27, 0xADD6, 0x499A, {0x8A, 0x9D, 0x6B, 0x98, 0x52, 0x1F, 0xA7, 0x5B}};
inline constexpr IID EFFECTS_2 = {0xBAFE99D2, 0x7436, 0x44CE, {0x9E, 0x0E, 0x4D, 0x89, 0xAF, 0xBF, 0xFF, 0x56}};

inline constexpr GUID FLOAT_SAMPLES = {0x00000003, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID MODE_MOVIE = {0xB26FEB0D, 0xEC94, 0x477C, {0x94, 0x94, 0xD1, 0xAB, 0x8E, 0x75, 0x3F, 0x6E}};

// Result codes, as numbers.
enum : HRESULT
{
    OK = 0,
    NOT_AS_ASKED = 1,
    MISSING = 13,
    NO_INTERFACE = static_cast<HRESULT>(0x80004002),
    NULL_POINTER = static_cast<HRESULT>(0x80004003),
    BAD_ARGUMENT = static_cast<HRESULT>(0x80070057),
    ALREADY_INITIALIZED = static_cast<HRESULT>(0x887D0001),
    NOT_INITIALIZED = static_cast<HRESULT>(0x887D0002),
    FORMAT_NOT_SUPPORTED = static_cast<HRESULT>(0x887D0003),
    ALREADY_UNLOCKED = static_cast<HRESULT>(0x887D0006),
    BAD_CONNECTION_COUNT = static_cast<HRESULT>(0x887D0007),
    BAD_CONNECTION_FORMAT = static_cast<HRESULT>(0x887D0009),
    LOCKED = static_cast<HRESULT>(0x887D000A),
};

struct Format
{
    GUID oType;
    DWORD dwChannels;
    DWORD dwContainerBytes;
    DWORD dwValidBits;
    FLOAT f32Rate;
    DWORD dwChannelMask;
};

struct IMediaType : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* pbCompressed) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsEqual(IMediaType* pOther, DWORD* pdwFlags) = 0;
    virtual const void* STDMETHODCALLTYPE GetAudioFormat() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(Format* pFormat) = 0;
};

struct Descriptor
{
    INT32 iType;
    UINT_PTR uBuffer;
    UINT32 u32MaxFrameCount;
    IMediaType* pFormat;
    UINT32 u32Signature; // "ACDS"
};

struct Property
{
    UINT_PTR uBuffer;
    UINT32 u32ValidFrameCount;
    INT32 iFlags;        // 0 invalid, 1 valid, 2 silent
    UINT32 u32Signature; // "ACPS"
};

struct Registration
{
    CLSID oClassID;
    INT32 iFlags;
    WCHAR aFriendlyName[256];
    WCHAR aCopyright[256];
    UINT32 u32MajorVersion, u32MinorVersion;
    UINT32 u32MinInputs, u32MaxInputs, u32MinOutputs, u32MaxOutputs;
    UINT32 u32MaxInstances;
    UINT32 u32Interfaces;
    IID aInterfaces[1];
};

// What Initialize is given: one record or the other, told apart by size.
struct InitRecord
{
    UINT32 u32Size;
    CLSID oClassID;
    void *pEndpointProperties, *pEffectProperties, *pReserved, *pDevices;
};
struct InitRecord2
{
    InitRecord oFirst;
    UINT uDevice, uConnector;
    GUID oMode;
    BOOL bDiscoveryOnly;
};
static_assert(sizeof(InitRecord) == 56 && sizeof(InitRecord2) == 88 && offsetof(InitRecord2, oMode) == 64);
static_assert(sizeof(Format) == 36 && sizeof(Descriptor) == 40 && sizeof(Property) == 24);
// Two bytes a character there, four here.
static_assert(sizeof(Registration) == 68 + 512 * sizeof(WCHAR) && sizeof(Registration::aInterfaces) == 16);

// The slots behind those of IUnknown, in their order.
struct IObject : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLatency(INT64* pTime) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRegistrationProperties(Registration** ppRegistration) = 0;
    virtual HRESULT STDMETHODCALLTYPE Initialize(UINT32 u32Size, BYTE* pData) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsInputFormatSupported(IMediaType* pOpposite, IMediaType* pRequested,
                                                             IMediaType** ppSupported) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsOutputFormatSupported(IMediaType* pOpposite, IMediaType* pRequested,
                                                              IMediaType** ppSupported) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputChannelCount(UINT32* pu32Channels) = 0;
};
struct IRealtime : IUnknown
{
    virtual void STDMETHODCALLTYPE Process(UINT32 u32Inputs, Property** ppInputs, UINT32 u32Outputs,
                                           Property** ppOutputs) = 0;
    virtual UINT32 STDMETHODCALLTYPE CalcInputFrames(UINT32 u32Frames) = 0;
    virtual UINT32 STDMETHODCALLTYPE CalcOutputFrames(UINT32 u32Frames) = 0;
};
struct IConfiguration : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Lock(UINT32 u32Inputs, Descriptor** ppInputs, UINT32 u32Outputs,
                                           Descriptor** ppOutputs) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unlock() = 0;
};
struct IEffects2 : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE GetEffectsList(GUID** ppEffects, UINT* puEffects, HANDLE hEvent) = 0;
};
} // namespace published
