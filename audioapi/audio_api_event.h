// The event reporter: puts a few chosen reports into the system's event log, on a worker of its own.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_lock.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <list>
#include <string>
#include <string_view>

struct CAudioEventItem
{
    WORD dwEventType = 0; // EVENTLOG_..._TYPE
    DWORD dwEventID = 0;
    std::string strMessage;
};

class CAudioEvent
{
public:
    CAudioEvent() = default;
    // Stops the worker. What is still queued isn't reported.
    ~CAudioEvent();
    CAudioEvent(const CAudioEvent&) = delete;
    CAudioEvent& operator=(const CAudioEvent&) = delete;

    // strSourceName is the module's base name. Called once.
    void Initialize(const std::string& strSourceName);

    // Queues one report. The code, if not 0, and the object, if not 0, follow the message, and the whole is cut to its
    // first 64 characters. Any thread; never waits for the event log. Throws nothing.
    void RecordItem(WORD dwEventType, DWORD dwEventID, INT64 iErrorCode, std::string_view strMessage,
                    INT64 pObject = 0) noexcept;

private:
    void RegisterZvAudoEventSource(const std::string& strSourceName);
    void CreatEventThread();
    static void CALLBACK ProcessEventWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK);
    void ReportBatch();
    std::list<CAudioEventItem> TakeItem() noexcept;

    HANDLE m_hEventSource = nullptr; // set before the worker's start
    CAudioLock m_oEventLock;         // guards m_oEventQueue
    std::list<CAudioEventItem> m_oEventQueue;
    PTP_WORK m_pEventThreadWorker = nullptr;
    CAudioWorkerEvent m_hEvent;
    CAudioFlag m_iEventThreadRun{0};
};
