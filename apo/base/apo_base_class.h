// The base of the processing objects: what the audio engine sees of one, and the decision taken on every period.
#pragma once

#include "apo/base/apo_base_engine.h"
#include "audioapi/audio_api_const.h"
#include "platform/compiler.h"

#include <audioenginebaseapo.h>
#include <baseaudioprocessingobject.h>
#include <unknwn.h>
#include <windows.h>

#include <atomic>
#include <memory>
#include <string>

// Places an operation of the periodic call in the code section that holds them all.
#define RT_CODE KELVANE_SECTION("RT_CODE")

// What the object itself answers, whether an outer object holds it or not. Any thread; the last release destroys it.
struct INonDelegatingUnknown
{
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID iid, void** ppv) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;
};

// The same three slots under IUnknown's names. An aggregated object gives it to its outer object alone.
class CNonDelegatingUnknown final : public IUnknown
{
public:
    explicit CNonDelegatingUnknown(INonDelegatingUnknown& oObject) : m_oObject(oObject) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

private:
    INonDelegatingUnknown& m_oObject;
};

// Takes one connection each way, 32-bit float, in place or not. Audio is interleaved; lengths are sample frames per
// channel. The platform calls the configuration operations from one thread at a time, and APOProcess from its
// processing thread between LockForProcess and UnlockForProcess.
class CBaseAPO : public CBaseAudioProcessingObject, public IAudioSystemEffects2, public INonDelegatingUnknown
{
public:
    // pUnkOuter may be null and isn't owned; pProperties must outlive the object.
    CBaseAPO(IUnknown* pUnkOuter, const APO_REG_PROPERTIES* pProperties);
    CBaseAPO(const CBaseAPO&) = delete;
    CBaseAPO& operator=(const CBaseAPO&) = delete;

    // IUnknown, forwarded to the outer unknown.
    STDMETHODIMP QueryInterface(REFIID iid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** ppv) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

    // Always 0, in 100 ns. E_POINTER for null.
    STDMETHODIMP GetLatency(HNSTIME* pTime) override;

    // Takes the platform's init record, told by its size: 88 bytes name the stream's mode, 56 stand for the default
    // mode. E_INVALIDARG for any other; 0x887D0001 the second time.
    STDMETHODIMP Initialize(UINT32 cbDataSize, BYTE* pbyData) override;

    // Hands format and system state to the engine. AUDIO_BAD_DATA for a missing connection, AUDIO_NO_OBJECT without an
    // engine, else the base's codes. All but S_OK leave the object unlocked, unless it was locked before.
    STDMETHODIMP LockForProcess(UINT32 u32NumInputConnections, APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                                UINT32 u32NumOutputConnections,
                                APO_CONNECTION_DESCRIPTOR** ppOutputConnections) override;

    // One period; see the definition for its real-time contract.
    STDMETHODIMP_(void)
    APOProcess(UINT32 u32NumInputConnections, APO_CONNECTION_PROPERTY** ppInputConnections,
               UINT32 u32NumOutputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections) override;

    // No effects to list: null and 0, each if asked for.
    STDMETHODIMP GetEffectsList(LPGUID* ppEffectsIds, UINT* pcEffects, HANDLE hEvent) override;

protected:
    ~CBaseAPO() override;

    // The decision's questions, each 0 or 1, asked on the processing thread.
    virtual int IsNeedByPass();
    virtual int IsNeedSilent();
    virtual int IsNeedUpdataPara();
    virtual int GetRenderMode() = 0;

    // The paths, and the choice between them: 0, AUDIO_BAD_DATA for a missing connection, AUDIO_NO_HANDLE without an
    // engine, or the failed step's code.
    virtual int ProcessSilentMode(UINT32 u32NumInputConnections, APO_CONNECTION_PROPERTY** ppInputConnections,
                                  UINT32 u32NumOutputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections);
    virtual int ProcessByPassMode(UINT32 u32NumInputConnections, APO_CONNECTION_PROPERTY** ppInputConnections,
                                  UINT32 u32NumOutputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections);
    virtual int ProcessAudioBuffer(UINT32 u32NumInputConnections, APO_CONNECTION_PROPERTY** ppInputConnections,
                                   UINT32 u32NumOutputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections);
    virtual int ChooseAPOProcess(UINT32 u32NumInputConnections, APO_CONNECTION_PROPERTY** ppInputConnections,
                                 UINT32 u32NumOutputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections);

    // Whether LockForProcess would take these connections now, asked without changing anything; if so, the input's
    // format.
    bool IsLockTaken(UINT32 u32NumInputConnections, APO_CONNECTION_DESCRIPTOR** ppInputConnections,
                     UINT32 u32NumOutputConnections, APO_CONNECTION_DESCRIPTOR** ppOutputConnections,
                     UNCOMPRESSEDAUDIOFORMAT& oInFormat);
    // Whether the locked rate, cut to whole Hz, is one that the engine takes.
    bool IsSupportedRate() const;
    void PrintAudioModuleGUID(const GUID& oGuid) const;

    std::unique_ptr<CBaseEngine> m_pEngine;
    INT32 m_bNeedUpdataPara = 0;
    GUID m_oAudioModeGUID{};
    UNCOMPRESSEDAUDIOFORMAT m_pInFormat{};
    UNCOMPRESSEDAUDIOFORMAT m_pOutFormat{};
    std::atomic<LONG> m_cRef{1};
    CNonDelegatingUnknown m_oOwnUnknown{*this};
    IUnknown* m_pUnkOuter = nullptr; // not owned; the own unknown unless aggregated
    std::string m_strDumpInName = AUDIO_DUMP_POST_DATA_IN;
    std::string m_strDumpOutName = AUDIO_DUMP_POST_DATA_OUT;

private:
    HRESULT TakeStream(APO_CONNECTION_DESCRIPTOR** ppInputConnections, APO_CONNECTION_DESCRIPTOR** ppOutputConnections);
    void HandFormatToEngine();
    void TakeSystemState();
    int ExchangeFrames(APO_CONNECTION_PROPERTY** ppInputConnections, APO_CONNECTION_PROPERTY** ppOutputConnections);
};
