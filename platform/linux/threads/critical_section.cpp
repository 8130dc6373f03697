// Critical sections: recursive mutexes that lend the waiter's priority to the owner.
#include <windows.h>

#include <pthread.h>

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION), "the mutex lies inside the record");
static_assert(alignof(pthread_mutex_t) <= alignof(CRITICAL_SECTION), "the mutex lies inside the record");

static pthread_mutex_t* MutexOf(LPCRITICAL_SECTION pSection)
{
    return reinterpret_cast<pthread_mutex_t*>(pSection->Storage);
}

void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    pthread_mutexattr_t stAttributes;
    pthread_mutexattr_init(&stAttributes);
    pthread_mutexattr_settype(&stAttributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutexattr_setprotocol(&stAttributes, PTHREAD_PRIO_INHERIT);
    pthread_mutex_init(MutexOf(lpCriticalSection), &stAttributes);
    pthread_mutexattr_destroy(&stAttributes);
}

void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    pthread_mutex_lock(MutexOf(lpCriticalSection));
}

void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    pthread_mutex_unlock(MutexOf(lpCriticalSection));
}

void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection)
{
    pthread_mutex_destroy(MutexOf(lpCriticalSection));
}
