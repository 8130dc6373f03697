// The log's start and stop, and what it asks of the folder's keeper and the event reporter, which report through it.
#include "audioapi/audio_api_log.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_dir.h"
#include "audioapi/audio_api_event.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_settings.h"
#include "audioapi/audio_api_system.h"
#include "audioapi/audio_api_worker.h"

CAudioLog::CAudioLog() = default;

CAudioLog::~CAudioLog()
{
    CAudioWorker::Stop(&m_iLOGThreadRun, m_hLOGEvent, m_pLOGThreadWorker);
    CAudioWorker::Stop(&m_iDebugThreadRun, m_hRegistEvent, m_pDebugThreadWorker);
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
    m_pDebugThreadWorker = CAudioWorker::Start(ProcessDebugWorkerThread, this, &m_iDebugThreadRun);
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
    m_pLOGThreadWorker = CAudioWorker::Start(ProcessLOGWorkerThread, this, &m_iLOGThreadRun);
}

bool CAudioLog::HasFolder() const
{
    const CAudioDir* const pAudioDir = m_pAudioDir;
    return pAudioDir != nullptr && pAudioDir->Exists();
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
