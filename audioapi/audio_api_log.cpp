// The log's calling side, which fills a queue, and its start and stop.
#include "audioapi/audio_api_log.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_monitor.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_settings.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"

#include <algorithm>
#include <exception>
#include <mutex>

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
    if (AUDIO_MISSING(m_hLOGEvent, AUDIO_NO_HANDLE))
        return;
    m_pLOGThreadWorker = CAudioMonitor::CreateMonitorThread(ProcessLOGWorkerThread, this, &m_iLOGThreadRun);
}

void CAudioLog::RecordItem(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                           INT64 iErrorCode, std::string_view strMessage, INT64 pObject) noexcept
{
    if (!IsRecorded(iLevel))
        return;
    Queue oSaveLog = MakeItem(strFunction, strFile, iLine, iLevel, iErrorCode, strMessage, pObject);
    if (oSaveLog.empty() && IsRecorded(AUDIO_LEVEL_ERROR))
        oSaveLog = MakeItem(__FUNCTION__, __FILE__, __LINE__, AUDIO_LEVEL_ERROR, AUDIO_NO_POINTER, "pSaveLog", 0);
    if (!oSaveLog.empty())
        PushItem(oSaveLog);
}

CAudioLog::Queue CAudioLog::MakeItem(std::string_view strFunction, std::string_view strFile, UINT32 iLine,
                                     UINT32 iLevel, INT64 iErrorCode, std::string_view strMessage,
                                     INT64 pObject) const noexcept
try
{
    Queue oSaveLog(1);
    CAudioLogItem& oItem = oSaveLog.front();
    GetLocalTime(&oItem.stTime);
    oItem.dwProcessID = m_dwProcessID;
    oItem.dwThreadID = GetCurrentThreadId();
    oItem.iLine = static_cast<INT32>(iLine);
    oItem.strFunction = strFunction;
    oItem.strFile = strFile.substr(strFile.find_last_of("\\/") + 1);
    oItem.iErrorCode = iErrorCode;
    oItem.strLevel = AUDIO_LOG_LEVEL_WORD[std::min<UINT32>(iLevel, AUDIO_LEVEL_FATA) - 1];
    oItem.strMessage = CAudioSTR::ToHexTag(pObject).append(strMessage);
    return oSaveLog;
}
catch (const std::exception&)
{
    return {};
}

// The worker takes the queue whole: one signal serves all items that follow the first.
void CAudioLog::PushItem(Queue& oItem) noexcept
{
    bool bFirst = false;
    {
        const std::lock_guard<CAudioLock> oGuard(m_oLogLock);
        bFirst = m_oLogQueue.empty();
        m_oLogQueue.splice(m_oLogQueue.end(), oItem);
    }
    if (bFirst)
        m_hLOGEvent.Signal(); // the stop closes it while the other workers still log
}

void CAudioLog::RecordEventItem(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                                INT64 iErrorCode, std::string_view strMessage, WORD dwEventType, DWORD dwEventID,
                                INT64 pObject) noexcept
{
    CAudioEvent* const pAudioEvent = m_pAudioEvent;
    if (pAudioEvent != nullptr && m_iEventLevel != 0)
        pAudioEvent->RecordItem(dwEventType, dwEventID, iErrorCode, strMessage, pObject);
    RecordItem(strFunction, strFile, iLine, iLevel, iErrorCode, strMessage, pObject);
}

void AudioLogFailure(const AudioLogSite& oSite, INT64 iErrorCode, const char* pText) noexcept
{
    CAudioLog::Instance()->RecordItem(oSite.pFunction, oSite.pFile, oSite.iLine, AUDIO_LEVEL_ERROR, iErrorCode, pText);
}
