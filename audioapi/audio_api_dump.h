// The dump: raw blocks of bytes at named points of the chain, appended to one file per name by a worker.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_dir.h"
#include "audioapi/audio_api_lock.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_published.h"
#include "audioapi/audio_api_singleton.h"
#include "audioapi/audio_api_worker_event.h"

#include <windows.h>

#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>

// One block on its way to its file.
struct CAudioDumpItem
{
    std::string strName; // whole path, without the time: "..._.pcm"
    std::unique_ptr<BYTE[]> pData;
    UINT32 iLen = 0; // bytes
};

// Writes nothing until the level is above 0 and the diagnostics folder exists. Usable before Initialize: each call
// returns at once.
class CAudioDump : public CAudioSingleton<CAudioDump>
{
public:
    // Reads the settings and starts the workers. hModule names folder and files. Called once.
    void Initialize(HMODULE hModule);

    // Whether anything is dumped, and whether the extra points are. Any thread, one load.
    bool IsOn() const { return m_iDumpLevel > 0; }
    bool IsDetailOn() const { return m_iDumpLevel == LEVEL_DETAIL; }

    // Queue a copy of iLen bytes under the name, which becomes part of a file's name. Any thread; never touch a file.
    // One load while the dump is off. Throw nothing: a block without memory is lost, as is one beyond the queue's
    // bound.
    void RecordItemByName(const void* pData, const INT32& iLen, std::string_view strName)
    {
        if (IsOn())
            QueueItem(pData, iLen, strName);
    }
    // The same, at level 3 only.
    void RecordDetailItem(const void* pData, const INT32& iLen, std::string_view strName)
    {
        if (IsDetailOn())
            QueueItem(pData, iLen, strName);
    }
    // The same, by number of the stream.
    void RecordItem(const void* pData, const INT32& iLen, const INT32& iType);

    static constexpr size_t QUEUE_BOUND = 64 * 1024 * 1024; // bytes of blocks

private:
    friend class CAudioSingleton<CAudioDump>;
    CAudioDump() = default;
    // Stops the workers. What is still queued is lost.
    ~CAudioDump();

    void QueueItem(const void* pData, const INT32& iLen, std::string_view strName) noexcept;
    std::string GetItemName(std::string_view strName) const;
    // oItem is a list of one, which goes to the queue whole.
    bool PushItem(std::list<CAudioDumpItem>& oItem) noexcept;
    std::list<CAudioDumpItem> TakeItem() noexcept;
    // Ends an episode of lost blocks, if there was one.
    static void ReportLost(UINT64 iDropCount) noexcept;

    void CreatPCMThread();
    static void CALLBACK ProcessPCMWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK);
    void WriteBatch();
    void WriteItem(const CAudioDumpItem& oItem);
    FileInfo GetFileInfo(const std::string& strKey) const;

    void CreatDumpThread();
    static void CALLBACK ProcessDumpWorkerThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK);
    void ReadSettings();

    static constexpr INT32 LEVEL_PER_THREAD = 2;
    static constexpr INT32 LEVEL_DETAIL = 3;
    static constexpr UINT32 DEFAULT_DUMP_SIZE = 512000000; // bytes
    static constexpr UINT32 DEFAULT_DUMP_NUM = 200;

    CAudioPublished<CAudioDir> m_pAudioDir;
    DWORD m_dwProcessID = 0;
    CAudioRelaxed<INT32> m_iDumpLevel{0};
    CAudioRelaxed<UINT32> m_iDumpSize{DEFAULT_DUMP_SIZE}; // bytes
    CAudioRelaxed<UINT32> m_iDumpNum{DEFAULT_DUMP_NUM};
    CAudioLock m_oDumpLock; // guards m_oDumpQueue and the three below it
    std::list<CAudioDumpItem> m_oDumpQueue;
    size_t m_iQueueBytes = 0;
    UINT64 m_iDropCount = 0; // blocks lost to the bound since the writer last kept up
    std::string m_strModuleName;
    std::string m_strDumpPath;
    PTP_WORK m_pDumpThreadWorker = nullptr;
    PTP_WORK m_pPCMThreadWorker = nullptr;
    CAudioWorkerEvent m_hPCMEvent;
    CAudioWorkerEvent m_hRegistEvent;
    CAudioFlag m_iDumpThreadRun{0};
    std::map<std::string, FileInfo> m_oDumpFiles; // the writer's own: each item's current file
};
