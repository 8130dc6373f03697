// The rate-matching stage between the periodic callback and the algorithm: two frame queues and the shaping around
// them.
#pragma once

#include "apo/base/apo_base_input.h"
#include "apo/base/apo_base_output.h"
#include "apo/base/apo_base_stream.h"
#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <memory>
#include <string>

// The engine's copies of fields of the status record.
struct CBaseMirrors
{
    CAudioInt m_iHeadsetStatus = 0;
    CAudioInt m_iSpeakerVolume = 0; // percent
    CAudioInt m_iHeadsetType = 0;
    CAudioInt m_iHeadsetMode = 0;
    CAudioInt m_iLyranaMode = 0;
    CAudioInt m_iSpeakerMode = 0;
    CAudioInt m_iHeadphoneMode = 0;
    CAudioInt m_iMicrophoneMode = 0;
    CAudioInt m_iAPOMode = 0;
    CAudioInt m_iSilentSpace = 0;
};

// What tells the processing objects' engines apart in log and dump.
struct CBaseVariant
{
    int m_iAPOType = 11; // index into AUDIO_APO_TYPE_TAG
    std::string m_strDumpInName = AUDIO_DUMP_POST_INT16_DATA_IN;
    std::string m_strDumpOutName = AUDIO_DUMP_POST_INT16_DATA_OUT;
};

// Lengths named ...DataLen count floats, those named ...FrameLen and ...FrameCount count sample frames per channel. All
// audio is interleaved. Operations with a code give 0 for success. Scalars pass by reference; setters give the new
// value. The processing thread calls everything but FormatOutputFrameToQueue and ReSamplerDataFrom48K, which belong to
// the side that runs the algorithm: its worker, or in inline mode the processing thread too.
class CBaseEngine
{
public:
    CBaseEngine();
    CBaseEngine(const CBaseEngine&) = delete;
    CBaseEngine& operator=(const CBaseEngine&) = delete;

    // The order of the virtual operations is fixed.
    virtual ~CBaseEngine();

    // Starts the algorithm, before the first callback and never beside one. A code; a failure leaves a status member
    // set.
    virtual int InitAlgorithmParameter() = 0;
    virtual int RefreshAlgorithmParams() = 0;

    // Takes one system frame of the stream's rate, iInputChannelNum * ulFrameCount floats. AUDIO_BAD_DATA for bad
    // arguments, too small a gathering or no memory; the samples of a gathering stay for the next call.
    virtual int InputDataToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                 const UINT32& ulFrameCount);
    // Queues the whole standard frames in iDataLen floats of 48 kHz audio and wakes the worker. A rest is dropped.
    virtual int InputStandardFrameToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                          const int& iDataLen);
    virtual int InputNonStandardFrameToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                             const UINT32& ulFrameCount);

    // Fills iChannel * ulFrameCount floats from the oldest output frame of that length. With nothing to give the buffer
    // stays as it was and the code is 0. Nobody is waited for.
    virtual int OutputDataFromQueue(FLOAT32* pf32OutputFrames, const int& iChannel, const UINT32& ulFrameCount);
    virtual void ClearAllQueues() = 0;
    virtual void SetInitData(const BYTE* pbyData);
    // Frees every output frame; with a worker the priming starts over.
    virtual void ResetOutputQueue();
    virtual int GetEngineState() { return 0; }

    virtual GUID GetAudioModeGUID() { return m_oStream.m_oAudioModeGUID; }
    virtual void SetAudioModeGUID(const GUID& oGuid) { m_oStream.m_oAudioModeGUID = oGuid; }
    virtual int SetSampleRate(const int& iSampleRate) { return m_oStream.m_iSampleRate = iSampleRate; }
    virtual int GetSampleRate() { return m_oStream.m_iSampleRate; }
    virtual int GetInChannelCount() { return m_oStream.m_iInChannelCount; }
    virtual int SetInChannelCount(const int& iChannelCount) { return m_oStream.m_iInChannelCount = iChannelCount; }
    virtual int GetOutChannelCount() { return m_oStream.m_iOutChannelCount; }
    virtual int SetOutChannelCount(const int& iChannelCount) { return m_oStream.m_iOutChannelCount = iChannelCount; }
    virtual int GetSilentStatus() { return m_iSilentStatus; }
    virtual int SetSilentStatus(const int& iStatus) { return m_iSilentStatus = iStatus; }
    virtual int GetBypassStatus() { return m_iBypassStatus; }
    virtual int SetBypassStatus(const int& iStatus) { return m_iBypassStatus = iStatus; }
    virtual int GetAudioMode() { return m_oStream.m_iAudioMode; }
    virtual int SetAudioMode(const int& iMode) { return m_oStream.m_iAudioMode = iMode; }
    virtual int SetSpeakerVolume(const int& iVolume) { return m_oMirrors.m_iSpeakerVolume = iVolume; }
    virtual int SetHeadsetType(const int& iType) { return m_oMirrors.m_iHeadsetType = iType; }
    virtual int SetHeadsetMode(const int& iMode) { return m_oMirrors.m_iHeadsetMode = iMode; }
    virtual int SetSpeakerMode(const int& iMode) { return m_oMirrors.m_iSpeakerMode = iMode; }
    virtual int SetHeadphoneMode(const int& iMode) { return m_oMirrors.m_iHeadphoneMode = iMode; }
    virtual int SetMicrophoneMode(const int& iMode) { return m_oMirrors.m_iMicrophoneMode = iMode; }
    virtual int SetAPOMode(const int& iMode) { return m_oMirrors.m_iAPOMode = iMode; }
    virtual int SetHeadsetStatus(const int& iStatus) { return m_oMirrors.m_iHeadsetStatus = iStatus; }
    virtual int SetLyranaMode(const int& iMode) { return m_oMirrors.m_iLyranaMode = iMode; }
    virtual int SetSilentSpace(const int& iSilentSpace) { return m_oMirrors.m_iSilentSpace = iSilentSpace; }
    virtual int GetReserved() { return m_iReserved; }
    virtual int SetReserved(const int& iReserved) { return m_iReserved = iReserved; }

    // Drop the oldest frames of a queue that is over its high mark; never in inline mode.
    virtual void CheckInputQueueThreshold();
    virtual void CheckOutputQueueThreshold();

    // Sizes the caches for the stream's geometry. Acts until all three exist.
    virtual void InitAudioCacheBuffer(const int& iChannel, const UINT32& ulFrameCount);
    // Gathers samples of the stream's rate and gives the whole blocks among them at 48 kHz, iReSampleDataLen floats;
    // null when there is no whole block yet, or on failure.
    virtual std::unique_ptr<FLOAT32[]> FormatNonStandardFrame(const FLOAT32* pInputMicBuffer, const int& iChannel,
                                                              const UINT32& ulFrameCount, int& iReSampleDataLen);
    // Gathers iChannel * iFrameLen floats of 48 kHz audio and queues the whole system frames that result.
    // AUDIO_NO_HANDLE when a frame can't be had, AUDIO_BAD_DATA when the caches can't; other codes are a copy's.
    virtual int FormatOutputFrameToQueue(const FLOAT32* pInputMicBuffer, const int& iChannel, const int& iFrameLen);

    // The engine's copy of a field of the status record; with iRefresh 1 renewed from the record first. Any thread.
    int GetHeadsetMode(const int& iRefresh);
    int GetHeadsetStatus(const int& iRefresh);
    int GetHeadsetType(const int& iRefresh);
    int GetLyranaMode(const int& iRefresh);
    int GetHeadphoneMode(const int& iRefresh);
    int GetMicrophoneMode(const int& iRefresh);
    int GetSpeakerMode(const int& iRefresh);
    int GetSilentSpace(const int& iRefresh);
    int GetSpeakerVolume(const int& iRefresh);
    int GetAPOMode(const int& iRefresh);

    // Report once per iLimit near-zero frames in a row.
    void CalcInputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit);
    void CalcOutputFrameEnergy(const FLOAT32* pFrame, int iDataLen, int iLimit);

    // Convert iFramelen sample frames between the stream's rate and 48 kHz; a new buffer of iReSampleDataLen floats, or
    // null.
    std::unique_ptr<FLOAT32[]> ReSamplerDataTo48K(const FLOAT32* pMicInputFrames, const int& iChannel,
                                                  const int& iFramelen, int& iReSampleDataLen);
    std::unique_ptr<FLOAT32[]> ReSamplerDataFrom48K(const FLOAT32* pMicInputFrames, const int& iChannel,
                                                    const int& iFramelen, int& iReSampleDataLen);

    // What a processing object does around a period, on the processing thread. A change of the frame length frees every
    // output frame.
    void BeginPeriod(int iSystemFrameLen);
    void EndPeriod();
    // Whether the line about a period's path is due: once per 501 callbacks, inline on each.
    bool IsRareLineDue() const { return m_oStream.IsSizeLineDue(); }
    bool IsThreadRunning() const { return m_bThreadRun != 0; }
    const char* GetAPOTypeTag() const { return AUDIO_APO_TYPE_TAG[m_oVariant.m_iAPOType]; }
    // The channels of the stream that the next start is for.
    void SetStreamChannelCount(int iChannelCount) { m_oStream.m_iStreamChannelCount = iChannelCount; }

protected:
    // The body of InputStandardFrameToQueue: queues the whole standard frames, and wakes the worker where there is one.
    // fnFull as in CBaseInput::Push. A code.
    int QueueStandardFrames(const FLOAT32* pMicInputFrames, const int& iInputChannelNum, const int& iDataLen,
                            void (*fnFull)(int iSize));
    // Frees the caches, so that the next callback sizes them anew. With no worker running.
    void ReleaseAudioCacheBuffer();

    CBaseStream m_oStream;
    CBaseVariant m_oVariant;
    CBaseInput m_oInput{m_oStream};
    CBaseOutput m_oOutput{m_oStream};
    CAudioFlag m_bThreadRun = 0; // 1 while the algorithm worker is to run
    PTP_WORK m_pThreadWorker = nullptr;
    CAudioWorkerEvent m_hApplyEvent; // set when input frames were added

private:
    friend class CEngineInside;
    enum class CacheState
    {
        None,
        Refused, // one of the three couldn't be had
        Ready
    };

    CBaseMirrors m_oMirrors;
    CacheState m_eCaches = CacheState::None; // processing thread
    CAudioInt m_iSilentStatus = 0;           // 1: the callback goes the silent path
    CAudioInt m_iBypassStatus = 0;           // 1: the callback goes the bypass path
    int m_iReserved = 0;
};
