// The log's two workers: one writes the queued lines into files, one follows the settings in the registry.
#include "audioapi/audio_api_log.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_queue.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_settings.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_time.h"

#include <algorithm>
#include <exception>
#include <mutex>

namespace
{
// As printf counts: less than 1 when nothing was written.
int PrintItem(FILE* pFile, const CAudioLogItem& oItem)
{
    const SYSTEMTIME& stTime = oItem.stTime;
    const int iThreadID = static_cast<int>(oItem.dwThreadID);
    if (oItem.iErrorCode == 0)
        return fprintf(pFile, "[%02d-%02d %02d:%02d:%02d.%03d][T%d][%s]: %s [%s|%s|%d]\n", stTime.wMonth, stTime.wDay,
                       stTime.wHour, stTime.wMinute, stTime.wSecond, stTime.wMilliseconds, iThreadID,
                       oItem.strLevel.c_str(), oItem.strMessage.c_str(), oItem.strFunction.c_str(),
                       oItem.strFile.c_str(), oItem.iLine);
    return fprintf(pFile, "[%02d-%02d %02d:%02d:%02d.%03d][T%d][%s]:ErrorCode:%08llX(%lld), %s [%s|%s|%d]\n",
                   stTime.wMonth, stTime.wDay, stTime.wHour, stTime.wMinute, stTime.wSecond, stTime.wMilliseconds,
                   iThreadID, oItem.strLevel.c_str(), static_cast<unsigned long long>(oItem.iErrorCode),
                   static_cast<long long>(oItem.iErrorCode), oItem.strMessage.c_str(), oItem.strFunction.c_str(),
                   oItem.strFile.c_str(), oItem.iLine);
}

// Gives the count of bytes written.
UINT64 WriteItem(FILE* pFile, const CAudioLogItem& oItem)
{
    return static_cast<UINT64>(std::max(PrintItem(pFile, oItem), 0));
}
} // namespace

void CALLBACK CAudioLog::ProcessLOGWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioLog*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER))
        return;
    if (AUDIO_MISSING(pThis->m_hLOGEvent, AUDIO_NO_HANDLE))
        return;
    try
    {
        Writer oWriter;
        oWriter.oFileInfo.strFileName = pThis->GetLogFileName();
        RunQueueWorker(pThis->m_iLOGThreadRun, pThis->m_hLOGEvent, [&] { pThis->WriteBatch(oWriter); });
    }
    catch (const std::exception&)
    {
        // No exception leaves a worker; without memory at its start nothing is written.
    }
}

// All at once, so that callers seldom meet the worker at the lock. By a swap, which needs no memory: callers signal the
// first line of an empty queue only, so one that stayed would not be seen again. False when there is nothing.
bool CAudioLog::TakeItems(Queue& oItems) noexcept
{
    const std::lock_guard<CAudioLock> oGuard(m_oLogLock);
    oItems.swap(m_oLogQueue);
    return !oItems.empty();
}

// Writes what is in the queue, and what comes while it does. Without a file all that was taken is dropped: one attempt
// a batch, and the worker rests until the next line.
void CAudioLog::WriteBatch(Writer& oWriter) noexcept
{
    Queue& oItems = oWriter.oItems;
    while (m_iLOGThreadRun == 1 && TakeItems(oItems))
        while (!oItems.empty() && m_iLOGThreadRun == 1)
        {
            if (WriteLine(oWriter, oItems.front()))
                oItems.pop_front();
            else
                oItems.clear();
        }
    if (oWriter.pFile != nullptr)
        fclose(oWriter.pFile);
    oWriter.pFile = nullptr;
}

// False without a file.
bool CAudioLog::WriteLine(Writer& oWriter, const CAudioLogItem& oItem) noexcept
try
{
    if (GetFileInfo(oWriter) != 0)
        return false;
    for (; !oWriter.oFailure.empty(); oWriter.oFailure.pop_front())
        oWriter.oFileInfo.iSize += WriteItem(oWriter.pFile, oWriter.oFailure.front());
    oWriter.oFileInfo.iSize += WriteItem(oWriter.pFile, oItem);
    return true;
}
catch (const std::exception&)
{
    return true; // one line lost for want of memory
}

// 0 with the file open, else the code. A full file gives way to a new one.
int CAudioLog::GetFileInfo(Writer& oWriter) const
{
    FILE*& pFile = oWriter.pFile;
    FileInfo& oFileInfo = oWriter.oFileInfo;
    if (oFileInfo.iSize >= m_iDebugSize)
    {
        if (pFile != nullptr)
            fclose(pFile);
        pFile = nullptr;
        oFileInfo.strFileName = GetLogFileName();
        oFileInfo.iSize = 0;
    }
    if (pFile != nullptr)
        return 0;
    if (const int iResult = fopen_s(&pFile, oFileInfo.strFileName.c_str(), "at+"))
        return HoldFailure(oWriter, AUDIO_LOG_SITE, iResult, "fopen_s(&pFile, oFileInfo.strFileName.c_str(), \"at+\")");
    return pFile == nullptr ? HoldFailure(oWriter, AUDIO_LOG_SITE, AUDIO_NO_HANDLE, "pFile") : 0;
}

// Not by the queue: a line for each line lost would keep the worker busy for good.
int CAudioLog::HoldFailure(Writer& oWriter, const AudioLogSite& oSite, int iErrorCode, const char* pText) const noexcept
{
    if (oWriter.oFailure.empty() && IsRecorded(AUDIO_LEVEL_ERROR))
        oWriter.oFailure = MakeItem(oSite.pFunction, oSite.pFile, oSite.iLine, AUDIO_LEVEL_ERROR, iErrorCode, pText, 0);
    return iErrorCode;
}

std::string CAudioLog::GetLogFileName() const
{
    return CAudioSTR::FormatPathString(m_strLogPath + "\\" + m_strModuleName + "_" + AUDIO_PROCESS_MARK +
                                       std::to_string(m_dwProcessID) + "_" +
                                       CAudioTIME::GetStrTime(AUDIO_FILE_TIME_FORMAT) + AUDIO_LOG_SUFFIX);
}

void CALLBACK CAudioLog::ProcessDebugWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioLog*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER))
        return;
    CAudioSettings::Follow(
        AUDIO_DEBUG_PATH, pThis->m_hRegistEvent, pThis->m_iDebugThreadRun, [pThis] { pThis->ReadSettings(); },
        AUDIO_LOG_SITE, "CAudioREG::RegNotifyStart(AUDIO_DEBUG_PATH, hKey, pThis->m_hRegistEvent)");
}
