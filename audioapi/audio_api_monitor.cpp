// The start and the stop that every worker of the module goes through.
#include "audioapi/audio_api_monitor.h"

#include "audioapi/audio_api_log.h"

PTP_WORK CAudioMonitor::CreateMonitorThread(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, CAudioFlag* piRunFlag)
{
    *piRunFlag = 1;
    PTP_WORK pWork = CreateThreadpoolWork(pfnWorker, pContext, nullptr);
    if (pWork == nullptr)
    {
        *piRunFlag = 0;
        AUDIOLOG_ERROR(6, "Create Thread failed!");
        return nullptr;
    }
    SubmitThreadpoolWork(pWork);
    return pWork;
}

void CAudioMonitor::StopMonitorThread(CAudioFlag* piRunFlag, CAudioWorkerEvent& hEvent, PTP_WORK& pWork)
{
    *piRunFlag = 0;
    hEvent.Signal();
    if (pWork != nullptr)
    {
        WaitForThreadpoolWorkCallbacks(pWork, FALSE);
        CloseThreadpoolWork(pWork);
        pWork = nullptr;
    }
    hEvent.Close();
}
