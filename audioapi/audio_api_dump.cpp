// The dump's calling side, which fills a bounded queue, and its start and stop.
#include "audioapi/audio_api_dump.h"

#include "audioapi/audio_api_const.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_settings.h"
#include "audioapi/audio_api_system.h"
#include "audioapi/audio_api_worker.h"

#include <exception>
#include <iterator>
#include <mutex>
#include <new>

CAudioDump::~CAudioDump()
{
    CAudioWorker::Stop(&m_iDumpThreadRun, m_hPCMEvent, m_pPCMThreadWorker);
    CAudioWorker::Stop(&m_iDumpThreadRun, m_hRegistEvent, m_pDumpThreadWorker);
    ReportLost(m_iDropCount);
    m_pAudioDir.Reset();
}

void CAudioDump::Initialize(HMODULE hModule)
{
    // The names before the folder's keeper, which tells the callers that all of it is there.
    m_dwProcessID = GetCurrentProcessId();
    m_strModuleName = CAudioSYS::GetModuleBaseName(hModule);
    m_strDumpPath = CAudioSYS::GetDiagnosticsPath(m_strModuleName);
    m_pAudioDir.Make();
    ReadSettings();
    CreatPCMThread();
    CreatDumpThread();
    if (m_pAudioDir != nullptr)
        m_pAudioDir->Initialize(m_strModuleName, AUDIO_PCM_SUFFIX, m_iDumpNum);
}

void CAudioDump::ReadSettings()
{
    m_iDumpLevel = static_cast<INT32>(CAudioSettings::ReadNumber(AUDIO_DUMP_PATH, AUDIO_DUMP_LEVEL, 0));
    m_iDumpSize = CAudioSettings::ReadMegabytes(AUDIO_DUMP_PATH, AUDIO_DUMP_SIZE, DEFAULT_DUMP_SIZE);
    m_iDumpNum = CAudioSettings::ReadCount(AUDIO_DUMP_PATH, AUDIO_DUMP_NUM, DEFAULT_DUMP_NUM);
}

void CAudioDump::CreatPCMThread()
{
    m_hPCMEvent.Create();
    if (AUDIO_MISSING(m_hPCMEvent, AUDIO_NO_HANDLE))
        return;
    m_pPCMThreadWorker = CAudioWorker::Start(ProcessPCMWorkerThread, this, &m_iDumpThreadRun);
}

// Runs by the flag that the writer's start has set.
void CAudioDump::CreatDumpThread()
{
    m_pDumpThreadWorker = CreateThreadpoolWork(ProcessDumpWorkerThread, this, nullptr);
    if (AUDIO_MISSING(m_pDumpThreadWorker, AUDIO_NO_HANDLE))
        return;
    SubmitThreadpoolWork(m_pDumpThreadWorker);
}

void CAudioDump::RecordItem(const void* pData, const INT32& iLen, const INT32& iType)
{
    const bool bNamed = iType >= 0 && iType < static_cast<INT32>(std::size(AUDIO_DUMP_STREAM_NAME));
    RecordItemByName(pData, iLen, bNamed ? AUDIO_DUMP_STREAM_NAME[iType] : "Unknow");
}

void CAudioDump::QueueItem(const void* pData, const INT32& iLen, std::string_view strName) noexcept
try
{
    const CAudioDir* const pAudioDir = m_pAudioDir;
    if (pData == nullptr || iLen <= 0 || pAudioDir == nullptr || !pAudioDir->Exists())
        return;
    std::list<CAudioDumpItem> oItem(1);
    CAudioDumpItem* const pItem = &oItem.front();
    pItem->iLen = static_cast<UINT32>(iLen);
    pItem->pData.reset(new (std::nothrow) BYTE[pItem->iLen]);
    if (AUDIO_MISSING(pItem->pData, AUDIO_BAD_DATA))
        return;
    if (memcpy_s(pItem->pData.get(), pItem->iLen, pData, pItem->iLen) != 0)
    {
        AUDIOLOG_ERROR(AUDIO_BAD_COPY, "memcpy_s(pItem->pData, iLen, pData, iLen)");
        return;
    }
    pItem->strName = GetItemName(strName);
    if (!PushItem(oItem))
        AUDIOLOG_WARN("Dump queue is full, blocks are lost");
    if (m_hPCMEvent != nullptr)
        SetEvent(m_hPCMEvent);
}
catch (const std::exception&)
{
    AudioLogFailure(AUDIO_LOG_SITE, AUDIO_NO_POINTER, "pItem"); // without memory the block is lost
}

std::string CAudioDump::GetItemName(std::string_view strName) const
{
    std::string strItemName = m_strDumpPath + "\\" + m_strModuleName + "_";
    strItemName.append(strName).append("_").append(AUDIO_PROCESS_MARK).append(std::to_string(m_dwProcessID));
    if (m_iDumpLevel == LEVEL_PER_THREAD)
        strItemName.append("_").append(AUDIO_THREAD_MARK).append(std::to_string(GetCurrentThreadId()));
    return strItemName.append("_").append(AUDIO_PCM_SUFFIX);
}

// False for the first block of an episode that the bound refuses.
bool CAudioDump::PushItem(std::list<CAudioDumpItem>& oItem) noexcept
{
    const std::lock_guard<CAudioLock> oGuard(m_oDumpLock);
    if (m_iQueueBytes + oItem.front().iLen > QUEUE_BOUND)
        return m_iDropCount++ != 0;
    m_iQueueBytes += oItem.front().iLen;
    m_oDumpQueue.splice(m_oDumpQueue.end(), oItem);
    return true;
}
