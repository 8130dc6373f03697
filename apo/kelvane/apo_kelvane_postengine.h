// The stage that runs the closed protection library on the stream, on a worker of its own or in the caller's thread.
#pragma once

#include "apo/kelvane/apo_kelvane_engine.h"
#include "apo/kelvane/engine/apo_kelvane_apply_times.h"
#include "apo/kelvane/engine/apo_kelvane_frame.h"
#include "apo/kelvane/engine/apo_kelvane_instance.h"
#include "apo/kelvane/engine/apo_kelvane_jobs.h"
#include "apo/kelvane/engine/apo_kelvane_power.h"
#include "apo/kelvane/engine/apo_kelvane_set_choice.h"
#include "apo/kelvane/engine/apo_kelvane_state_report.h"
#include "apo/kelvane/engine/apo_kelvane_temperature.h"

#include <windows.h>

#include <string>

// Per frame, on the thread that runs the algorithm: SplitInputDataItem, AudioKelvaneApply, MergerOutputDataItem. Its
// parts do the work; see there. Codes where not said otherwise.
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

    // Takes the oldest input frame apart into the frame record. AUDIO_BAD_DATA when there is none.
    int SplitInputDataItem();
    // Runs the library on that frame. The library's code, AUDIO_NO_INSTANCE without an instance.
    int AudioKelvaneApply();
    // Puts the library's output together and hands it to FormatOutputFrameToQueue, whose code it gives.
    int MergerOutputDataItem();

    // Start-up steps.
    int AudioKelvaneGetSize() { return m_oInstance.AudioKelvaneGetSize(); }
    int AudioKelvaneInit() { return m_oInstance.AudioKelvaneInit(); }
    int AudioKelvaneSetPara();
    // Reads the power status that the library is told on every frame. Also the periodic refresh, on its thread.
    int AudioKelvaneSetBatteryInfo() { return m_oPower.AudioKelvaneSetBatteryInfo(m_oInstance); }
    // Sets codecs and amplifiers high for the protected stream. Failures are told; the stream runs on.
    void ActiveKelvaneGain();
    // Sets them low for a stream without protection, and bypasses the algorithm; silences the stream if that fails.
    void DeactiveKelvaneGain();
    void CreateAlgorithmThread();
    void InitializeWMI() { m_oTemperature.InitializeWMI(); }
    void CreateTemperatureThread() { m_oJobs.CreateTemperatureThread(); }
    void CreateParameterThread() { m_oJobs.CreateParameterThread(); }

    // The periodic jobs of CKelvaneTemperature, and the report's line; see there.
    int AudioSmartSetECTemperature() { return m_oTemperature.AudioSmartSetECTemperature(); }
    int AudioKelvaneSetAlgoTemperature() { return m_oTemperature.AudioKelvaneSetAlgoTemperature(); }
    int AudioKelvanePrintTemperature() { return m_oTemperature.AudioKelvanePrintTemperature(m_oStream.m_bInlineMode); }
    std::string AudioSmartPrintPara() { return m_oReport.AudioSmartPrintPara(); }

    // The key of this moment's volume and sound modes; see CKelvaneSetChoice.
    const char* GetEffectParamsID(const int& iHeatState) { return m_oChoice.GetEffectParamsID(iHeatState); }
    // Key of the set the library was last given, a constant. Any thread.
    const char* ParamID() const { return m_oChoice.ParamID(); }

private:
    friend class CEngineInside;

    static void CALLBACK ProcessAlgorithmThread(PTP_CALLBACK_INSTANCE pInstance, PVOID pContext, PTP_WORK pWork);
    void DrainInputQueue();
    int StartInstance();
    void StopInstance();

    CKelvaneInstance m_oInstance;
    CKelvaneFrame m_oFrame{m_oStream, m_oVariant};
    CKelvaneApplyTimes m_oTimes;
    CKelvanePower m_oPower;
    CKelvaneTemperature m_oTemperature{m_oInstance};
    CKelvaneSetChoice m_oChoice{*this, m_oInstance, m_oTemperature};
    CKelvaneStateReport m_oReport{m_oInstance, m_oChoice, m_oPower};
    CKelvaneJobs m_oJobs{m_oStream, m_oInstance, m_oTimes, m_oTemperature, m_oPower, m_oReport};
    bool m_bStarted = false; // InitAlgorithmParameter ran
};
