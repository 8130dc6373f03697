// The thread for calls that may not return: handing them over, and parting from a thread that is still out.
#include "apo/kelvane/apo_kelvane_call_thread.h"

#include "apo/base/apo_base_module.h"
#include "audioapi/audio_api_handle.h"
#include "audioapi/audio_api_lock.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_worker.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <utility>

namespace
{
using CClock = std::chrono::steady_clock; // as the waits' own

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
    CClock::time_point oCallTime; // when it was handed over
    bool bLate = false;           // it took DEVICE_CALL_WAIT and more
    std::function<void()> fEnd;

    CAudioLock csEnd;             // guards what owner and thread part by
    std::shared_ptr<State> pSelf; // the thread's reference, until it begins or is taken back
    bool bEnded = false;
    bool bLeftBehind = false;
    HMODULE hModule = nullptr; // this one, held for a thread that was left behind

    // The thread's reference, for the first who asks: the thread that begins, or the owner who takes it back.
    std::shared_ptr<State> TakeSelf()
    {
        const std::lock_guard<CAudioLock> oGuard(csEnd);
        return std::move(pSelf);
    }
};

CKelvaneCallThread::~CKelvaneCallThread()
{
    if (m_pWork == nullptr || CAudioWorker::IsProcessEnding())
        return;
    m_pState->iRunFlag = 0;
    SetEvent(m_pState->hCallEvent.get());
    const bool bNeverBegun = m_pState->TakeSelf() != nullptr;
    if (bNeverBegun || HasEnded() || !LeaveBehind())
        CAudioWorker::Close(m_pWork);
    else
        CloseThreadpoolWork(m_pWork);
}

// Whether the thread comes to its end in time: not while a call is out.
bool CKelvaneCallThread::HasEnded() const
{
    return !IsOut() && WaitForSingleObject(m_pState->hEndEvent.get(), DEVICE_CALL_WAIT) == WAIT_OBJECT_0;
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
    if (AUDIO_MISSING(m_pState->hCallEvent, AUDIO_NO_HANDLE) || AUDIO_MISSING(m_pState->hDoneEvent, AUDIO_NO_HANDLE) ||
        AUDIO_MISSING(m_pState->hEndEvent, AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    m_pState->fEnd = std::move(fEnd);
    m_pState->pSelf = m_pState;
    m_pWork = CAudioWorker::Start(ProcessCallThread, m_pState.get(), &m_pState->iRunFlag);
    if (m_pWork != nullptr)
        return 0;
    m_pState->pSelf.reset();
    return AUDIO_NO_HANDLE;
}

bool CKelvaneCallThread::IsOut() const
{
    return m_pWork != nullptr && WaitForSingleObject(m_pState->hDoneEvent.get(), 0) != WAIT_OBJECT_0;
}

bool CKelvaneCallThread::IsLate() const
{
    return IsOut() || (m_pWork != nullptr && m_pState->bLate);
}

HRESULT CKelvaneCallThread::Run(std::function<HRESULT()> fCall, DWORD dwWait)
{
    if (m_pWork == nullptr)
        return AUDIO_NO_HANDLE;
    if (IsOut())
        return ERROR_TIMEOUT;
    m_pState->fCall = std::move(fCall);
    m_pState->oCallTime = CClock::now();
    ResetEvent(m_pState->hDoneEvent.get());
    SetEvent(m_pState->hCallEvent.get());
    const DWORD dwResult = WaitForSingleObject(m_pState->hDoneEvent.get(), dwWait);
    return dwResult == WAIT_OBJECT_0 ? m_pState->hResult : ERROR_TIMEOUT;
}

void CALLBACK CKelvaneCallThread::ProcessCallThread(PTP_CALLBACK_INSTANCE pInstance, PVOID pContext, PTP_WORK)
{
    const std::shared_ptr<State> pState = static_cast<State*>(pContext)->TakeSelf();
    if (pState == nullptr)
        return;
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

// Until the run flag is 0, and then at most the call that was handed over before.
void CKelvaneCallThread::ProcessCalls(State& oState) noexcept
{
    do
    {
        if (WaitForSingleObject(oState.hCallEvent.get(), INFINITE) != WAIT_OBJECT_0)
            Sleep(1);
        else if (oState.fCall != nullptr)
            ProcessCall(oState);
    } while (oState.iRunFlag == 1);
    oState.fCall = nullptr;
    oState.fEnd();
    oState.fEnd = nullptr;
}

void CKelvaneCallThread::ProcessCall(State& oState) noexcept
{
    try
    {
        oState.hResult = oState.fCall();
    }
    catch (...)
    {
        oState.hResult = AUDIO_NO_OBJECT;
    }
    oState.fCall = nullptr;
    oState.bLate = CClock::now() - oState.oCallTime >= std::chrono::milliseconds(DEVICE_CALL_WAIT);
    SetEvent(oState.hDoneEvent.get());
}
