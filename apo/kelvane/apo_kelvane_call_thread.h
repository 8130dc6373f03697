// A thread for calls that may not return: its owner waits for each within bounds, and never for the thread itself.
#pragma once

#include "apo/kelvane/apo_kelvane_device.h"

#include <windows.h>

#include <functional>
#include <memory>

// One call at a time, from one thread at a time. An owner that goes while a call is out leaves the thread behind: that
// keeps the call's memory and the module until the call has returned, and ends then.
class CKelvaneCallThread
{
public:
    CKelvaneCallThread() = default;
    ~CKelvaneCallThread();
    CKelvaneCallThread(const CKelvaneCallThread&) = delete;
    CKelvaneCallThread& operator=(const CKelvaneCallThread&) = delete;

    // Once, or again after ERROR_TIMEOUT. fEnd runs on the thread, behind its last call. 0; AUDIO_NO_HANDLE without a
    // thread; ERROR_TIMEOUT, and no thread, while one that was left behind is there still.
    DWORD Start(std::function<void()> fEnd);
    // The call's result; AUDIO_NO_HANDLE without a thread; ERROR_TIMEOUT when it doesn't return within so many
    // milliseconds, or at once while an earlier one is out. fCall owns what it uses; an exception gives
    // AUDIO_NO_OBJECT.
    HRESULT Run(std::function<HRESULT()> fCall, DWORD dwWait);
    // Whether a call hasn't returned, or the last one took DEVICE_CALL_WAIT and more.
    bool IsLate() const;

private:
    struct State;
    bool IsOut() const;
    static void CALLBACK ProcessCallThread(PTP_CALLBACK_INSTANCE pInstance, PVOID pContext, PTP_WORK);
    static void ProcessCalls(State& oState) noexcept;
    static void ProcessCall(State& oState) noexcept;
    bool HasEnded() const;
    bool LeaveBehind();

    std::shared_ptr<State> m_pState; // the thread's too
    PTP_WORK m_pWork = nullptr;
};
