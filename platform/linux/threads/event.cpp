// Events under the platform's names.
#include "base/failure.h"
#include "threads/kernel.h"

#include <map>
#include <string>

namespace
{
using CEventNames = std::map<std::wstring, std::weak_ptr<CKernelEvent>>;

struct CNamedEvents
{
    std::mutex oMutex;
    CEventNames oNames;
};

CNamedEvents& NamedEvents()
{
    static CNamedEvents* const pEvents = new CNamedEvents;
    return *pEvents;
}

// Names whose event is gone leave with the next creation, so the table doesn't grow.
std::shared_ptr<CKernelEvent> FindNamed(CEventNames& oNames, const std::wstring& strName)
{
    for (auto itName = oNames.begin(); itName != oNames.end();)
        itName = itName->second.expired() ? oNames.erase(itName) : std::next(itName);
    const auto itFound = oNames.find(strName);
    return itFound == oNames.end() ? nullptr : itFound->second.lock();
}
} // namespace

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL bManualReset, BOOL bInitialState, LPCWSTR lpName)
{
    if (IsToldToFail("CreateEventW"))
        return nullptr;
    SetLastError(ERROR_SUCCESS);
    if (lpName == nullptr || lpName[0] == 0)
        return OpenKernelHandle(std::make_shared<CKernelEvent>(bManualReset != FALSE, bInitialState != FALSE));

    CNamedEvents& oEvents = NamedEvents();
    const std::lock_guard<std::mutex> oLock(oEvents.oMutex);
    const std::wstring strName = lpName;
    std::shared_ptr<CKernelEvent> pEvent = FindNamed(oEvents.oNames, strName);
    if (pEvent != nullptr)
    {
        SetLastError(ERROR_ALREADY_EXISTS);
    }
    else
    {
        pEvent = std::make_shared<CKernelEvent>(bManualReset != FALSE, bInitialState != FALSE);
        oEvents.oNames[strName] = pEvent;
    }
    return OpenKernelHandle(std::move(pEvent));
}

HANDLE OpenEventW(DWORD, BOOL, LPCWSTR lpName)
{
    if (IsToldToFail("OpenEventW"))
        return nullptr;
    if (lpName == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    CNamedEvents& oEvents = NamedEvents();
    const std::lock_guard<std::mutex> oLock(oEvents.oMutex);
    std::shared_ptr<CKernelEvent> pEvent = FindNamed(oEvents.oNames, lpName);
    if (pEvent == nullptr)
    {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    return OpenKernelHandle(std::move(pEvent));
}

BOOL SetEvent(HANDLE hEvent)
{
    if (IsToldToFail("SetEvent", false))
        return FALSE;
    const std::shared_ptr<CKernelEvent> pEvent = KernelObjectAs<CKernelEvent>(hEvent);
    if (pEvent == nullptr)
        return FALSE;
    pEvent->Set();
    return TRUE;
}

BOOL ResetEvent(HANDLE hEvent)
{
    const std::shared_ptr<CKernelEvent> pEvent = KernelObjectAs<CKernelEvent>(hEvent);
    if (pEvent == nullptr)
        return FALSE;
    pEvent->Reset();
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds)
{
    if (IsToldToFail("WaitForSingleObject"))
        return WAIT_FAILED;
    const std::shared_ptr<CKernelEvent> pEvent = KernelObjectAs<CKernelEvent>(hHandle);
    return pEvent == nullptr ? WAIT_FAILED : pEvent->Wait(dwMilliseconds);
}

BOOL CloseHandle(HANDLE hObject)
{
    return CloseKernelHandle(hObject) ? TRUE : FALSE;
}
