// The log: every part reports failures and state changes through it, from any thread; a worker alone writes files.
#pragma once

#include "audioapi/audio_api_atomic.h"

#include <windows.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

enum AudioLogLevel : UINT32
{
    AUDIO_LEVEL_TRACE = 1,
    AUDIO_LEVEL_DEBUG = 2,
    AUDIO_LEVEL_INFO = 3,
    AUDIO_LEVEL_WARN = 4,
    AUDIO_LEVEL_ERROR = 5,
    AUDIO_LEVEL_FATA = 6,
};

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

class CAudioLog
{
public:
    static CAudioLog* Instance();
    static void DeleteInstance();

    // Reads the settings and starts the workers. hModule names the log's folder and files.
    void Initialize(HMODULE hModule);

    // Whether a line of this level would be kept. Any thread, two loads.
    bool IsRecorded(UINT32 iLevel) const;

    // Queues one line. Any thread; never touches a file. Code 0 selects the short form; pObject, if not 0, leads the message.
    void RecordItem(const std::string& strFunction, const std::string& strFile, const UINT32& iLine, const UINT32& iLevel,
                    const INT64& iErrorCode, const std::string& strMessage, INT64 pObject = 0);

    // Reports to the event log, then queues the line.
    void RecordEventItem(const std::string& strFunction, const std::string& strFile, const UINT32& iLine,
                         const UINT32& iLevel, const INT64& iErrorCode, const std::string& strMessage,
                         const DWORD& dwEventType, const DWORD& dwEventID, INT64 pObject = 0);
};

// Where a line was logged.
struct AudioLogSite
{
    const char* pFunction;
    const char* pFile;
    UINT32 iLine;
};
#define AUDIO_LOG_SITE                                                                                                   \
    AudioLogSite { __FUNCTION__, __FILE__, static_cast<UINT32>(__LINE__) }

// Logs pText at ERROR with the code. The body of the check macros.
void AudioLogFailure(const AudioLogSite& oSite, INT64 iErrorCode, const char* pText);

// The text is built only when the level is on.
#define AUDIO_LOG(iLevel, iErrorCode, strText)                                                                           \
    do                                                                                                                   \
    {                                                                                                                    \
        if (CAudioLog::Instance()->IsRecorded(iLevel))                                                                   \
            CAudioLog::Instance()->RecordItem(__FUNCTION__, __FILE__, __LINE__, iLevel, iErrorCode, strText);            \
    } while (false)
#define AUDIOLOG_DEBUG(strText) AUDIO_LOG(AUDIO_LEVEL_DEBUG, 0, strText)
#define AUDIOLOG_INFO(strText) AUDIO_LOG(AUDIO_LEVEL_INFO, 0, strText)
#define AUDIOLOG_WARN(strText) AUDIO_LOG(AUDIO_LEVEL_WARN, 0, strText)
#define AUDIOLOG_ERROR(iErrorCode, strText) AUDIO_LOG(AUDIO_LEVEL_ERROR, iErrorCode, strText)

// Line and event log record in one: information, warning, error.
#define AUDIO_LOG_EVENT(iLevel, iErrorCode, strText, dwEventType, dwEventID)                                             \
    CAudioLog::Instance()->RecordEventItem(__FUNCTION__, __FILE__, __LINE__, iLevel, iErrorCode, strText, dwEventType,   \
                                           dwEventID)
#define AUDIOLOG_EVENT_INFO(strText) AUDIO_LOG_EVENT(AUDIO_LEVEL_INFO, 0, strText, 4, 0x40020F01)
#define AUDIOLOG_EVENT_WARN(strText) AUDIO_LOG_EVENT(AUDIO_LEVEL_WARN, 0, strText, 2, 0x80020F02)
#define AUDIOLOG_EVENT_ERROR(iErrorCode, strText)                                                                        \
    AUDIO_LOG_EVENT(AUDIO_LEVEL_ERROR, iErrorCode, strText, 1, 0xC0020F03)

template <class T> T AudioCheckResult(T tResult, const AudioLogSite& oSite, const char* pText)
{
    if (tResult != 0)
        AudioLogFailure(oSite, static_cast<INT64>(tResult), pText);
    return tResult;
}

inline bool AudioCheckCondition(bool bFailed, const AudioLogSite& oSite, INT64 iErrorCode, const char* pText)
{
    if (bFailed)
        AudioLogFailure(oSite, iErrorCode, pText);
    return bFailed;
}

inline DWORD AudioCheckWin(BOOL bDone, const AudioLogSite& oSite, const char* pText)
{
    if (bDone)
        return 0;
    const DWORD dwError = GetLastError();
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
#define AUDIO_MISSING(pHandle, iErrorCode) AudioCheckCondition((pHandle) == nullptr, AUDIO_LOG_SITE, iErrorCode, #pHandle)
