// The event reporter: puts a few chosen reports into the system's event log, on a worker of its own.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_lock.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <deque>
#include <memory>
#include <string>

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
    void RecordItem(const WORD& dwEventType, const DWORD& dwEventID, const INT64& iErrorCode,
                    const std::string& strMessage, INT64 pObject = 0) noexcept;

private:
    void RegisterZvAudoEventSource(const std::string& strSourceName);
    void CreatEventThread();
    static void CALLBACK ProcessEventWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK);
    void ReportBatch();
    std::unique_ptr<CAudioEventItem> TakeItem();

    HANDLE m_hEventSource = nullptr; // set before the worker's start
    CAudioLock m_oEventLock;         // guards m_oEventQueue
    std::deque<std::unique_ptr<CAudioEventItem>> m_oEventQueue;
    DWORD m_dwProcessID = 0;
    PTP_WORK m_pEventThreadWorker = nullptr;
    CAudioWorkerEvent m_hEvent;
    CAudioFlag m_iEventThreadRun{0};
};
