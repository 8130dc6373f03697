// The embedded controller's operations: their words checked, their calls handed to the thread that may wait.
#include "apo/kelvane/apo_kelvane_wmi.h"

#include "audioapi/audio_api_result.h"

#include <exception>
#include <functional>
#include <utility>

namespace
{

constexpr INT64 QUERY_WORD_LIMIT = 0x202; // a query word lies above it
constexpr INT64 SET_WORD_MIN = 1;
} // namespace

template <class Operation> HRESULT CKelvaneWMI::Call(Operation fOperation, const AudioLogSite& oSite)
{
    if (m_bStartDue)
        if (const DWORD dwResult = StartLate())
            return static_cast<HRESULT>(dwResult);
    const DWORD dwWait = m_oCallThread.IsLate() ? 0 : DEVICE_CALL_WAIT;
    const HRESULT hResult =
        m_oCallThread.Run([pMethod = m_pMethod, fOperation] { return fOperation(*pMethod); }, dwWait);
    if (hResult == ERROR_TIMEOUT && dwWait != 0)
        AudioLogFailure(oSite, hResult, m_pMethod->GetStep());
    return hResult;
}

DWORD CKelvaneWMI::Start()
{
    const DWORD dwResult = m_oCallThread.Start([pMethod = m_pMethod] { pMethod->Disconnect(); });
    m_bStartDue = dwResult == ERROR_TIMEOUT;
    return dwResult;
}

// The caller may be a processing thread: nobody waits for this connection.
DWORD CKelvaneWMI::StartLate()
{
    std::function<HRESULT()> fConnect = [pMethod = m_pMethod] { return pMethod->Connect(); };
    if (const DWORD dwResult = Start())
        return dwResult;
    m_oCallThread.Run(std::move(fConnect), 0);
    return 0;
}

HRESULT CKelvaneWMI::Initialize()
try
{
    m_pMethod = std::make_shared<CKelvaneWMIMethod>();
    if (const DWORD dwResult = Start())
        return static_cast<HRESULT>(dwResult);
    return Call([](CKelvaneWMIMethod& oMethod) { return oMethod.Connect(); }, AUDIO_LOG_SITE);
}
catch (const std::exception&)
{
    return AUDIO_NO_OBJECT;
}

HRESULT CKelvaneWMI::QueryTemperature(const INT64& ulCmd, INT32& iTemperature)
try
{
    if (ulCmd <= QUERY_WORD_LIMIT)
        return AUDIO_BAD_DATA;
    const auto pValue = std::make_shared<INT32>(); // an answer that comes too late has a place to go to
    const HRESULT hResult =
        Call([ulCmd, pValue](CKelvaneWMIMethod& oMethod) { return oMethod.QueryTemperature(ulCmd, *pValue); },
             AUDIO_LOG_SITE);
    if (hResult == 0)
        iTemperature = *pValue;
    return hResult;
}
catch (const std::exception&)
{
    return AUDIO_NO_OBJECT;
}

HRESULT CKelvaneWMI::SetECTemperature(const INT64& ulCmd)
try
{
    if (ulCmd < SET_WORD_MIN)
        return AUDIO_BAD_DATA;
    return Call([ulCmd](CKelvaneWMIMethod& oMethod) { return oMethod.SetECTemperature(ulCmd); }, AUDIO_LOG_SITE);
}
catch (const std::exception&)
{
    return AUDIO_NO_OBJECT;
}
