// The dump's two workers: one appends the queued blocks to their files, one follows the settings in the registry.
#include "audioapi/audio_api_dump.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_queue.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_settings.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_time.h"

#include <cstdio>
#include <exception>
#include <mutex>
#include <utility>

void CALLBACK CAudioDump::ProcessPCMWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioDump*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER) || AUDIO_MISSING(pThis->m_hPCMEvent, AUDIO_NO_HANDLE))
        return;
    RunQueueWorker(pThis->m_iDumpThreadRun, pThis->m_hPCMEvent, [pThis] { pThis->WriteBatch(); });
}

void CAudioDump::WriteBatch()
{
    while (m_iDumpThreadRun == 1)
    {
        try
        {
            const std::list<CAudioDumpItem> oItem = TakeItem();
            if (oItem.empty())
                return;
            WriteItem(oItem.front());
        }
        catch (const std::exception&)
        {
            // One block lost for want of memory.
        }
    }
}

// An episode of lost blocks is over when the writer has worked off half of the bound.
std::list<CAudioDumpItem> CAudioDump::TakeItem() noexcept
{
    std::list<CAudioDumpItem> oItem;
    UINT64 iDropCount = 0;
    {
        const std::lock_guard<CAudioLock> oGuard(m_oDumpLock);
        oItem = TakeFront(m_oDumpQueue);
        m_iQueueBytes -= oItem.empty() ? 0 : oItem.front().iLen;
        if (m_iQueueBytes <= QUEUE_BOUND / 2)
            iDropCount = std::exchange(m_iDropCount, 0);
    }
    ReportLost(iDropCount);
    return oItem;
}

void CAudioDump::ReportLost(UINT64 iDropCount) noexcept
{
    if (iDropCount > 0)
        AUDIOLOG_WARN("Dump queue has room again, blocks lost:" + std::to_string(iDropCount));
}

// A file that can't be opened costs the block.
void CAudioDump::WriteItem(const CAudioDumpItem& oItem)
{
    const std::string strKey = oItem.strName.substr(0, oItem.strName.rfind('_'));
    const auto itFile = m_oDumpFiles.find(strKey);
    const bool bGoesOn = itFile != m_oDumpFiles.end() && itFile->second.iSize < m_iDumpSize;
    FileInfo oFileInfo = bGoesOn ? itFile->second : GetFileInfo(strKey);
    FILE* pFile = nullptr;
    if (fopen_s(&pFile, oFileInfo.strFileName.c_str(), "ab+") != 0 || pFile == nullptr)
    {
        Sleep(5);
        return;
    }
    fwrite(oItem.pData.get(), 1, oItem.iLen, pFile);
    fclose(pFile);
    oFileInfo.iSize += oItem.iLen;
    m_oDumpFiles[strKey] = std::move(oFileInfo);
}

FileInfo CAudioDump::GetFileInfo(const std::string& strKey) const
{
    const std::string strTime = CAudioTIME::GetStrTime(AUDIO_FILE_TIME_FORMAT);
    return {CAudioSTR::FormatPathString(strKey + "_" + strTime + AUDIO_PCM_SUFFIX), 0};
}

void CALLBACK CAudioDump::ProcessDumpWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioDump*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER))
        return;
    CAudioSettings::Follow(
        AUDIO_DUMP_PATH, pThis->m_hRegistEvent, pThis->m_iDumpThreadRun, [pThis] { pThis->ReadSettings(); },
        AUDIO_LOG_SITE, "CAudioREG::RegNotifyStart(AUDIO_DUMP_PATH, hKey, pThis->m_hRegistEvent)");
}
