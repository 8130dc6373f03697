// The base of every processing object: registration record, format checks, life states and connection counts.
#pragma once

#include <audioenginebaseapo.h>

// IUnknown and APOProcess are left to the derived class. Set-up operations may come on any thread; lock and unlock
// exclude each other. Null pointers give 0x80004003 throughout.
class CBaseAudioProcessingObject : public IAudioProcessingObject,
                                   public IAudioProcessingObjectRT,
                                   public IAudioProcessingObjectConfiguration
{
public:
    // The record stays the caller's and must outlive the object.
    explicit CBaseAudioProcessingObject(const APO_REG_PROPERTIES* pRegProperties);
    CBaseAudioProcessingObject(const CBaseAudioProcessingObject&) = delete;
    CBaseAudioProcessingObject& operator=(const CBaseAudioProcessingObject&) = delete;
    virtual ~CBaseAudioProcessingObject();

    STDMETHOD(Reset)() override;
    // 0, in 100 ns.
    STDMETHOD(GetLatency)(HNSTIME* pTime) override;
    // A copy that the caller frees with CoTaskMemFree.
    STDMETHOD(GetRegistrationProperties)(APO_REG_PROPERTIES** ppRegProps) override;
    // 0x887D0001 the second time, 0x80070057 if data and size contradict each other.
    STDMETHOD(Initialize)(UINT32 cbDataSize, BYTE* pbyData) override;
    // S_OK with the requested format, S_FALSE with the nearest one that would do, 0x887D0003 if there is none.
    STDMETHOD(IsInputFormatSupported)
    (IAudioMediaType* pOppositeFormat, IAudioMediaType* pRequestedInputFormat,
     IAudioMediaType** ppSupportedInputFormat) override;
    STDMETHOD(IsOutputFormatSupported)
    (IAudioMediaType* pOppositeFormat, IAudioMediaType* pRequestedOutputFormat,
     IAudioMediaType** ppSupportedOutputFormat) override;
    // Channels of the locked input; 0x887D0006 unless locked.
    STDMETHOD(GetInputChannelCount)(UINT32* pu32ChannelCount) override;

    // One to one.
    STDMETHOD_(UINT32, CalcInputFrames)(UINT32 u32OutputFrameCount) override;
    STDMETHOD_(UINT32, CalcOutputFrames)(UINT32 u32InputFrameCount) override;

    // 0x887D0002 before Initialize, 0x887D000A while locked, 0x887D0007 for wrong counts, 0x887D0009 for connections
    // that lack a format or contradict the record's flags, 0x887D0003 for a format out of range.
    STDMETHOD(LockForProcess)
    (UINT32 u32NumInputConnections, APO_CONNECTION_DESCRIPTOR** ppInputConnections, UINT32 u32NumOutputConnections,
     APO_CONNECTION_DESCRIPTOR** ppOutputConnections) override;
    // 0x887D0006 unless locked.
    STDMETHOD(UnlockForProcess)() override;

    // Channels of the connections as cached at the last lock; 0 before. Processing thread.
    UINT32 GetSamplesPerFrame() const { return m_u32SamplesPerFrame; }

protected:
    // Checks counts and formats and caches what the processing thread asks for. Called under the lock of
    // LockForProcess.
    virtual HRESULT ValidateAndCacheConnectionInfo(UINT32 u32NumInputConnections,
                                                   APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                                   UINT32 u32NumOutputConnections,
                                                   APO_CONNECTION_DESCRIPTOR** ppOutputConnections);
    // Whether one format by itself will do: 32-bit float in 4 bytes, 1 to 4096 channels, 10 to 384000 Hz.
    virtual HRESULT ValidateDefaultFormat(const UNCOMPRESSEDAUDIOFORMAT* pFormat);

    const APO_REG_PROPERTIES* m_pRegProperties;
    // Written under the lock of Initialize, LockForProcess and UnlockForProcess.
    bool m_bIsInitialized = false;
    bool m_bIsLocked = false;

private:
    HRESULT IsFormatSupported(IAudioMediaType* pOppositeFormat, IAudioMediaType* pRequestedFormat,
                              IAudioMediaType** ppSupportedFormat);
    bool HasFlag(APO_FLAG eFlag) const { return (m_pRegProperties->Flags & eFlag) != 0; }
    // Makes the format follow the model in what the record's flags say must match. False if anything had to change.
    bool MatchByFlags(const UNCOMPRESSEDAUDIOFORMAT& oModel, UNCOMPRESSEDAUDIOFORMAT* pFormat) const;

    CRITICAL_SECTION m_csLock;
    UINT32 m_u32SamplesPerFrame = 0;
};
