// The stage that runs the closed protection library on the stream, on a worker of its own or in the caller's thread.
#pragma once

#include "apo/kelvane/apo_kelvane_engine.h"
#include "apo/kelvane/apo_kelvane_sensor_queue.h"
#include "audioapi/audio_api_log.h"
#include "protection/kelvane_protection.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

class CKelvaneWMI;

// A block of the general heap that the library works in; reads as a pointer to it.
template <class T> class CKelvaneMemory
{
public:
    // iSize bytes, not initialised; null without memory, and for a size no library of this kind can mean.
    void Allocate(int iSize)
    {
        constexpr int iSizeMax = 256 * 1024 * 1024;
        m_pMemory.reset(iSize > 0 && iSize <= iSizeMax ? static_cast<T*>(std::malloc(static_cast<size_t>(iSize)))
                                                       : nullptr);
    }
    void Release() { m_pMemory.reset(); }

    operator T*() const { return m_pMemory.get(); }
    T* operator->() const { return m_pMemory.get(); }

private:
    struct Free
    {
        void operator()(T* pMemory) const { std::free(pMemory); }
    };
    std::unique_ptr<T, Free> m_pMemory;
};

// Per frame, on the thread that runs the algorithm: SplitInputDataItem, AudioKelvaneApply, MergerOutputDataItem. The
// library is entered from the processing thread and the workers on one m_pRunBuf without a lock; it must bear that.
class CKelvanePostEngine : public CKelvaneEngine
{
public:
    CKelvanePostEngine();
    ~CKelvanePostEngine() override;

    // Brings one instance of the library into the stream; one of more channels than the library's record can hold gets
    // none. On failure the stream is left silent in debug mode, at low gain and bypassed otherwise. A second call stops
    // and frees the first instance and starts afresh.
    int InitAlgorithmParameter() override;
    // Hands the library the parameter set of this moment, chosen by heat if the tuning file asks for it, if it isn't
    // the one it has. 0. Processing thread.
    int RefreshAlgorithmParams() override;
    // As the base form, in whole frames of 240; inline mode runs the algorithm before it returns.
    int InputStandardFrameToQueue(const FLOAT32* pMicInputFrames, const int& iInputChannelNum,
                                  const int& iDataLen) override;
    void ClearAllQueues() override;

    // Turns a fresh engine into the inline one: the algorithm in the caller's thread, no lead-in.
    void MakeInline();

    // A zeroed record with its arrays for the larger of the stream's and the given channel count, 8 at most; or null.
    KelvaneDataStruct* InitDataStruct(const int& iChannelCount);
    void ReleaseDataStruct(KelvaneDataStruct** pDataStruct);

    // Takes the oldest input frame apart into psDataIn. AUDIO_BAD_DATA when there is none.
    int SplitInputDataItem();
    // Records the frame in psDataIn, interleaved, at dump level 3.
    void DumpInputDataItem(const KelvaneDataStruct* pDataStruct, int iDataLen);
    // Runs the library on the frame in psDataIn. The library's code, AUDIO_NO_INSTANCE without an instance.
    int AudioKelvaneApply();
    // A tick of the slow clock, after every second frame: 10 ms of audio. Inline mode runs the periodic jobs at once.
    void ParameterRelease();
    // Puts psDataOut together, interleaved, and hands it to FormatOutputFrameToQueue, whose code it gives.
    int MergerOutputDataItem();
    void SwapOutputChannelData();

    // Start-up steps; codes.
    int AudioKelvaneGetSize();
    int AudioKelvaneInit();
    int AudioKelvaneSetPara();
    // Reads the power status that the library is told on every frame. Also the periodic refresh, on its thread.
    int AudioKelvaneSetBatteryInfo();
    // Sets codecs and amplifiers high for the protected stream. Failures are told; the stream runs on.
    void ActiveKelvaneGain();
    // Sets them low for a stream without protection, and bypasses the algorithm; silences the stream if that fails.
    void DeactiveKelvaneGain();

    void CreateAlgorithmThread();
    void CreateTemperatureThread();
    void CreateParameterThread();
    static void CALLBACK ProcessAlgorithmThread(PTP_CALLBACK_INSTANCE pInstance, PVOID pContext, PTP_WORK pWork);
    static void CALLBACK ProcessTemperatureThread(PTP_CALLBACK_INSTANCE pInstance, PVOID pContext, PTP_WORK pWork);
    static void CALLBACK ProcessParameterThread(PTP_CALLBACK_INSTANCE pInstance, PVOID pContext, PTP_WORK pWork);

    // The key of this moment's volume and sound modes, a constant; empty without volume bands. iHeatState 1: heated
    // state.
    const char* GetEffectParamsID(const int& iHeatState);
    int SetAudioVolumeEffectParamsID();
    // Chooses only when all sensors were hot, or all cool, in all of their last ten means; else keeps the set.
    int SetAudioHeatEffectParamsID();

    // Connects to the embedded controller. Without it the jobs below do nothing, or fall back.
    void InitializeWMI();
    // The periodic jobs, on the temperature worker or inline. Codes.
    // Reports the hottest coil to the embedded controller; a temperature that stays alternates with one 0.1 degree up.
    int AudioSmartSetECTemperature();
    // Takes the report back.
    int AudioSmartCancelECTemperature();
    // Tells the library a sensor's temperature less the tuning file's offset, 25 degrees when it can't be had.
    int AudioKelvaneSetAlgoTemperature();
    // In debug mode takes a sample of every sensor and records it; 0.
    int AudioKelvanePrintTemperature();

    // 1 when the queue is full and every mean is above the hot limit, or at or below the cool limit, of sensor i. A
    // sensor without a limit is neither. Any thread.
    int JudgeHighLimit(const int& i, CKelvaneMeanQueue oQueue) const;
    int JudgeLowLimit(const int& i, CKelvaneMeanQueue oQueue) const;
    // Empties the queues of means; the samples stay. Processing thread.
    void ClearTemperatureQueue(CKelvaneAverageQueue& oAverageQueue) { oAverageQueue.Clear(); }

    // The live state's jobs, on the thread of AudioKelvaneSetBatteryInfo; 0. A line of it, empty outside debug mode;
    // the lines gathered; and their way into the record file.
    std::string AudioSmartPrintPara();
    int AudioSmartGatherPara();
    int AudioSmartRecordPara();

    KelvaneInit m_fAudioKelvaneInit = nullptr;
    KelvaneApply m_fAudioKelvaneApply = nullptr;
    KelvaneSetPara m_fAudioKelvaneSetPara = nullptr;
    KelvaneGetPara m_fAudioKelvaneGetPara = nullptr;
    KelvaneGetSize m_fAudioKelvaneGetSize = nullptr;
    KelvaneGetVersion m_fAudioKelvaneGetVersion = nullptr;
    KelvaneIvOptimize m_fAudioKelvaneIvOptimize = nullptr;
    KelvaneSetBatteryInfo m_fAudioKelvaneSetBatteryInfo = nullptr;
    KelvaneClearStatus m_fAudioKelvaneClearStatus = nullptr;
    KelvaneTemperature m_fAudioKelvaneTemperature = nullptr;
    CAudioWorkerEvent m_hTemperatureEvent;   // set at each tick of 10 ms of audio
    std::atomic<int> m_iTemperatureTicks{0}; // that the worker hasn't taken yet
    CAudioFlag m_bTemperatureRun = 0;        // 1 while the temperature worker is to run
    PTP_WORK m_pTemperatureWorker = nullptr;
    CAudioWorkerEvent m_hParameterEvent;   // set at each tick of 10 ms of audio
    std::atomic<int> m_iParameterTicks{0}; // that the worker hasn't taken yet
    CAudioFlag m_bParameterRun = 0;        // 1 while the parameter worker is to run
    PTP_WORK m_pParameterWorker = nullptr;
    int m_iApplyFrameCount = 0; // frames since the last timing report
    int m_iReleaseCount = 0;    // frames since its last reset
    // Key of the set the library was last given. Only constants are stored, so any thread may read through it.
    std::atomic<const char*> m_strParamID{""};
    std::vector<CKelvaneSampleQueue> m_oTemperatureQueue; // by sensor; the sampling thread's own
    CKelvaneAverageQueue m_oAverageQueue;                 // by sensor: from the sampling to the processing thread
    CKelvaneMemory<BYTE> m_pRunBuf;                       // the library's persistent memory
    CKelvaneMemory<BYTE> m_pScratchBuf;                   // the library's scratch memory
    CKelvaneMemory<KelvaneMemSize> m_pMemSize;
    KelvaneDataStruct* m_pDataStruct = nullptr; // owned, through the two operations above
    std::unique_ptr<CKelvaneWMI> m_pWMIHandle;  // the temperature jobs' own
    UINT16 m_iLastECTemperature = 0;            // last reported, tenths of a degree
    INT64 m_i64MaxTime = 0;                     // milliseconds, over the timing period
    INT64 m_i64MinTime = 0;
    INT64 m_i64TotalTime = 0;
    INT64 m_i64GapTime = 0;               // milliseconds since the last ParameterRelease
    SYSTEM_POWER_STATUS m_oSysPower = {}; // the writer's own: the thread of AudioKelvaneSetBatteryInfo

private:
    enum class JobThread
    {
        Processing,
        Temperature,
        Parameter
    };
    struct PeriodicJob;
    static const PeriodicJob PERIODIC_JOBS[];

    void RunJobs(int iTick, JobThread eThread, const AudioLogSite& oSite);
    void FollowTicks(JobThread eThread, const CAudioFlag& bRun, const CAudioWorkerEvent& hEvent,
                     std::atomic<int>& iTicks, const AudioLogSite& oSite, const char* pEventText);
    void DrainInputQueue();
    void SplitChannel(const FLOAT32* pFrame, int n, int ch, int iTarget);
    bool HasChannel(int iChannel);
    void CountApplyTime(INT64 i64Time);
    bool IsOutputFinite(int iChannelCount);
    void ExchangeChannels(int iFirst, int iSecond);
    int StartInstance();
    void StopInstance();
    void ResetStream();
    void InitTemperatureQueue();
    bool IsReporting() const;
    int SetEffectParamsID(const char* pNewID);
    std::string PrintSingleItemPara(const KelvaneStruParam& pStruParam);
    void ReportApplyTime();
    int AllocateMemory();
    void ReleaseMemory();

    std::string m_strStates;               // gathered since the last record
    CAudioRelaxed<UINT32> m_iSysPower = 0; // what a frame needs of the power status: percent, and the AC line in bit 8
    bool m_bStarted = false;               // InitAlgorithmParameter ran
    bool m_bChannelReported = false;       // the one WARN line about channels without an array
    bool m_bNotFiniteReported = false;     // the one WARN line of an episode of unusable samples
};
