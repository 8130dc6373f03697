// Kernel objects: counted by reference, named by handles, waited for under one lock that also knows who is busy.
#pragma once

#include <windows.h>

#include <pthread.h>

#include <deque>
#include <memory>
#include <mutex>
#include <time.h>

// A priority-inheriting mutex, so that a real-time thread never waits behind a descheduled ordinary one.
class CKernelMutex
{
public:
    CKernelMutex();
    CKernelMutex(const CKernelMutex&) = delete;
    CKernelMutex& operator=(const CKernelMutex&) = delete;
    void lock() { pthread_mutex_lock(&m_hMutex); }
    void unlock() { pthread_mutex_unlock(&m_hMutex); }
    pthread_mutex_t* Native() { return &m_hMutex; }

private:
    pthread_mutex_t m_hMutex{};
};
using CKernelLock = std::unique_lock<CKernelMutex>;

// The one lock of all objects' state, waiters and the pool. Lives to the end of the process: parked threads use it.
CKernelMutex& KernelMutex();

// A moment of the monotonic clock, or none at all.
class CKernelDeadline
{
public:
    explicit CKernelDeadline(DWORD dwMilliseconds); // INFINITE: never comes
    // That of a caller's time-out.
    static CKernelDeadline OfTimeout(DWORD dwMilliseconds);
    bool IsNever() const { return m_bNever; }
    const timespec* Native() const { return &m_stTime; }

private:
    explicit CKernelDeadline(long long iNanoseconds);

    bool m_bNever = false;
    timespec m_stTime{};
};

// What threads sleep on, under the kernel's lock.
class CKernelCondition
{
public:
    CKernelCondition();
    ~CKernelCondition() { pthread_cond_destroy(&m_hCondition); }
    CKernelCondition(const CKernelCondition&) = delete;
    CKernelCondition& operator=(const CKernelCondition&) = delete;
    // False when the deadline has come. Wakes without a cause are the caller's to expect.
    bool Wait(CKernelLock& oLock, const CKernelDeadline& oDeadline);
    void WakeOne() { pthread_cond_signal(&m_hCondition); }
    void WakeAll() { pthread_cond_broadcast(&m_hCondition); }

private:
    pthread_cond_t m_hCondition{};
};

// Whatever a HANDLE can name.
class CKernelObject
{
public:
    virtual ~CKernelObject() = default;
    // A handle of it was closed; whoever waits may still hold it. Without the kernel's lock.
    virtual void HandleClosed() {}
};

// One thread's wait for one object.
struct CKernelWaiter
{
    CKernelCondition oWake;
    bool bReleased = false;
    bool bPoolThread = false;
};

class CKernelEvent : public CKernelObject
{
public:
    CKernelEvent(bool bManualReset, bool bSignalled) : m_bManualReset(bManualReset), m_bSignalled(bSignalled) {}
    // Any thread, without the kernel's lock.
    void Set();
    void Reset();
    // WAIT_OBJECT_0 or WAIT_TIMEOUT. The caller holds a reference meanwhile.
    DWORD Wait(DWORD dwMilliseconds);

private:
    bool m_bManualReset = false;
    bool m_bSignalled = false;
    std::deque<CKernelWaiter*> m_oWaiters; // longest wait first
};

// Gives the object a handle of its own; a value once closed never comes again.
HANDLE OpenKernelHandle(std::shared_ptr<CKernelObject> pObject);
// Null for a handle that names nothing.
std::shared_ptr<CKernelObject> KernelObjectOf(HANDLE hObject);
// As KernelObjectOf, for one kind of object: sets ERROR_INVALID_HANDLE when it names none of that kind.
template <class T> std::shared_ptr<T> KernelObjectAs(HANDLE hObject)
{
    std::shared_ptr<T> pObject = std::dynamic_pointer_cast<T>(KernelObjectOf(hObject));
    if (pObject == nullptr)
        SetLastError(ERROR_INVALID_HANDLE);
    return pObject;
}
// Takes the handle away; whoever waits keeps the object. False, with the last error, for a handle that names nothing.
bool CloseKernelHandle(HANDLE hObject);

// The pool's share in idleness. A callback counts as busy from its submission to its return, but for its waits.
void AddBusyCallbacks(const CKernelLock& oLock, int iCount);
void MarkPoolThread(bool bInCallback); // the calling thread

// Around a wait for something of this system's own: a callback doesn't count as busy meanwhile.
class CKernelIdleScope
{
public:
    CKernelIdleScope();
    ~CKernelIdleScope();
    CKernelIdleScope(const CKernelIdleScope&) = delete;
    CKernelIdleScope& operator=(const CKernelIdleScope&) = delete;
};
