// The thread for calls that may not return: handing them over, and parting from a thread that is still out.
#include "apo/kelvane/apo_kelvane_call_thread.h"

#include "apo/base/apo_base_module.h"
#include "audioapi/audio_api_handle.h"
#include "audioapi/audio_api_lock.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_monitor.h"

#include <atomic>
#include <mutex>
#include <utility>

namespace
{
constexpr DWORD NO_HANDLE = 6;
constexpr HRESULT NO_OBJECT = 12;

std::atomic<int> g_iLeftBehind{0}; // threads without an owner
} // namespace

struct CKelvaneCallThread::State
{
    CAudioHandle hCallEvent{CreateEventW(nullptr, FALSE, FALSE, nullptr)}; // a call, or the end
    CAudioHandle hDoneEvent{CreateEventW(nullptr, TRUE, TRUE, nullptr)};   // no call is out
    CAudioHandle hEndEvent{CreateEventW(nullptr, TRUE, FALSE, nullptr)};   // the thread is done
    CAudioFlag iRunFlag{0};
    std::function<HRESULT()> fCall; // the thread's while the call is out
    HRESULT hResult = 0;
    std::function<void()> fEnd;
    std::shared_ptr<State> pSelf; // the thread's reference, until it has begun

    CAudioLock csEnd; // guards what owner and thread part by
    bool bEnded = false;
    bool bLeftBehind = false;
    HMODULE hModule = nullptr; // this one, held for a thread that was left behind
};

CKelvaneCallThread::~CKelvaneCallThread()
{
    if (m_pWork == nullptr || CAudioMonitor::IsProcessEnding())
        return;
    const bool bOut = IsOut();
    m_pState->iRunFlag = 0;
    SetEvent(m_pState->hCallEvent.get());
    const bool bEnded = !bOut && WaitForSingleObject(m_pState->hEndEvent.get(), DEVICE_CALL_WAIT) == WAIT_OBJECT_0;
    if (bEnded || !LeaveBehind())
        CAudioMonitor::CloseWorker(m_pWork);
    else
        CloseThreadpoolWork(m_pWork);
}

// False when the thread has come to its end meanwhile.
bool CKelvaneCallThread::LeaveBehind()
{
    const std::lock_guard<CAudioLock> oGuard(m_pState->csEnd);
    if (m_pState->bEnded)
        return false;
    m_pState->bLeftBehind = true;
    ++g_iLeftBehind;
    ++g_lObjectCount;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCSTR>(&g_iLeftBehind),
                       &m_pState->hModule);
    return true;
}

DWORD CKelvaneCallThread::Start(std::function<void()> fEnd)
{
    if (g_iLeftBehind != 0)
        return ERROR_TIMEOUT;
    m_pState = std::make_shared<State>();
    if (AUDIO_MISSING(m_pState->hCallEvent, NO_HANDLE) || AUDIO_MISSING(m_pState->hDoneEvent, NO_HANDLE) ||
        AUDIO_MISSING(m_pState->hEndEvent, NO_HANDLE))
        return NO_HANDLE;
    m_pState->fEnd = std::move(fEnd);
    m_pState->pSelf = m_pState;
    m_pWork = CAudioMonitor::CreateMonitorThread(ProcessCallThread, m_pState.get(), &m_pState->iRunFlag);
    if (m_pWork != nullptr)
        return 0;
    m_pState->pSelf.reset();
    return NO_HANDLE;
}

bool CKelvaneCallThread::IsOut() const
{
    return m_pWork != nullptr && WaitForSingleObject(m_pState->hDoneEvent.get(), 0) != WAIT_OBJECT_0;
}

HRESULT CKelvaneCallThread::Run(std::function<HRESULT()> fCall)
{
    if (m_pWork == nullptr)
        return NO_HANDLE;
    if (IsOut())
        return ERROR_TIMEOUT;
    m_pState->fCall = std::move(fCall);
    ResetEvent(m_pState->hDoneEvent.get());
    SetEvent(m_pState->hCallEvent.get());
    const DWORD dwWait = WaitForSingleObject(m_pState->hDoneEvent.get(), DEVICE_CALL_WAIT);
    return dwWait == WAIT_OBJECT_0 ? m_pState->hResult : ERROR_TIMEOUT;
}

void CALLBACK CKelvaneCallThread::ProcessCallThread(PTP_CALLBACK_INSTANCE pInstance, PVOID pContext, PTP_WORK)
{
    const std::shared_ptr<State> pState = std::move(static_cast<State*>(pContext)->pSelf);
    ProcessCalls(*pState);
    {
        const std::lock_guard<CAudioLock> oGuard(pState->csEnd);
        pState->bEnded = true;
    }
    SetEvent(pState->hEndEvent.get());
    if (!pState->bLeftBehind)
        return;
    --g_iLeftBehind;
    --g_lObjectCount;
    if (pState->hModule != nullptr)
        FreeLibraryWhenCallbackReturns(pInstance, pState->hModule);
}

void CKelvaneCallThread::ProcessCalls(State& oState) noexcept
{
    for (;;)
    {
        if (WaitForSingleObject(oState.hCallEvent.get(), INFINITE) != WAIT_OBJECT_0)
        {
            Sleep(1);
            continue;
        }
        if (oState.iRunFlag == 0)
            break;
        try
        {
            oState.hResult = oState.fCall();
        }
        catch (...)
        {
            oState.hResult = NO_OBJECT;
        }
        oState.fCall = nullptr;
        SetEvent(oState.hDoneEvent.get());
    }
    oState.fCall = nullptr;
    oState.fEnd();
    oState.fEnd = nullptr;
}
