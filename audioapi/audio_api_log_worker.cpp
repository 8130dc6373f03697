// The log's two workers: one writes the queued lines into files, one follows the settings in the registry.
#include "audioapi/audio_api_log.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_queue.h"
#include "audioapi/audio_api_registry.h"
#include "audioapi/audio_api_settings.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_time.h"

#include <exception>
#include <mutex>

namespace
{
// Gives the count of bytes written; less than 1 when nothing was.
int WriteItem(FILE* pFile, const CAudioLogItem& oItem)
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
} // namespace

void CALLBACK CAudioLog::ProcessLOGWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioLog*>(pContext);
    if (AUDIO_MISSING(pThis, 87))
        return;
    if (AUDIO_MISSING(pThis->m_hLOGEvent, 6))
        return;
    try
    {
        FileInfo oFileInfo;
        oFileInfo.strFileName = pThis->GetLogFileName();
        Queue oItems;
        RunQueueWorker(pThis->m_iLOGThreadRun, pThis->m_hLOGEvent, [&] { pThis->WriteBatch(oItems, oFileInfo); });
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

// Writes what is in the queue, and what comes while it does. A file that can't be opened queues one more line for each
// line lost, so the batch ends with the run flag too.
void CAudioLog::WriteBatch(Queue& oItems, FileInfo& oFileInfo) noexcept
{
    FILE* pFile = nullptr;
    while (m_iLOGThreadRun == 1 && TakeItems(oItems))
        for (; !oItems.empty() && m_iLOGThreadRun == 1; oItems.pop_front())
            WriteLine(pFile, oFileInfo, *oItems.front());
    if (pFile != nullptr)
        fclose(pFile);
}

void CAudioLog::WriteLine(FILE*& pFile, FileInfo& oFileInfo, const CAudioLogItem& oItem) noexcept
try
{
    if (GetFileInfo(pFile, oFileInfo) != 0)
    {
        Sleep(5);
        return;
    }
    const int iCount = WriteItem(pFile, oItem);
    if (iCount >= 1)
        oFileInfo.iSize += static_cast<UINT64>(iCount);
}
catch (const std::exception&)
{
    // One line lost for want of memory.
}

// 0 with the file open in pFile, else the code. A full file gives way to a new one.
int CAudioLog::GetFileInfo(FILE*& pFile, FileInfo& oFileInfo) const
{
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
    const int iResult = AUDIO_CHECK(fopen_s(&pFile, oFileInfo.strFileName.c_str(), "at+"));
    if (iResult != 0)
        return iResult;
    return AUDIO_MISSING(pFile, 6) ? 6 : 0;
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
    if (AUDIO_MISSING(pThis, 87))
        return;
    pThis->m_hRegistEvent.Create();
    if (AUDIO_MISSING(pThis->m_hRegistEvent, 6))
        return;
    HKEY hKey = nullptr;
    try
    {
        if (AUDIO_CHECK(CAudioREG::RegNotifyStart(AUDIO_DEBUG_PATH, hKey, pThis->m_hRegistEvent)) == 0)
            CAudioSettings::Follow(hKey, pThis->m_hRegistEvent, pThis->m_iDebugThreadRun,
                                   [pThis] { pThis->ReadSettings(); });
    }
    catch (const std::exception&)
    {
        // No exception leaves a worker; without memory at its start the settings stay as they were read.
    }
    if (hKey != nullptr)
        RegCloseKey(hKey);
}
