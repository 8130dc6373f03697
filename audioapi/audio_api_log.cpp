// The log's calling side, which fills a queue, and its start and stop.
#include "audioapi/audio_api_log.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_settings.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <new>

CAudioLog::~CAudioLog()
{
    CAudioMonitor::StopMonitorThread(&m_iLOGThreadRun, m_hLOGEvent, m_pLOGThreadWorker);
    CAudioMonitor::StopMonitorThread(&m_iDebugThreadRun, m_hRegistEvent, m_pDebugThreadWorker);
    // While the queue is there, for their workers log; the folder's keeper last, for each line asks it.
    m_pAudioEvent.Reset();
    m_pAudioDir.Reset();
}

void CAudioLog::Initialize(HMODULE hModule)
{
    // The names before the folder's keeper, which tells the callers that all of it is there.
    m_dwProcessID = GetCurrentProcessId();
    m_strModuleName = CAudioSYS::GetModuleBaseName(hModule);
    m_strLogPath = CAudioSYS::GetDiagnosticsPath(m_strModuleName);
    m_pAudioDir.Make();
    CAudioEvent* const pAudioEvent = m_pAudioEvent.Make();
    ReadSettings();
    CreatLogThread();
    if (m_pAudioDir != nullptr)
        m_pAudioDir->Initialize(m_strModuleName, AUDIO_LOG_SUFFIX, m_iDebugNum);
    m_pDebugThreadWorker = CAudioMonitor::CreateMonitorThread(ProcessDebugWorkerThread, this, &m_iDebugThreadRun);
    if (pAudioEvent != nullptr)
        pAudioEvent->Initialize(m_strModuleName);
}

void CAudioLog::ReadSettings()
{
    m_iDebugLevel = CAudioSettings::ReadNumber(AUDIO_DEBUG_PATH, AUDIO_DEBUG_LEVEL, 0);
    m_iDebugSize = CAudioSettings::ReadMegabytes(AUDIO_DEBUG_PATH, AUDIO_DEBUG_SIZE, DEFAULT_DEBUG_SIZE);
    m_iDebugNum = CAudioSettings::ReadCount(AUDIO_DEBUG_PATH, AUDIO_DEBUG_NUM, DEFAULT_DEBUG_NUM);
    m_iEventLevel = CAudioSettings::ReadNumber(AUDIO_DEBUG_PATH, AUDIO_EVENT_LEVEL, 1);
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
    bool bFirst = false; // the worker takes the queue whole: one signal serves all that follow
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
        pSaveLog->strLevel = AUDIO_LOG_LEVEL_WORD[std::min<UINT32>(iLevel, AUDIO_LEVEL_FATA) - 1];
        pSaveLog->strMessage = CAudioSTR::ToHexTag(pObject).append(strMessage);
        const std::lock_guard<CAudioLock> oGuard(m_oLogLock);
        m_oLogQueue.push_back(std::move(pSaveLog));
        bFirst = m_oLogQueue.size() == 1;
    }
    catch (const std::exception&)
    {
        return false;
    }
    if (bFirst)
        m_hLOGEvent.Signal(); // the stop closes it while the other workers still log
    return true;
}

void CAudioLog::RecordEventItem(const std::string& strFunction, const std::string& strFile, const UINT32& iLine,
                                const UINT32& iLevel, const INT64& iErrorCode, const std::string& strMessage,
                                const WORD& dwEventType, const DWORD& dwEventID, INT64 pObject)
{
    CAudioEvent* const pAudioEvent = m_pAudioEvent;
    if (pAudioEvent != nullptr && m_iEventLevel != 0)
        pAudioEvent->RecordItem(dwEventType, dwEventID, iErrorCode, strMessage, pObject);
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
