// The log: every part reports failures and state changes through it, from any thread; a worker alone writes files.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_lock.h"
#include "audioapi/audio_api_published.h"
#include "audioapi/audio_api_singleton.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <cstdio>
#include <exception>
#include <list>
#include <memory>
#include <string>
#include <string_view>

class CAudioDir;
class CAudioEvent;

enum AudioLogLevel : UINT32
{
    AUDIO_LEVEL_TRACE = 1,
    AUDIO_LEVEL_DEBUG = 2,
    AUDIO_LEVEL_INFO = 3,
    AUDIO_LEVEL_WARN = 4,
    AUDIO_LEVEL_ERROR = 5,
    AUDIO_LEVEL_FATA = 6,
};

// Where a line was logged.
struct AudioLogSite
{
    const char* pFunction;
    const char* pFile;
    UINT32 iLine;
};
#define AUDIO_LOG_SITE (AudioLogSite{__FUNCTION__, __FILE__, static_cast<UINT32>(__LINE__)})

// One line on its way to the file, filled on the calling thread.
struct CAudioLogItem
{
    SYSTEMTIME stTime{};
    DWORD dwProcessID = 0;
    DWORD dwThreadID = 0;
    INT32 iLine = 0;
    INT64 iErrorCode = 0;
    std::string strLevel;
    std::string strFunction;
    std::string strFile;
    std::string strMessage;
};

// The file that a worker writes.
struct FileInfo
{
    std::string strFileName; // whole path
    UINT64 iSize = 0;        // bytes that this worker wrote under this name
};

// Writes nothing until the level is 1 to 6 and the log's folder exists. Usable before Initialize: each call returns at
// once.
class CAudioLog : public CAudioSingleton<CAudioLog>
{
public:
    // Reads the settings and starts the workers. hModule names the log's folder and files. Called once.
    void Initialize(HMODULE hModule);

    // Whether a line of this level would be kept. Any thread; one load for a level that is off.
    bool IsRecorded(UINT32 iLevel) const
    {
        const UINT32 iDebugLevel = m_iDebugLevel;
        return iDebugLevel >= AUDIO_LEVEL_TRACE && iDebugLevel <= AUDIO_LEVEL_FATA && iLevel >= iDebugLevel &&
               HasFolder();
    }

    // Whether a report would be kept, in the event log or as a line. Any thread.
    bool IsEventRecorded(UINT32 iLevel) const
    {
        return (m_iEventLevel != 0 && m_pAudioEvent != nullptr) || IsRecorded(iLevel);
    }

    // Queues one line, whatever its length. Any thread; never touches a file. Code 0 selects the short form; pObject,
    // if not 0, leads the message. A line without memory is lost.
    void RecordItem(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                    INT64 iErrorCode, std::string_view strMessage, INT64 pObject = 0) noexcept;

    // Puts a report into the event log, unless the setting turns events off, and queues its line. Any thread.
    void RecordEventItem(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                         INT64 iErrorCode, std::string_view strMessage, WORD dwEventType, DWORD dwEventID,
                         INT64 pObject = 0) noexcept;

private:
    friend class CAudioSingleton<CAudioLog>;
    using Queue = std::list<CAudioLogItem>; // empty, it holds no memory: the log can be made without any
    CAudioLog();
    // Stops the workers. What is still queued is lost.
    ~CAudioLog();

    // What the log worker writes with.
    struct Writer
    {
        FileInfo oFileInfo;
        FILE* pFile = nullptr;
        Queue oItems;   // taken, not yet written; empty before and after a batch but for a stop
        Queue oFailure; // the line of an episode without a file, which begins the file that ends it
    };

    // Whether the log's folder is known to exist. Any thread, two loads.
    bool HasFolder() const;
    // One item of this moment and thread, by itself. Empty when it or its text has no memory.
    Queue MakeItem(std::string_view strFunction, std::string_view strFile, UINT32 iLine, UINT32 iLevel,
                   INT64 iErrorCode, std::string_view strMessage, INT64 pObject) const noexcept;
    void PushItem(Queue& oItem) noexcept;

    void CreatLogThread();
    static void CALLBACK ProcessLOGWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK);
    void WriteBatch(Writer& oWriter) noexcept;
    bool WriteLine(Writer& oWriter, const CAudioLogItem& oItem) noexcept;
    bool TakeItems(Queue& oItems) noexcept;
    int GetFileInfo(Writer& oWriter) const;
    int HoldFailure(Writer& oWriter, const AudioLogSite& oSite, int iErrorCode, const char* pText) const noexcept;
    std::string GetLogFileName() const;

    static void CALLBACK ProcessDebugWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK);
    void ReadSettings();

    static constexpr UINT32 DEFAULT_DEBUG_SIZE = 20480000; // bytes
    static constexpr UINT32 DEFAULT_DEBUG_NUM = 200;

    CAudioPublished<CAudioDir> m_pAudioDir;
    CAudioPublished<CAudioEvent> m_pAudioEvent;
    DWORD m_dwProcessID = 0;
    std::string m_strLogPath;
    std::string m_strModuleName;
    CAudioRelaxed<UINT32> m_iDebugLevel{0};
    CAudioRelaxed<UINT32> m_iEventLevel{1};
    CAudioRelaxed<UINT32> m_iDebugSize{DEFAULT_DEBUG_SIZE}; // bytes
    CAudioRelaxed<UINT32> m_iDebugNum{DEFAULT_DEBUG_NUM};
    CAudioLock m_oLogLock; // guards m_oLogQueue
    Queue m_oLogQueue;
    PTP_WORK m_pDebugThreadWorker = nullptr;
    PTP_WORK m_pLOGThreadWorker = nullptr;
    CAudioWorkerEvent m_hLOGEvent;
    CAudioWorkerEvent m_hRegistEvent;
    CAudioFlag m_iLOGThreadRun{0};
    CAudioFlag m_iDebugThreadRun{0};
};

// Logs pText at ERROR with the code. The body of the check macros.
void AudioLogFailure(const AudioLogSite& oSite, INT64 iErrorCode, const char* pText) noexcept;

// A log statement throws nothing, whatever its text is built from, so it may stand in destructors and callbacks, and on
// the way back from a step that is done: out of memory costs the line. The text is built only when the level is on.
#define AUDIO_LOG_STATEMENT(bRecorded, record)                                                                         \
    do                                                                                                                 \
    {                                                                                                                  \
        if (CAudioLog::Instance()->bRecorded)                                                                          \
        {                                                                                                              \
            try                                                                                                        \
            {                                                                                                          \
                CAudioLog::Instance()->record;                                                                         \
            }                                                                                                          \
            catch (const std::exception&)                                                                              \
            {                                                                                                          \
            }                                                                                                          \
        }                                                                                                              \
    } while (false)

// A line of the place oSite: the caller's, in a function that reports for its callers.
#define AUDIO_LOG_AT(oSite, iLevel, iErrorCode, strText)                                                               \
    AUDIO_LOG_STATEMENT(IsRecorded(iLevel),                                                                            \
                        RecordItem((oSite).pFunction, (oSite).pFile, (oSite).iLine, iLevel, iErrorCode, strText))
#define AUDIO_LOG(iLevel, iErrorCode, strText) AUDIO_LOG_AT(AUDIO_LOG_SITE, iLevel, iErrorCode, strText)
#define AUDIOLOG_DEBUG(strText) AUDIO_LOG(AUDIO_LEVEL_DEBUG, 0, strText)
#define AUDIOLOG_INFO(strText) AUDIO_LOG(AUDIO_LEVEL_INFO, 0, strText)
#define AUDIOLOG_WARN(strText) AUDIO_LOG(AUDIO_LEVEL_WARN, 0, strText)
#define AUDIOLOG_ERROR(iErrorCode, strText) AUDIO_LOG(AUDIO_LEVEL_ERROR, iErrorCode, strText)

// Line and event log record in one: information, warning, error.
#define AUDIO_LOG_EVENT_AT(oSite, iLevel, iErrorCode, strText, dwEventType, dwEventID)                                 \
    AUDIO_LOG_STATEMENT(IsEventRecorded(iLevel), RecordEventItem((oSite).pFunction, (oSite).pFile, (oSite).iLine,      \
                                                                 iLevel, iErrorCode, strText, dwEventType, dwEventID))
#define AUDIOLOG_EVENT_INFO(strText)                                                                                   \
    AUDIO_LOG_EVENT_AT(AUDIO_LOG_SITE, AUDIO_LEVEL_INFO, 0, strText, EVENTLOG_INFORMATION_TYPE, 0x40020F01)
#define AUDIOLOG_EVENT_WARN(strText)                                                                                   \
    AUDIO_LOG_EVENT_AT(AUDIO_LOG_SITE, AUDIO_LEVEL_WARN, 0, strText, EVENTLOG_WARNING_TYPE, 0x80020F02)
#define AUDIOLOG_EVENT_ERROR(iErrorCode, strText)                                                                      \
    AUDIO_LOG_EVENT_AT(AUDIO_LOG_SITE, AUDIO_LEVEL_ERROR, iErrorCode, strText, EVENTLOG_ERROR_TYPE, 0xC0020F03)

template <class T> T AudioCheckResult(T tResult, const AudioLogSite& oSite, const char* pText) noexcept
{
    if (tResult != 0)
        AudioLogFailure(oSite, static_cast<INT64>(tResult), pText);
    return tResult;
}

inline bool AudioCheckCondition(bool bFailed, const AudioLogSite& oSite, INT64 iErrorCode, const char* pText) noexcept
{
    if (bFailed)
        AudioLogFailure(oSite, iErrorCode, pText);
    return bFailed;
}

// The code of the platform call that has just failed. One that fails without a code has failed all the same.
inline DWORD AudioLastError()
{
    const DWORD dwError = GetLastError();
    return dwError != 0 ? dwError : ERROR_GEN_FAILURE;
}

inline DWORD AudioCheckWin(BOOL bDone, const AudioLogSite& oSite, const char* pText) noexcept
{
    if (bDone)
        return 0;
    const DWORD dwError = AudioLastError();
    AudioLogFailure(oSite, dwError, pText);
    return dwError;
}

// Each evaluates once; a failure is logged at ERROR with the expression as the text.
// Yields the expression's result; any but 0 is a failure, and the code.
#define AUDIO_CHECK(expression) AudioCheckResult((expression), AUDIO_LOG_SITE, #expression)
// For platform calls that give a BOOL: yields 0 or the last error, which is the code.
#define AUDIO_CHECK_WIN(expression) AudioCheckWin((expression), AUDIO_LOG_SITE, #expression)
// Yields whether the condition holds, which is the failure.
#define AUDIO_FAIL_IF(condition, iErrorCode) AudioCheckCondition((condition), AUDIO_LOG_SITE, iErrorCode, #condition)
// Yields whether the handle or pointer is null; its name is the text.
#define AUDIO_MISSING(pHandle, iErrorCode)                                                                             \
    AudioCheckCondition((pHandle) == nullptr, AUDIO_LOG_SITE, iErrorCode, #pHandle)
