// The interfaces and records by which the audio engine meets an audio processing object.
#pragma once

#include <windows.h>

#include <audioapotypes.h>
#include <audiomediatype.h>

struct IMMDeviceCollection;
struct IPropertyStore;

#define APOERR_ALREADY_INITIALIZED ((HRESULT)0x887D0001)
#define APOERR_NOT_INITIALIZED ((HRESULT)0x887D0002)
#define APOERR_FORMAT_NOT_SUPPORTED ((HRESULT)0x887D0003)
#define APOERR_INVALID_APO_CLSID ((HRESULT)0x887D0004)
#define APOERR_BUFFERS_OVERLAP ((HRESULT)0x887D0005)
#define APOERR_ALREADY_UNLOCKED ((HRESULT)0x887D0006)
#define APOERR_NUM_CONNECTIONS_INVALID ((HRESULT)0x887D0007)
#define APOERR_INVALID_OUTPUT_MAXFRAMECOUNT ((HRESULT)0x887D0008)
#define APOERR_INVALID_CONNECTION_FORMAT ((HRESULT)0x887D0009)
#define APOERR_APO_LOCKED ((HRESULT)0x887D000A)
#define APOERR_INVALID_COEFFCOUNT ((HRESULT)0x887D000B)
#define APOERR_INVALID_COEFFICIENT ((HRESULT)0x887D000C)
#define APOERR_INVALID_CURVE_PARAM ((HRESULT)0x887D000D)
#define APOERR_INVALID_INPUTID ((HRESULT)0x887D000E)

// Range of a format that an object may be locked with: Hz and channels.
#define AUDIO_MIN_FRAMERATE 10.0
#define AUDIO_MAX_FRAMERATE 384000.0
#define AUDIO_MIN_CHANNELS 1
#define AUDIO_MAX_CHANNELS 4096

typedef enum APO_CONNECTION_BUFFER_TYPE
{
    APO_CONNECTION_BUFFER_TYPE_ALLOCATED = 0,
    APO_CONNECTION_BUFFER_TYPE_EXTERNAL = 1,
    APO_CONNECTION_BUFFER_TYPE_DEPENDANT = 2
} APO_CONNECTION_BUFFER_TYPE;

// One connection as it is locked.
typedef struct APO_CONNECTION_DESCRIPTOR
{
    APO_CONNECTION_BUFFER_TYPE Type;
    UINT_PTR pBuffer;
    UINT32 u32MaxFrameCount;
    IAudioMediaType* pFormat;
    UINT32 u32Signature;
} APO_CONNECTION_DESCRIPTOR;

// Marks of the two connection records.
#define APO_CONNECTION_DESCRIPTOR_SIGNATURE 0x41434453 // "ACDS"
#define APO_CONNECTION_PROPERTY_SIGNATURE 0x41435053   // "ACPS"

typedef enum APO_FLAG
{
    APO_FLAG_NONE = 0x00,
    APO_FLAG_INPLACE = 0x01,
    APO_FLAG_SAMPLESPERFRAME_MUST_MATCH = 0x02,
    APO_FLAG_FRAMESPERSECOND_MUST_MATCH = 0x04,
    APO_FLAG_BITSPERSAMPLE_MUST_MATCH = 0x08,
    APO_FLAG_MIXER = 0x10,
    APO_FLAG_DEFAULT = 0x0E
} APO_FLAG;

// What an object says of itself. More interface ids may follow the first.
typedef struct APO_REG_PROPERTIES
{
    CLSID clsid;
    APO_FLAG Flags;
    WCHAR szFriendlyName[256];
    WCHAR szCopyrightInfo[256];
    UINT32 u32MajorVersion;
    UINT32 u32MinorVersion;
    UINT32 u32MinInputConnections;
    UINT32 u32MaxInputConnections;
    UINT32 u32MinOutputConnections;
    UINT32 u32MaxOutputConnections;
    UINT32 u32MaxInstances;
    UINT32 u32NumAPOInterfaces;
    IID iidAPOInterfaceList[1];
} APO_REG_PROPERTIES;

// What Initialize is given; the size tells which record it is.
typedef struct APOInitBaseStruct
{
    UINT32 cbSize;
    CLSID clsid;
} APOInitBaseStruct;

typedef struct APOInitSystemEffects
{
    APOInitBaseStruct APOInit;
    IPropertyStore* pAPOEndpointProperties;
    IPropertyStore* pAPOSystemEffectsProperties;
    void* pReserved;
    IMMDeviceCollection* pDeviceCollection;
} APOInitSystemEffects;

typedef struct APOInitSystemEffects2
{
    APOInitBaseStruct APOInit;
    IPropertyStore* pAPOEndpointProperties;
    IPropertyStore* pAPOSystemEffectsProperties;
    void* pReserved;
    IMMDeviceCollection* pDeviceCollection;
    UINT nSoftwareIoDeviceInCollection;
    UINT nSoftwareIoConnectorIndex;
    GUID AudioProcessingMode;
    BOOL InitializeForDiscoveryOnly;
} APOInitSystemEffects2;

inline constexpr IID IID_IAudioProcessingObject = {
    0xFD7F2B29, 0x24D0, 0x4B5C, {0xB1, 0x77, 0x59, 0x2C, 0x39, 0xF9, 0xCA, 0x10}};
inline constexpr IID IID_IAudioProcessingObjectRT = {
    0x9E1D6A6D, 0xDDBC, 0x4E95, {0xA4, 0xC7, 0xAD, 0x64, 0xBA, 0x37, 0x84, 0x6C}};
inline constexpr IID IID_IAudioProcessingObjectConfiguration = {
    0x0E5ED805, 0xABA6, 0x49C3, {0x8F, 0x9A, 0x2B, 0x8C, 0x88, 0x9C, 0x4F, 0xA8}};
inline constexpr IID IID_IAudioSystemEffects = {
    0x5FA00F27, 0xADD6, 0x499A, {0x8A, 0x9D, 0x6B, 0x98, 0x52, 0x1F, 0xA7, 0x5B}};
inline constexpr IID IID_IAudioSystemEffects2 = {
    0xBAFE99D2, 0x7436, 0x44CE, {0x9E, 0x0E, 0x4D, 0x89, 0xAF, 0xBF, 0xFF, 0x56}};

// Set-up and negotiation.
struct IAudioProcessingObject : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLatency(HNSTIME* pTime) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRegistrationProperties(APO_REG_PROPERTIES** ppRegProps) = 0;
    virtual HRESULT STDMETHODCALLTYPE Initialize(UINT32 cbDataSize, BYTE* pbyData) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsInputFormatSupported(IAudioMediaType* pOppositeFormat,
                                                             IAudioMediaType* pRequestedInputFormat,
                                                             IAudioMediaType** ppSupportedInputFormat) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsOutputFormatSupported(IAudioMediaType* pOppositeFormat,
                                                              IAudioMediaType* pRequestedOutputFormat,
                                                              IAudioMediaType** ppSupportedOutputFormat) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputChannelCount(UINT32* pu32ChannelCount) = 0;
};

// The periodic call, on the audio engine's processing thread.
struct IAudioProcessingObjectRT : public IUnknown
{
    virtual void STDMETHODCALLTYPE APOProcess(UINT32 u32NumInputConnections,
                                              APO_CONNECTION_PROPERTY** ppInputConnections,
                                              UINT32 u32NumOutputConnections,
                                              APO_CONNECTION_PROPERTY** ppOutputConnections) = 0;
    virtual UINT32 STDMETHODCALLTYPE CalcInputFrames(UINT32 u32OutputFrameCount) = 0;
    virtual UINT32 STDMETHODCALLTYPE CalcOutputFrames(UINT32 u32InputFrameCount) = 0;
};

// Connections, fixed between lock and unlock.
struct IAudioProcessingObjectConfiguration : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE LockForProcess(UINT32 u32NumInputConnections,
                                                     APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                                     UINT32 u32NumOutputConnections,
                                                     APO_CONNECTION_DESCRIPTOR** ppOutputConnections) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockForProcess() = 0;
};

// Marks an object as a system effect; no operations of its own.
struct IAudioSystemEffects : public IUnknown
{
};

struct IAudioSystemEffects2 : public IAudioSystemEffects
{
    virtual HRESULT STDMETHODCALLTYPE GetEffectsList(LPGUID* ppEffectsIds, UINT* pcEffects, HANDLE Event) = 0;
};

// The stream's audio processing modes.
inline constexpr GUID AUDIO_SIGNALPROCESSINGMODE_DEFAULT = {
    0xC18E2F7E, 0x933D, 0x4965, {0xB7, 0xD1, 0x1E, 0xEF, 0x22, 0x8D, 0x2A, 0xF3}};
inline constexpr GUID AUDIO_SIGNALPROCESSINGMODE_RAW = {
    0x9E90EA20, 0xB493, 0x4FD1, {0xA1, 0xA8, 0x7E, 0x13, 0x61, 0xA9, 0x56, 0xCF}};
inline constexpr GUID AUDIO_SIGNALPROCESSINGMODE_COMMUNICATIONS = {
    0x98951333, 0xB9CD, 0x48B1, {0xA0, 0xA3, 0xFF, 0x40, 0x68, 0x2D, 0x73, 0xF7}};
inline constexpr GUID AUDIO_SIGNALPROCESSINGMODE_SPEECH = {
    0xFC1CFC9B, 0xB9D6, 0x4CFA, {0xB5, 0xE0, 0x4B, 0xB2, 0x16, 0x68, 0x78, 0xB2}};
inline constexpr GUID AUDIO_SIGNALPROCESSINGMODE_MEDIA = {
    0x4780004E, 0x7133, 0x41D8, {0x8C, 0x74, 0x66, 0x0D, 0xAD, 0xD2, 0xC0, 0xEE}};
inline constexpr GUID AUDIO_SIGNALPROCESSINGMODE_MOVIE = {
    0xB26FEB0D, 0xEC94, 0x477C, {0x94, 0x94, 0xD1, 0xAB, 0x8E, 0x75, 0x3F, 0x6E}};
inline constexpr GUID AUDIO_SIGNALPROCESSINGMODE_NOTIFICATION = {
    0x9CF2A70B, 0xF377, 0x403B, {0xBD, 0x6B, 0x36, 0x08, 0x63, 0xE0, 0x35, 0x5C}};

// Write the object's properties under HKEY_CLASSES_ROOT\AudioEngine\AudioProcessingObjects\<class id>, replacing what
// is there, and delete that key. Any thread. S_OK, 0x80004003 for null, or the registry's error code as an HRESULT.
STDAPI RegisterAPO(const APO_REG_PROPERTIES* pProperties);
STDAPI UnregisterAPO(REFCLSID clsid);
