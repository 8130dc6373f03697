// A folder that was opened to be told of its changes.
#pragma once

#include "files/iofile.h"

#include <deque>
#include <map>
#include <mutex>
#include <string>

// One name that came, went or changed.
struct CFolderChange
{
    DWORD dwAction = 0;  // FILE_ACTION_...
    std::string strName; // below the folder, parts joined by backslashes
};

// Counts changes from its making on, those of folders below too. A folder that is removed or moved away is told as a
// removal of its own name; once it is removed every further read fails.
class CFolderWatch : public CIoFile
{
public:
    explicit CFolderWatch(const std::string& strHostPath);
    ~CFolderWatch() override;
    CFolderWatch(const CFolderWatch&) = delete;
    CFolderWatch& operator=(const CFolderWatch&) = delete;

    // False, with errno, when the system gives no watch.
    bool IsWatching() const { return m_iRoot >= 0; }

    // Waits for a change. False, with the last error, when there won't be one: ERROR_OPERATION_ABORTED,
    // ERROR_ACCESS_DENIED. No action: changes were lost. One reader at a time.
    bool Read(CFolderChange& oChange);

    // Makes the pending read fail. Any thread.
    bool Cancel(LPOVERLAPPED pRecord) override;

private:
    bool AwaitChanges();
    bool TakeChange(CFolderChange& oChange);
    void TakeEvents();
    void TakeEvent(int iWatch, unsigned uMask, const std::string& strName, bool bRenamed);
    int WatchTree(const std::string& strHostPath, const std::string& strName);

    std::string m_strHostPath;
    int m_iNotify = -1;                      // the system's file of change events
    int m_iWake = -1;                        // ends a wait
    int m_iRoot = -1;                        // the folder's own mark in m_iNotify
    std::map<int, std::string> m_mapFolders; // mark to name, empty for the folder itself
    std::deque<CFolderChange> m_oChanges;    // not yet read
    bool m_bGone = false;
    std::mutex m_oMutex; // guards the next
    bool m_bReading = false;
};

// What CreateFile gives for a folder: a handle to be read and cancelled. INVALID_HANDLE_VALUE with the last error.
HANDLE OpenFolder(const COpenCall& oCall);
