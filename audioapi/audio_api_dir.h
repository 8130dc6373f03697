// The keeper of the diagnostics folder: tells whether it exists, and bounds the number of files of one type in it.
#pragma once

#include "audioapi/audio_api_atomic.h"
#include "audioapi/audio_api_lock.h"

#include <windows.h>

#include <map>
#include <string>

// Watches the folder, or its parent until the folder appears. One worker per object.
class CAudioDir
{
public:
    CAudioDir() = default;
    ~CAudioDir();
    CAudioDir(const CAudioDir&) = delete;
    CAudioDir& operator=(const CAudioDir&) = delete;

    // strDirName is the module's base name, strFileType ".log" or ".pcm". Without the folder a watch starts only where
    // its parent can be made. Called once.
    void Initialize(const std::string& strDirName, const std::string& strFileType, const UINT32& iMaxFileNum);

    // Whether the folder is known to exist. Any thread, one load.
    bool Exists() const { return m_iDirExist == 1; }

private:
    struct LaterFirst
    {
        bool operator()(const FILETIME& stLeft, const FILETIME& stRight) const
        {
            return stLeft.dwHighDateTime != stRight.dwHighDateTime ? stLeft.dwHighDateTime > stRight.dwHighDateTime
                                                                   : stLeft.dwLowDateTime > stRight.dwLowDateTime;
        }
    };
    // The oldest file is the last one; of equal times, the one listed last.
    using FileList = std::multimap<FILETIME, std::string, LaterFirst>;

    static void CALLBACK ProcessDirectoryThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK);
    void WatchDirectory();
    // Whether the folder is there and watched anew.
    bool ReopenDirectory();
    // Opens what is to be watched now. 0 or the error code.
    int CreateDirectoryHandle();
    int OpenDirectory(const std::string& strTarget);
    // 0, AUDIO_BAD_DATA without a record, or the error code of a new watch.
    int ProcessAddEvent(const FILE_NOTIFY_INFORMATION* pNotification);
    int ProcessRemoveEvent(const FILE_NOTIFY_INFORMATION* pNotification);
    bool IsOwnName(const FILE_NOTIFY_INFORMATION& stNotification) const;
    void CheckFileNum();
    void RemoveExtraFile(const FileList& oFileList);
    // Ends a read that waits. Any thread.
    void CancelRead();
    void CloseDirectory();

    PTP_WORK m_pThreadWorker = nullptr;
    std::string m_strDirPath;
    std::string m_strDirName;
    std::string m_strFileType;
    UINT32 m_iMaxFileNum = 200;
    CAudioFlag m_iDirExist{0};
    CAudioFlag m_iThreadRun{0}; // the stop clears it
    HANDLE m_hDirectory = INVALID_HANDLE_VALUE;
    // Guards the handle between the worker, which alone changes it, and the stop; and orders the two flags: the stop
    // sees a worker that has begun, or that worker sees the stop.
    CAudioLock m_oDirectoryLock;
    CAudioFlag m_iThreadAlive{0}; // the worker sets it at its begin and clears it at its end
};
