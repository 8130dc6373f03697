// The start and the stop that every worker of the module goes through, and the one call that leaves the monitor.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_result.h"

PTP_WORK CAudioMonitor::CreateMonitorThread(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, CAudioFlag* piRunFlag)
{
    *piRunFlag = 1;
    PTP_WORK pWork = CreateThreadpoolWork(pfnWorker, pContext, nullptr);
    if (pWork == nullptr)
    {
        *piRunFlag = 0;
        AUDIOLOG_ERROR(AUDIO_NO_HANDLE, "Create Thread failed!");
        return nullptr;
    }
    SubmitThreadpoolWork(pWork);
    return pWork;
}

void CAudioMonitor::StopMonitorThread(CAudioFlag* piRunFlag, CAudioWorkerEvent& hEvent, PTP_WORK& pWork)
{
    *piRunFlag = 0;
    hEvent.Signal();
    CloseWorker(pWork);
    hEvent.Close();
}

void CAudioMonitor::CloseWorker(PTP_WORK& pWork)
{
    if (pWork == nullptr)
        return;
    if (!IsProcessEnding())
        WaitForThreadpoolWorkCallbacks(pWork, TRUE);
    CloseThreadpoolWork(pWork);
    pWork = nullptr;
}

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
