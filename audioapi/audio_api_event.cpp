// The event reporter: puts a few chosen reports into the system's event log, on a worker of its own.
#include "audioapi/audio_api_event.h"

#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_queue.h"
#include "audioapi/audio_api_string.h"

#include <exception>
#include <mutex>
#include <new>

namespace
{
constexpr size_t MESSAGE_LEN_MAX = 64; // characters
}

CAudioEvent::~CAudioEvent()
{
    CAudioMonitor::StopMonitorThread(&m_iEventThreadRun, m_hEvent, m_pEventThreadWorker);
    if (m_hEventSource != nullptr)
        DeregisterEventSource(m_hEventSource);
}

void CAudioEvent::Initialize(const std::string& strSourceName)
{
    m_dwProcessID = GetCurrentProcessId();
    RegisterZvAudoEventSource(strSourceName);
    CreatEventThread();
}

void CAudioEvent::RegisterZvAudoEventSource(const std::string& strSourceName)
{
    m_hEventSource = RegisterEventSourceA(nullptr, strSourceName.c_str());
    AUDIO_MISSING(m_hEventSource, GetLastError());
}

void CAudioEvent::CreatEventThread()
{
    m_hEvent.Create();
    if (AUDIO_MISSING(m_hEvent, 6))
        return;
    m_pEventThreadWorker = CAudioMonitor::CreateMonitorThread(ProcessEventWorkerThread, this, &m_iEventThreadRun);
}

void CAudioEvent::RecordItem(const WORD& dwEventType, const DWORD& dwEventID, const INT64& iErrorCode,
                             const std::string& strMessage, INT64 pObject) noexcept
try
{
    std::unique_ptr<CAudioEventItem> pSaveEvent(new (std::nothrow) CAudioEventItem);
    if (AUDIO_MISSING(pSaveEvent, 87))
        return;
    pSaveEvent->dwEventType = dwEventType;
    pSaveEvent->dwEventID = dwEventID;
    pSaveEvent->strMessage = strMessage;
    if (iErrorCode != 0)
        pSaveEvent->strMessage += "[E" + std::to_string(iErrorCode) + "]";
    pSaveEvent->strMessage += CAudioSTR::ToHexTag(pObject);
    if (pSaveEvent->strMessage.size() > MESSAGE_LEN_MAX)
        pSaveEvent->strMessage.resize(MESSAGE_LEN_MAX);
    {
        const std::lock_guard<CAudioLock> oGuard(m_oEventLock);
        m_oEventQueue.push_back(std::move(pSaveEvent));
    }
    if (m_hEvent != nullptr)
        SetEvent(m_hEvent);
}
catch (const std::exception&)
{
    // Without memory for its text the report is lost.
}

void CALLBACK CAudioEvent::ProcessEventWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioEvent*>(pContext);
    if (AUDIO_MISSING(pThis, 87) || AUDIO_MISSING(pThis->m_hEvent, 6))
        return;
    RunQueueWorker(pThis->m_iEventThreadRun, pThis->m_hEvent, [pThis] { pThis->ReportBatch(); });
}

std::unique_ptr<CAudioEventItem> CAudioEvent::TakeItem()
{
    const std::lock_guard<CAudioLock> oGuard(m_oEventLock);
    return TakeFront(m_oEventQueue);
}

// Without an event source one item goes per wake: its loss was logged at the start.
void CAudioEvent::ReportBatch()
{
    CAudioEvent* const pThis = this; // the name that the failure line carries
    while (m_iEventThreadRun == 1)
    {
        const std::unique_ptr<CAudioEventItem> pItem = TakeItem();
        if (pItem == nullptr || m_hEventSource == nullptr)
            return;
        LPCSTR lpEventbuffer = pItem->strMessage.empty() ? nullptr : pItem->strMessage.c_str();
        AUDIO_CHECK_WIN(ReportEventA(pThis->m_hEventSource, pItem->dwEventType, 0, pItem->dwEventID, nullptr, 1, 0,
                                     &lpEventbuffer, nullptr));
    }
}
