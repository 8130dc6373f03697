// The one call that leaves the monitor.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_result.h"

// A missing event costs both lines: nobody else tells that the other program isn't there.
void CAudioMonitor::SetGetCPUStatusEvent()
{
    std::string strCPUName;
    if (AUDIO_CHECK(CAudioREG::ReadRegValue(CPU_INFO_PATH, CPU_NAME_STRING, strCPUName)) != 0)
        return;
    if (strCPUName.find("AMD") != std::string::npos)
        return;
    const HANDLE hEvent = OpenEventW(EVENT_ALL_ACCESS, FALSE, AUDIO_CPU_STATUS_EVENT);
    if (hEvent == nullptr)
        AUDIOLOG_ERROR(AUDIO_FAILED, "OpenEvent for 'Global\\MonitorCPUStatus' error");
    if (!SetEvent(hEvent))
        AUDIOLOG_ERROR(AUDIO_FAILED, "SetEvent(hEvent)");
    if (hEvent != nullptr)
        CloseHandle(hEvent);
}
