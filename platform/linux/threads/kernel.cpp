// Kernel objects: the handle table, waiting and releasing, and the count of busy pool callbacks.
#include "threads/kernel.h"

#include "platform/control/machine.h"
#include "threads/timeout.h"

#include <algorithm>
#include <unordered_map>

namespace
{
struct CKernelState
{
    CKernelMutex oMutex;
    std::unordered_map<ULONG_PTR, std::shared_ptr<CKernelObject>> oObjects;
    ULONG_PTR iNextHandle = 4;
    int iBusyCallbacks = 0;
    CKernelCondition oIdle;
};

// Never destroyed: parked pool threads outlive the process's static objects.
CKernelState& State()
{
    static CKernelState* const pState = new CKernelState;
    return *pState;
}

thread_local bool t_bPoolThread = false;

ULONG_PTR ValueOf(HANDLE hObject)
{
    return reinterpret_cast<ULONG_PTR>(hObject);
}

// Counted here, by who releases, so that no moment lies between a signal and the count of whom it wakes.
void Release(const CKernelLock& oLock, CKernelWaiter& oWaiter)
{
    oWaiter.bReleased = true;
    if (oWaiter.bPoolThread)
        AddBusyCallbacks(oLock, 1);
    oWaiter.oWake.WakeOne();
}
} // namespace

CKernelMutex::CKernelMutex()
{
    pthread_mutexattr_t stAttributes;
    pthread_mutexattr_init(&stAttributes);
    pthread_mutexattr_setprotocol(&stAttributes, PTHREAD_PRIO_INHERIT);
    pthread_mutex_init(&m_hMutex, &stAttributes);
    pthread_mutexattr_destroy(&stAttributes);
}

CKernelMutex& KernelMutex()
{
    return State().oMutex;
}

CKernelDeadline::CKernelDeadline(long long iNanoseconds)
{
    clock_gettime(CLOCK_MONOTONIC, &m_stTime);
    iNanoseconds += m_stTime.tv_nsec;
    m_stTime.tv_sec += static_cast<time_t>(iNanoseconds / 1000000000);
    m_stTime.tv_nsec = static_cast<long>(iNanoseconds % 1000000000);
}

CKernelDeadline::CKernelDeadline(DWORD dwMilliseconds) : CKernelDeadline(dwMilliseconds * 1000000LL)
{
    m_bNever = dwMilliseconds == INFINITE;
}

CKernelDeadline CKernelDeadline::OfTimeout(DWORD dwMilliseconds)
{
    return dwMilliseconds == INFINITE ? CKernelDeadline(INFINITE) : CKernelDeadline(TimeoutNanoseconds(dwMilliseconds));
}

CKernelCondition::CKernelCondition()
{
    pthread_condattr_t stAttributes;
    pthread_condattr_init(&stAttributes);
    pthread_condattr_setclock(&stAttributes, CLOCK_MONOTONIC);
    pthread_cond_init(&m_hCondition, &stAttributes);
    pthread_condattr_destroy(&stAttributes);
}

bool CKernelCondition::Wait(CKernelLock& oLock, const CKernelDeadline& oDeadline)
{
    if (oDeadline.IsNever())
        return pthread_cond_wait(&m_hCondition, oLock.mutex()->Native()) == 0;
    return pthread_cond_timedwait(&m_hCondition, oLock.mutex()->Native(), oDeadline.Native()) == 0;
}

void CKernelEvent::Set()
{
    const CKernelLock oLock(KernelMutex());
    if (m_bManualReset)
    {
        m_bSignalled = true;
        for (CKernelWaiter* pWaiter : m_oWaiters)
            Release(oLock, *pWaiter);
        m_oWaiters.clear();
    }
    else if (m_oWaiters.empty())
    {
        m_bSignalled = true;
    }
    else
    {
        Release(oLock, *m_oWaiters.front());
        m_oWaiters.pop_front();
    }
}

void CKernelEvent::Reset()
{
    const CKernelLock oLock(KernelMutex());
    m_bSignalled = false;
}

DWORD CKernelEvent::Wait(DWORD dwMilliseconds)
{
    CKernelLock oLock(KernelMutex());
    if (m_bSignalled)
    {
        m_bSignalled = m_bManualReset;
        return WAIT_OBJECT_0;
    }
    if (dwMilliseconds == 0)
        return WAIT_TIMEOUT;

    const CKernelDeadline oDeadline = CKernelDeadline::OfTimeout(dwMilliseconds);
    CKernelWaiter oWaiter;
    oWaiter.bPoolThread = t_bPoolThread;
    m_oWaiters.push_back(&oWaiter);
    if (oWaiter.bPoolThread)
        AddBusyCallbacks(oLock, -1);
    while (!oWaiter.bReleased && oWaiter.oWake.Wait(oLock, oDeadline))
        continue;
    if (oWaiter.bReleased)
        return WAIT_OBJECT_0;

    m_oWaiters.erase(std::find(m_oWaiters.begin(), m_oWaiters.end(), &oWaiter));
    if (oWaiter.bPoolThread)
        AddBusyCallbacks(oLock, 1);
    CountExpiredTimeout(dwMilliseconds);
    return WAIT_TIMEOUT;
}

HANDLE OpenKernelHandle(std::shared_ptr<CKernelObject> pObject)
{
    CKernelState& oState = State();
    const CKernelLock oLock(oState.oMutex);
    const ULONG_PTR iHandle = oState.iNextHandle;
    oState.iNextHandle += 4;
    oState.oObjects.emplace(iHandle, std::move(pObject));
    return reinterpret_cast<HANDLE>(iHandle);
}

std::shared_ptr<CKernelObject> KernelObjectOf(HANDLE hObject)
{
    CKernelState& oState = State();
    const CKernelLock oLock(oState.oMutex);
    const auto itObject = oState.oObjects.find(ValueOf(hObject));
    return itObject == oState.oObjects.end() ? nullptr : itObject->second;
}

bool CloseKernelHandle(HANDLE hObject)
{
    CKernelState& oState = State();
    std::shared_ptr<CKernelObject> pClosed; // goes after the lock
    {
        const CKernelLock oLock(oState.oMutex);
        const auto itObject = oState.oObjects.find(ValueOf(hObject));
        if (itObject == oState.oObjects.end())
        {
            SetLastError(ERROR_INVALID_HANDLE);
            return false;
        }
        pClosed = std::move(itObject->second);
        oState.oObjects.erase(itObject);
    }
    pClosed->HandleClosed();
    return true;
}

void AddBusyCallbacks(const CKernelLock&, int iCount)
{
    CKernelState& oState = State();
    oState.iBusyCallbacks += iCount;
    if (oState.iBusyCallbacks == 0)
        oState.oIdle.WakeAll();
}

void MarkPoolThread(bool bInCallback)
{
    t_bPoolThread = bInCallback;
}

static void AddBusyThread(int iCount)
{
    if (t_bPoolThread)
        AddBusyCallbacks(CKernelLock(KernelMutex()), iCount);
}

CKernelIdleScope::CKernelIdleScope()
{
    AddBusyThread(-1);
}

CKernelIdleScope::~CKernelIdleScope()
{
    AddBusyThread(1);
}

bool machine::WaitUntilIdle(DWORD dwMilliseconds)
{
    CKernelState& oState = State();
    CKernelLock oLock(oState.oMutex);
    const CKernelDeadline oDeadline(dwMilliseconds);
    while (oState.iBusyCallbacks > 0)
        if (!oState.oIdle.Wait(oLock, oDeadline))
            return oState.iBusyCallbacks == 0;
    return true;
}

size_t machine::LiveHandles()
{
    const CKernelLock oLock(KernelMutex());
    return State().oObjects.size();
}
