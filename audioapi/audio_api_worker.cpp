// The start and the stop that every worker of the module goes through.
#include "audioapi/audio_api_worker.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

PTP_WORK CAudioWorker::Start(PTP_WORK_CALLBACK pfnWorker, PVOID pContext, CAudioFlag* piRunFlag)
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

void CAudioWorker::Stop(CAudioFlag* piRunFlag, CAudioWorkerEvent& hEvent, PTP_WORK& pWork)
{
    *piRunFlag = 0;
    hEvent.Signal();
    Close(pWork);
    hEvent.Close();
}

void CAudioWorker::Close(PTP_WORK& pWork)
{
    if (pWork == nullptr)
        return;
    if (!IsProcessEnding())
        WaitForThreadpoolWorkCallbacks(pWork, TRUE);
    CloseThreadpoolWork(pWork);
    pWork = nullptr;
}
