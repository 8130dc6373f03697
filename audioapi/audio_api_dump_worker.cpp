// The dump's two workers: one appends the queued blocks to their files, one follows the settings in the registry.
#include "audioapi/audio_api_dump.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_queue.h"
#include "audioapi/audio_api_registry.h"
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
    if (AUDIO_MISSING(pThis, 87) || AUDIO_MISSING(pThis->m_hPCMEvent, 6))
        return;
    RunQueueWorker(pThis->m_iDumpThreadRun, pThis->m_hPCMEvent, [pThis] { pThis->WriteBatch(); });
}

void CAudioDump::WriteBatch()
{
    while (m_iDumpThreadRun == 1)
    {
        try
        {
            const std::unique_ptr<CAudioDumpItem> pItem = TakeItem();
            if (pItem == nullptr)
                return;
            WriteItem(*pItem);
        }
        catch (const std::exception&)
        {
            // One block lost for want of memory.
        }
    }
}

// An episode of lost blocks is over when the writer has worked off half of the bound.
std::unique_ptr<CAudioDumpItem> CAudioDump::TakeItem()
{
    std::unique_ptr<CAudioDumpItem> pItem;
    UINT64 iDropCount = 0;
    {
        const std::lock_guard<CAudioLock> oGuard(m_oDumpLock);
        pItem = TakeFront(m_oDumpQueue);
        m_iQueueBytes -= pItem != nullptr ? pItem->iLen : 0;
        if (m_iQueueBytes <= QUEUE_BOUND / 2)
            iDropCount = std::exchange(m_iDropCount, 0);
    }
    ReportLost(iDropCount);
    return pItem;
}

void CAudioDump::ReportLost(UINT64 iDropCount) noexcept
try
{
    if (iDropCount > 0)
        AUDIOLOG_WARN("Dump queue has room again, blocks lost:" + std::to_string(iDropCount));
}
catch (const std::exception&)
{
    // Without memory the line is lost.
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
    return {strKey, CAudioSTR::FormatPathString(strKey + "_" + strTime + AUDIO_PCM_SUFFIX), 0};
}

void CALLBACK CAudioDump::ProcessDumpWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioDump*>(pContext);
    if (AUDIO_MISSING(pThis, 87))
        return;
    pThis->m_hRegistEvent.Create();
    if (AUDIO_MISSING(pThis->m_hRegistEvent, 6))
        return;
    HKEY hKey = nullptr;
    try
    {
        if (AUDIO_CHECK(CAudioREG::RegNotifyStart(AUDIO_DUMP_PATH, hKey, pThis->m_hRegistEvent)) == 0)
            CAudioSettings::Follow(hKey, pThis->m_hRegistEvent, pThis->m_iDumpThreadRun,
                                   [pThis] { pThis->ReadSettings(); });
    }
    catch (const std::exception&)
    {
        // No exception leaves a worker; without memory at its start the settings stay as they were read.
    }
    if (hKey != nullptr)
        RegCloseKey(hKey);
}
