// The log's calling side, which fills a queue.
#include "audioapi/audio_api_log.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"

#include <algorithm>
#include <mutex>

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

void AudioLogFailure(const AudioLogSite& oSite, INT64 iErrorCode, const char* pText) noexcept
{
    CAudioLog::Instance()->RecordItem(oSite.pFunction, oSite.pFile, oSite.iLine, AUDIO_LEVEL_ERROR, iErrorCode, pText);
}
