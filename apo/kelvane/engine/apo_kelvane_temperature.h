// Temperature in both directions: the coils' to the embedded controller, a sensor's to the library, and the means that
// tell whether the speakers run hot.
#pragma once

#include "apo/kelvane/apo_kelvane_sensor_queue.h"
#include "apo/kelvane/engine/apo_kelvane_instance.h"

#include <windows.h>

#include <memory>
#include <vector>

class CKelvaneWMI;

// The jobs run on one thread: the temperature worker, or inline the processing thread. Codes.
class CKelvaneTemperature
{
public:
    enum class Heat
    {
        Unknown, // no ten means yet, or between the two limits
        Cool,
        Hot
    };

    // Sized by the tuning file's sensors.
    explicit CKelvaneTemperature(CKelvaneInstance& oInstance);
    ~CKelvaneTemperature();

    // Connects to the embedded controller. Without it the jobs below do nothing, or fall back.
    void InitializeWMI();
    void ReleaseWMI();
    // Reports the hottest coil to the embedded controller; a temperature that stays alternates with one 0.1 degree up.
    int AudioSmartSetECTemperature();
    // Takes the report back.
    int AudioSmartCancelECTemperature();
    // Tells the library a sensor's temperature less the tuning file's offset, 25 degrees when it can't be had.
    int AudioKelvaneSetAlgoTemperature();
    // In debug mode takes a sample of every sensor and records it; 0. iOffload is nonzero for an engine in inline mode.
    int AudioKelvanePrintTemperature(int iOffload);

    // Cool or hot when all sensors were so in all of their last ten means, which are then forgotten. Processing thread.
    Heat JudgeHeat();

private:
    friend class CEngineInside;
    void InitTemperatureQueue();
    bool IsReporting() const;
    // 1 when the queue is full and every mean is above the hot limit, or at or below the cool limit, of sensor i. A
    // sensor without a limit is neither.
    static int JudgeHighLimit(const int& i, CKelvaneMeanQueue oQueue);
    static int JudgeLowLimit(const int& i, CKelvaneMeanQueue oQueue);
    // Empties the queues of means; the samples stay.
    static void ClearTemperatureQueue(CKelvaneAverageQueue& oAverageQueue) { oAverageQueue.Clear(); }

    CKelvaneInstance& m_oInstance;
    std::vector<CKelvaneSampleQueue> m_oTemperatureQueue; // by sensor; the sampling thread's own
    CKelvaneAverageQueue m_oAverageQueue;                 // by sensor: from the sampling to the processing thread
    std::unique_ptr<CKelvaneWMI> m_pWMIHandle;
    UINT16 m_iLastECTemperature = 0; // last reported, tenths of a degree
};
