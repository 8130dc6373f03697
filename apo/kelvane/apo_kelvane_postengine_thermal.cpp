// Temperature in both directions: the coils' to the embedded controller, a sensor's to the library, and its record.
#include "apo/kelvane/apo_kelvane_manager.h"
#include "apo/kelvane/apo_kelvane_postengine.h"

void CKelvanePostEngine::InitTemperatureQueue()
{
    const size_t iSensorCount = CKelvaneManager::Instance()->m_vecSensorRangeCommand.size();
    m_oTemperatureQueue.resize(iSensorCount);
    m_oAverageQueue.Resize(iSensorCount);
}
