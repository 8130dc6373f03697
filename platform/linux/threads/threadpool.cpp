// The default thread pool: every callback gets a thread at once, threads that are done wait for the next.
#include "base/failure.h"
#include "platform/control/machine.h"
#include "threads/kernel.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <list>
#include <new>
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
    // Its place among the submitted while it isn't there, had beforehand: a submission doesn't run out of memory.
    std::list<std::shared_ptr<_TP_WORK>> m_oPlace{1};
};
using CWorkReference = std::shared_ptr<_TP_WORK>;

// One running callback.
struct _TP_CALLBACK_INSTANCE
{
    HMODULE m_hModule = nullptr; // freed behind it
};

namespace
{
struct CPool
{
    std::list<CWorkReference> oSubmitted;
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

// The first of the submitted, or the first that is pOnly; null when there is none. The caller holds the kernel's lock.
CWorkReference Take(CPool& oPool, const _TP_WORK* pOnly)
{
    for (auto itWork = oPool.oSubmitted.begin(); itWork != oPool.oSubmitted.end(); ++itWork)
    {
        if (pOnly != nullptr && itWork->get() != pOnly)
            continue;
        CWorkReference pWork = std::move(*itWork);
        pWork->m_oPlace.splice(pWork->m_oPlace.end(), oPool.oSubmitted, itWork);
        return pWork;
    }
    return nullptr;
}

// A callback that raised its thread takes it back: the pool is the whole process's, and the platform ends a process
// whose callback doesn't.
void CallBack(_TP_WORK& oWork) noexcept
{
    _TP_CALLBACK_INSTANCE oInstance;
    MarkPoolThread(true);
    oWork.m_pfnCallback(&oInstance, oWork.m_pContext, &oWork);
    MarkPoolThread(false);
    if (GetThreadPriority(GetCurrentThread()) != THREAD_PRIORITY_NORMAL)
    {
        fputs("A thread pool callback returned with a thread priority of its own\n", stderr);
        std::abort();
    }
    if (oInstance.m_hModule != nullptr)
        FreeLibrary(oInstance.m_hModule);
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
        CWorkReference pWork = Take(oPool, nullptr);
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
    try
    {
        const CWorkReference pWork = std::make_shared<_TP_WORK>(pfnwk, pv);
        pWork->m_pSelf = pWork;
        return pWork.get();
    }
    catch (const std::bad_alloc&)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

// Without a thread to be had the callback stays queued until one is free.
void SubmitThreadpoolWork(PTP_WORK pwk)
{
    CPool& oPool = Pool();
    CKernelLock oLock(KernelMutex());
    if (pwk->m_oPlace.empty()) // it waits there already
        pwk->m_oPlace.emplace_back();
    pwk->m_oPlace.front() = pwk->m_pSelf;
    oPool.oSubmitted.splice(oPool.oSubmitted.end(), pwk->m_oPlace, pwk->m_oPlace.begin());
    ++pwk->m_iOutstanding;
    AddBusyCallbacks(oLock, 1);
    if (IsToldToFail("SubmitThreadpoolWork", false)) // no thread comes, as while the platform loads or frees a module
        return;
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
    catch (const std::exception&)
    {
    }
}

void WaitForThreadpoolWorkCallbacks(PTP_WORK pwk, BOOL fCancelPendingCallbacks)
{
    CountCallThatMayWait();
    CPool& oPool = Pool();
    CKernelLock oLock(KernelMutex());
    const CWorkReference pWork = pwk->m_pSelf;
    if (fCancelPendingCallbacks)
    {
        while (Take(oPool, pWork.get()) != nullptr)
            Finish(oLock, *pWork, 1);
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

void FreeLibraryWhenCallbackReturns(PTP_CALLBACK_INSTANCE pci, HMODULE mod)
{
    pci->m_hModule = mod;
}

size_t machine::LiveWork()
{
    return g_iLiveWork;
}
