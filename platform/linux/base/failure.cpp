// Armed failures of system calls, and the count of those that may wait.
#include "base/failure.h"

#include "platform/control/machine.h"

#include <atomic>
#include <map>
#include <mutex>

namespace
{
struct CArmedFailure
{
    DWORD dwError = 0;
    int iTimes = 0;
    int iSkip = 0;
};

std::atomic<bool> g_bAnyArmed{false};
thread_local size_t t_iCallsThatMayWait = 0;

struct CArmedFailures
{
    std::mutex oMutex;
    std::map<std::string, CArmedFailure> oCalls;
};

CArmedFailures& ArmedFailures()
{
    static CArmedFailures* const pFailures = new CArmedFailures;
    return *pFailures;
}
} // namespace

void CountCallThatMayWait()
{
    ++t_iCallsThatMayWait;
}

size_t machine::CallsThatMayWait()
{
    return t_iCallsThatMayWait;
}

bool IsToldToFail(const char* pCall, bool bMayWait)
{
    if (bMayWait)
        CountCallThatMayWait();
    if (!g_bAnyArmed.load(std::memory_order_relaxed))
        return false;
    CArmedFailures& oFailures = ArmedFailures();
    const std::lock_guard<std::mutex> oLock(oFailures.oMutex);
    const auto itCall = oFailures.oCalls.find(pCall);
    if (itCall == oFailures.oCalls.end() || itCall->second.iTimes == 0)
        return false;
    CArmedFailure& oFailure = itCall->second;
    if (oFailure.iSkip > 0)
    {
        --oFailure.iSkip;
        return false;
    }
    if (oFailure.iTimes > 0)
        --oFailure.iTimes;
    SetLastError(oFailure.dwError);
    return true;
}

bool IsToldToFailWith(const char* pCall, LONG& lResult)
{
    if (!IsToldToFail(pCall))
        return false;
    lResult = static_cast<LONG>(GetLastError());
    return true;
}

void machine::FailNext(const std::string& strCall, DWORD dwError, int iTimes, int iSkip)
{
    CArmedFailures& oFailures = ArmedFailures();
    const std::lock_guard<std::mutex> oLock(oFailures.oMutex);
    oFailures.oCalls[strCall] = CArmedFailure{dwError, iTimes, iSkip};
    g_bAnyArmed = true;
}

void machine::ClearFailures()
{
    CArmedFailures& oFailures = ArmedFailures();
    const std::lock_guard<std::mutex> oLock(oFailures.oMutex);
    oFailures.oCalls.clear();
    g_bAnyArmed = false;
}
