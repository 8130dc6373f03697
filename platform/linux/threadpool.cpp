// The default thread pool: every callback gets a thread at once, threads that are done wait for the next.
#include "platform/linux/failure.h"
#include "platform/linux/kernel.h"
#include "platform/linux/machine.h"
#include "platform/linux/thread.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>

static std::atomic<size_t> g_iLiveWork{0};

struct _TP_WORK
{
    _TP_WORK(PTP_WORK_CALLBACK pfnCallback, PVOID pContext) : m_pfnCallback(pfnCallback), m_pContext(pContext)
    {
        ++g_iLiveWork;
    }
    ~_TP_WORK() { --g_iLiveWork; }
    _TP_WORK(const _TP_WORK&) = delete;
    _TP_WORK& operator=(const _TP_WORK&) = delete;

    PTP_WORK_CALLBACK m_pfnCallback = nullptr;
    PVOID m_pContext = nullptr;
    int m_iOutstanding = 0; // submitted and not returned
    CKernelCondition m_oDone;
    std::shared_ptr<_TP_WORK> m_pSelf; // the owner's reference, until CloseThreadpoolWork
};
using CWorkReference = std::shared_ptr<_TP_WORK>;

namespace
{
struct CPool
{
    std::deque<CWorkReference> oSubmitted;
    size_t iParkedThreads = 0;
    CKernelCondition oWork;
};

// Never destroyed: parked threads wait on it.
CPool& Pool()
{
    static CPool* const pPool = new CPool;
    return *pPool;
}

void Finish(const CKernelLock& oLock, _TP_WORK& oWork, int iCount)
{
    oWork.m_iOutstanding -= iCount;
    if (oWork.m_iOutstanding == 0)
        oWork.m_oDone.WakeAll();
    AddBusyCallbacks(oLock, -iCount);
}

// A callback may have raised its thread; the next one starts at the ordinary priority.
void CallBack(_TP_WORK& oWork) noexcept
{
    MarkPoolThread(true);
    oWork.m_pfnCallback(nullptr, oWork.m_pContext, &oWork);
    MarkPoolThread(false);
    RestoreThreadPriority();
}

void PoolThread() noexcept
{
    pthread_setname_np(pthread_self(), "threadpool");
    CPool& oPool = Pool();
    CKernelLock oLock(KernelMutex());
    for (;;)
    {
        while (oPool.oSubmitted.empty())
        {
            ++oPool.iParkedThreads;
            oPool.oWork.Wait(oLock, CKernelDeadline(INFINITE));
            --oPool.iParkedThreads;
        }
        CWorkReference pWork = std::move(oPool.oSubmitted.front());
        oPool.oSubmitted.pop_front();
        oLock.unlock();
        CallBack(*pWork);
        oLock.lock();
        Finish(oLock, *pWork, 1);
        pWork.reset();
    }
}
} // namespace

PTP_WORK CreateThreadpoolWork(PTP_WORK_CALLBACK pfnwk, PVOID pv, PTP_CALLBACK_ENVIRON pcbe)
{
    if (IsToldToFail("CreateThreadpoolWork"))
        return nullptr;
    if (pfnwk == nullptr || pcbe != nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const CWorkReference pWork = std::make_shared<_TP_WORK>(pfnwk, pv);
    pWork->m_pSelf = pWork;
    return pWork.get();
}

// Without a thread to be had the callback stays queued until one is free.
void SubmitThreadpoolWork(PTP_WORK pwk)
{
    CPool& oPool = Pool();
    CKernelLock oLock(KernelMutex());
    oPool.oSubmitted.push_back(pwk->m_pSelf);
    ++pwk->m_iOutstanding;
    AddBusyCallbacks(oLock, 1);
    if (oPool.oSubmitted.size() <= oPool.iParkedThreads)
    {
        oPool.oWork.WakeOne();
        return;
    }
    oLock.unlock();
    try
    {
        std::thread(PoolThread).detach();
    }
    catch (const std::system_error&)
    {
    }
}

void WaitForThreadpoolWorkCallbacks(PTP_WORK pwk, BOOL fCancelPendingCallbacks)
{
    CPool& oPool = Pool();
    CKernelLock oLock(KernelMutex());
    const CWorkReference pWork = pwk->m_pSelf;
    if (fCancelPendingCallbacks)
    {
        const auto itFirst = std::remove(oPool.oSubmitted.begin(), oPool.oSubmitted.end(), pWork);
        const auto iCancelled = static_cast<int>(oPool.oSubmitted.end() - itFirst);
        oPool.oSubmitted.erase(itFirst, oPool.oSubmitted.end());
        Finish(oLock, *pWork, iCancelled);
    }
    while (pWork->m_iOutstanding > 0)
        pWork->m_oDone.Wait(oLock, CKernelDeadline(INFINITE));
}

void CloseThreadpoolWork(PTP_WORK pwk)
{
    CWorkReference pOwners; // goes after the lock
    const CKernelLock oLock(KernelMutex());
    pOwners = std::move(pwk->m_pSelf);
}

size_t machine::LiveWork()
{
    return g_iLiveWork;
}
