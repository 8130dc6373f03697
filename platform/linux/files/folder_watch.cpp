// A folder that was opened to be told of its changes, over this system's own change events.
#include "files/folder_watch.h"

#include "base/error.h"
#include "base/failure.h"
#include "files/filestatus.h"
#include "platform/hostpath.h"
#include "text/wide.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>

namespace
{
constexpr uint32_t c_u32Mask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR;
constexpr uint32_t c_u32RootMask = c_u32Mask | IN_DELETE_SELF | IN_MOVE_SELF;

std::string Below(const std::string& strFolder, const char* pSeparator, const std::string& strName)
{
    return strFolder.empty() ? strName : strFolder + pSeparator + strName;
}

// The system's files of change events that no watch has now. The system takes milliseconds to close one, for it waits
// there for all its processors, and next to nothing to make one that is kept forget.
class CSpareFiles
{
public:
    int Take()
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        if (m_iCount == 0)
            return inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
        return m_aFiles[--m_iCount];
    }

    // The file has no marks any more. What it still had to tell is nobody's.
    void Give(int iFile)
    {
        char cBuf[16384];
        while (read(iFile, cBuf, sizeof(cBuf)) > 0)
            continue;
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        if (m_iCount == MOST)
            close(iFile);
        else
            m_aFiles[m_iCount++] = iFile;
    }

private:
    static constexpr size_t MOST = 8;
    std::mutex m_oMutex; // guards the others
    size_t m_iCount = 0;
    int m_aFiles[MOST] = {};
};
CSpareFiles g_oSpareFiles;
} // namespace

CFolderWatch::CFolderWatch(const std::string& strHostPath)
    : m_strHostPath(strHostPath), m_iNotify(g_oSpareFiles.Take()), m_iWake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_iNotify >= 0 && m_iWake >= 0)
        m_iRoot = WatchTree(strHostPath, "");
}

CFolderWatch::~CFolderWatch()
{
    if (m_iWake >= 0)
        close(m_iWake);
    if (m_iNotify < 0)
        return;
    for (const auto& [iMark, strName] : m_mapFolders)
        inotify_rm_watch(m_iNotify, iMark); // one that is gone already is none
    g_oSpareFiles.Give(m_iNotify);
}

// The folder's mark, or -1.
int CFolderWatch::WatchTree(const std::string& strHostPath, const std::string& strName)
{
    const int iWatch = inotify_add_watch(m_iNotify, strHostPath.c_str(), strName.empty() ? c_u32RootMask : c_u32Mask);
    if (iWatch < 0)
        return -1;
    m_mapFolders[iWatch] = strName;
    std::error_code oIgnored; // what can't be listed has nothing to tell
    for (const auto& oEntry : std::filesystem::directory_iterator(strHostPath, oIgnored))
        if (oEntry.is_directory(oIgnored) && !oEntry.is_symlink(oIgnored))
            WatchTree(oEntry.path().string(), Below(strName, "\\", oEntry.path().filename().string()));
    return iWatch;
}

bool CFolderWatch::Read(CFolderChange& oChange)
{
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        m_bReading = true;
    }
    bool bRead = false;
    DWORD dwError = ERROR_SUCCESS;
    while (!bRead && dwError == ERROR_SUCCESS)
    {
        bRead = TakeChange(oChange);
        if (!bRead && m_bGone)
            dwError = ERROR_ACCESS_DENIED;
        else if (!bRead && !AwaitChanges())
            dwError = ERROR_OPERATION_ABORTED;
    }
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    m_bReading = false;
    uint64_t u64Count = 0; // a cancellation that came too late is over with the read
    [[maybe_unused]] const ssize_t iRead = read(m_iWake, &u64Count, sizeof(u64Count));
    return bRead || FailWith(dwError);
}

bool CFolderWatch::Cancel(LPOVERLAPPED)
{
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    if (!m_bReading)
        return false;
    const uint64_t u64One = 1;
    // It can fail only if the counter is full, and then the reader wakes anyway.
    [[maybe_unused]] const ssize_t iWritten = write(m_iWake, &u64One, sizeof(u64One));
    return true;
}

// False when the wait was cancelled.
bool CFolderWatch::AwaitChanges()
{
    pollfd oFiles[] = {{m_iWake, POLLIN, 0}, {m_iNotify, POLLIN, 0}};
    {
        const CKernelIdleScope oIdle;
        while (poll(oFiles, 2, -1) < 0 && errno == EINTR)
            continue;
    }
    if (oFiles[0].revents != 0)
        return false;
    TakeEvents();
    return true;
}

bool CFolderWatch::TakeChange(CFolderChange& oChange)
{
    if (m_oChanges.empty())
        return false;
    oChange = std::move(m_oChanges.front());
    m_oChanges.pop_front();
    return true;
}

void CFolderWatch::TakeEvents()
{
    alignas(inotify_event) char cBuf[16384];
    for (ssize_t iLen = 0; (iLen = read(m_iNotify, cBuf, sizeof(cBuf))) > 0;)
    {
        uint32_t u32Cookie = 0; // of the event before
        for (ssize_t iPos = 0; iPos < iLen;)
        {
            inotify_event oEvent;
            std::memcpy(&oEvent, cBuf + iPos, sizeof(oEvent));
            const std::string strName = oEvent.len > 0 ? cBuf + iPos + sizeof(oEvent) : "";
            iPos += static_cast<ssize_t>(sizeof(oEvent) + oEvent.len);
            // The two halves of a rename follow each other and share a number.
            inotify_event oNext{};
            if (iPos < iLen)
                std::memcpy(&oNext, cBuf + iPos, sizeof(oNext));
            const bool bRenamed = oEvent.cookie != 0 && (oEvent.cookie == u32Cookie || oEvent.cookie == oNext.cookie);
            u32Cookie = oEvent.cookie;
            TakeEvent(oEvent.wd, oEvent.mask, strName, bRenamed);
        }
    }
}

void CFolderWatch::TakeEvent(int iWatch, unsigned uMask, const std::string& strName, bool bRenamed)
{
    if ((uMask & IN_Q_OVERFLOW) != 0)
        m_oChanges.push_back({});
    const auto itFolder = m_mapFolders.find(iWatch);
    if (itFolder == m_mapFolders.end())
        return;
    if (iWatch == m_iRoot && (uMask & (IN_DELETE_SELF | IN_MOVE_SELF)) != 0)
    {
        m_bGone = (uMask & IN_DELETE_SELF) != 0;
        m_oChanges.push_back({FILE_ACTION_REMOVED, std::filesystem::path(m_strHostPath).filename().string()});
        return;
    }
    if ((uMask & IN_IGNORED) != 0)
    {
        m_mapFolders.erase(itFolder);
        return;
    }
    const std::string strPlace = Below(itFolder->second, "\\", strName);
    if ((uMask & (IN_CREATE | IN_MOVED_TO)) != 0)
    {
        m_oChanges.push_back(
            {static_cast<DWORD>(bRenamed ? FILE_ACTION_RENAMED_NEW_NAME : FILE_ACTION_ADDED), strPlace});
        std::string strHostName = strPlace;
        for (char& cLetter : strHostName)
            if (cLetter == '\\')
                cLetter = '/';
        if ((uMask & IN_ISDIR) != 0)
            WatchTree(m_strHostPath + "/" + strHostName, strPlace);
    }
    else if ((uMask & (IN_DELETE | IN_MOVED_FROM)) != 0)
    {
        m_oChanges.push_back(
            {static_cast<DWORD>(bRenamed ? FILE_ACTION_RENAMED_OLD_NAME : FILE_ACTION_REMOVED), strPlace});
    }
}

HANDLE OpenFolder(const COpenCall& oCall)
{
    const std::string strHostPath = HostPath(oCall.strName);
    CFileStatus oStatus;
    std::shared_ptr<CFolderWatch> pWatch;
    if (!oStatus.Read(strHostPath))
        FailWithErrno(errno);
    else if (!oStatus.IsFolder() || oCall.dwDisposition != OPEN_EXISTING)
        FailWith(oStatus.IsFolder() ? ERROR_FILE_EXISTS : ERROR_NOT_SUPPORTED);
    else if ((oCall.dwFlags & FILE_FLAG_BACKUP_SEMANTICS) == 0)
        FailWith(ERROR_ACCESS_DENIED);
    else if (pWatch = std::make_shared<CFolderWatch>(strHostPath); !pWatch->IsWatching())
        FailWithErrno(errno);
    else
        return OpenKernelHandle(std::move(pWatch));
    return INVALID_HANDLE_VALUE;
}

namespace
{
// Lays the change out as the published record. 0 when the buffer is too small for the name.
DWORD Tell(const CFolderChange& oChange, void* pBuffer, DWORD dwLength)
{
    const std::wstring strName = WideOf(oChange.strName);
    const auto dwNameBytes = static_cast<DWORD>(strName.size() * sizeof(WCHAR));
    constexpr DWORD HEAD_BYTES = offsetof(FILE_NOTIFY_INFORMATION, FileName);
    const FILE_NOTIFY_INFORMATION stHead = {0, oChange.dwAction, dwNameBytes, {0}};
    if (oChange.dwAction == 0 || HEAD_BYTES + dwNameBytes > dwLength)
        return 0;
    std::memcpy(pBuffer, &stHead, HEAD_BYTES);
    std::memcpy(static_cast<BYTE*>(pBuffer) + HEAD_BYTES, strName.data(), dwNameBytes);
    return HEAD_BYTES + dwNameBytes;
}
} // namespace

BOOL ReadDirectoryChangesW(HANDLE hDirectory, LPVOID lpBuffer, DWORD nBufferLength, BOOL bWatchSubtree, DWORD,
                           LPDWORD lpBytesReturned, LPOVERLAPPED lpOverlapped,
                           LPOVERLAPPED_COMPLETION_ROUTINE lpCompletionRoutine)
{
    if (IsToldToFail("ReadDirectoryChangesW"))
        return FALSE;
    const std::shared_ptr<CFolderWatch> pWatch = KernelObjectAs<CFolderWatch>(hDirectory);
    if (pWatch == nullptr)
        return FALSE;
    if (lpBuffer == nullptr || lpBytesReturned == nullptr || !bWatchSubtree || lpOverlapped != nullptr ||
        lpCompletionRoutine != nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    CFolderChange oChange;
    if (!pWatch->Read(oChange))
        return FALSE;
    *lpBytesReturned = Tell(oChange, lpBuffer, nBufferLength);
    return TRUE;
}
