// The event reporter: puts a few chosen reports into the system's event log, on a worker of its own.
#include "audioapi/audio_api_event.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_queue.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_worker.h"

#include <algorithm>
#include <exception>
#include <mutex>

namespace
{
constexpr size_t MESSAGE_LEN_MAX = 64; // characters
}

CAudioEvent::~CAudioEvent()
{
    CAudioWorker::Stop(&m_iEventThreadRun, m_hEvent, m_pEventThreadWorker);
    if (m_hEventSource != nullptr)
        DeregisterEventSource(m_hEventSource);
}

void CAudioEvent::Initialize(const std::string& strSourceName)
{
    RegisterZvAudoEventSource(strSourceName);
    CreatEventThread();
}

void CAudioEvent::RegisterZvAudoEventSource(const std::string& strSourceName)
{
    m_hEventSource = RegisterEventSourceA(nullptr, strSourceName.c_str());
    AUDIO_MISSING(m_hEventSource, AudioLastError());
}

void CAudioEvent::CreatEventThread()
{
    m_hEvent.Create();
    if (AUDIO_MISSING(m_hEvent, AUDIO_NO_HANDLE))
        return;
    m_pEventThreadWorker = CAudioWorker::Start(ProcessEventWorkerThread, this, &m_iEventThreadRun);
}

void CAudioEvent::RecordItem(WORD dwEventType, DWORD dwEventID, INT64 iErrorCode, std::string_view strMessage,
                             INT64 pObject) noexcept
try
{
    std::list<CAudioEventItem> oSaveEvent(1);
    CAudioEventItem& oItem = oSaveEvent.front();
    oItem.dwEventType = dwEventType;
    oItem.dwEventID = dwEventID;
    oItem.strMessage = strMessage;
    if (iErrorCode != 0)
        oItem.strMessage += std::string("[") + AUDIO_EVENT_MARK + std::to_string(iErrorCode) + "]";
    oItem.strMessage += CAudioSTR::ToHexTag(pObject);
    oItem.strMessage.resize(std::min(oItem.strMessage.size(), MESSAGE_LEN_MAX));
    {
        const std::lock_guard<CAudioLock> oGuard(m_oEventLock);
        m_oEventQueue.splice(m_oEventQueue.end(), oSaveEvent);
    }
    if (m_hEvent != nullptr)
        SetEvent(m_hEvent);
}
catch (const std::exception&)
{
    AudioLogFailure(AUDIO_LOG_SITE, AUDIO_NO_POINTER, "pSaveEvent"); // without memory the report is lost
}

void CALLBACK CAudioEvent::ProcessEventWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioEvent*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER) || AUDIO_MISSING(pThis->m_hEvent, AUDIO_NO_HANDLE))
        return;
    RunQueueWorker(pThis->m_iEventThreadRun, pThis->m_hEvent, [pThis] { pThis->ReportBatch(); });
}

std::list<CAudioEventItem> CAudioEvent::TakeItem() noexcept
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
        const std::list<CAudioEventItem> oTaken = TakeItem();
        if (oTaken.empty() || m_hEventSource == nullptr)
            return;
        const CAudioEventItem* const pItem = &oTaken.front();
        LPCSTR lpEventbuffer = pItem->strMessage.empty() ? nullptr : pItem->strMessage.c_str();
        AUDIO_CHECK_WIN(ReportEventA(pThis->m_hEventSource, pItem->dwEventType, 0, pItem->dwEventID, nullptr, 1, 0,
                                     &lpEventbuffer, nullptr));
    }
}
