// The log's calling side, which fills a queue, and its start and stop.
#include "audioapi/audio_api_log.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <mutex>
#include <new>

namespace
{
constexpr UINT64 BYTES_PER_DEBUG_SIZE = 1000000; // the registry counts megabytes

// By level, from 1 on.
constexpr const char* LEVEL_WORDS[] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATA"};

// The number under AUDIO_DEBUG_PATH, or iMissing when it can't be read.
UINT32 ReadSetting(const char* pName, UINT32 iMissing)
{
    UINT32 iValue = iMissing;
    CAudioREG::ReadRegValue(AUDIO_DEBUG_PATH, pName, iValue);
    return iValue;
}
} // namespace

CAudioLog::~CAudioLog()
{
    CAudioMonitor::StopMonitorThread(&m_iLOGThreadRun, m_hLOGEvent, m_pLOGThreadWorker);
    CAudioMonitor::StopMonitorThread(&m_iDebugThreadRun, m_hRegistEvent, m_pDebugThreadWorker);
}

void CAudioLog::Initialize(HMODULE hModule)
{
    ReadSettings();
    m_dwProcessID = GetCurrentProcessId();
    m_strModuleName = CAudioSYS::GetModuleBaseName(hModule);
    m_strLogPath = CAudioSYS::GetDiagnosticsPath(m_strModuleName);
    CreatLogThread();
    m_pDebugThreadWorker = CAudioMonitor::CreateMonitorThread(ProcessDebugWorkerThread, this, &m_iDebugThreadRun);
}

void CAudioLog::ReadSettings()
{
    m_iDebugLevel = ReadSetting(AUDIO_DEBUG_LEVEL, 0);
    const UINT64 iDebugSize = ReadSetting(AUDIO_DEBUG_SIZE, 0) * BYTES_PER_DEBUG_SIZE;
    const UINT64 iLargestSize = std::numeric_limits<UINT32>::max(); // a larger limit would wrap round to a small one
    m_iDebugSize = iDebugSize == 0 ? DEFAULT_DEBUG_SIZE : static_cast<UINT32>(std::min(iDebugSize, iLargestSize));
    const UINT32 iDebugNum = ReadSetting(AUDIO_DEBUG_NUM, 0);
    m_iDebugNum = iDebugNum == 0 ? DEFAULT_DEBUG_NUM : iDebugNum;
    m_iEventLevel = ReadSetting(AUDIO_EVENT_LEVEL, 1);
}

void CAudioLog::CreatLogThread()
{
    m_hLOGEvent.Create();
    if (AUDIO_MISSING(m_hLOGEvent, 6))
        return;
    m_pLOGThreadWorker = CAudioMonitor::CreateMonitorThread(ProcessLOGWorkerThread, this, &m_iLOGThreadRun);
}

void CAudioLog::RecordItem(const std::string& strFunction, const std::string& strFile, const UINT32& iLine,
                           const UINT32& iLevel, const INT64& iErrorCode, const std::string& strMessage, INT64 pObject)
{
    if (!IsRecorded(iLevel))
        return;
    if (QueueItem(strFunction, strFile, iLine, iLevel, iErrorCode, strMessage, pObject))
        return;
    if (IsRecorded(AUDIO_LEVEL_ERROR))
        QueueItem(__FUNCTION__, __FILE__, __LINE__, AUDIO_LEVEL_ERROR, 87, "pSaveLog", 0);
}

bool CAudioLog::QueueItem(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                          INT64 iErrorCode, std::string_view strMessage, INT64 pObject) noexcept
{
    try
    {
        std::unique_ptr<CAudioLogItem> pSaveLog(new (std::nothrow) CAudioLogItem);
        if (pSaveLog == nullptr)
            return false;
        GetLocalTime(&pSaveLog->stTime);
        pSaveLog->dwProcessID = m_dwProcessID;
        pSaveLog->dwThreadID = GetCurrentThreadId();
        pSaveLog->iLine = static_cast<INT32>(iLine);
        pSaveLog->strFunction = strFunction;
        pSaveLog->strFile = strFile.substr(strFile.find_last_of("\\/") + 1);
        pSaveLog->iErrorCode = iErrorCode;
        pSaveLog->strLevel = LEVEL_WORDS[std::min<UINT32>(iLevel, AUDIO_LEVEL_FATA) - 1];
        pSaveLog->strMessage = CAudioSTR::ToHexTag(pObject).append(strMessage);
        const std::lock_guard<CAudioLock> oGuard(m_oLogLock);
        m_oLogQueue.push_back(std::move(pSaveLog));
    }
    catch (const std::exception&)
    {
        return false;
    }
    if (m_hLOGEvent != nullptr)
        SetEvent(m_hLOGEvent);
    return true;
}

void CAudioLog::RecordEventItem(const std::string& strFunction, const std::string& strFile, const UINT32& iLine,
                                const UINT32& iLevel, const INT64& iErrorCode, const std::string& strMessage,
                                const DWORD&, const DWORD&, INT64 pObject)
{
    RecordItem(strFunction, strFile, iLine, iLevel, iErrorCode, strMessage, pObject);
}

void AudioLogFailure(const AudioLogSite& oSite, INT64 iErrorCode, const char* pText)
{
    if (!CAudioLog::Instance()->IsRecorded(AUDIO_LEVEL_ERROR))
        return;
    try
    {
        CAudioLog::Instance()->RecordItem(oSite.pFunction, oSite.pFile, oSite.iLine, AUDIO_LEVEL_ERROR, iErrorCode,
                                          pText);
    }
    catch (const std::exception&)
    {
        // Without memory for its text the line is lost; the check that failed goes its way.
    }
}
