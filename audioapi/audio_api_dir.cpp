// The keeper of the diagnostics folder: its watch, and the files beyond the limit.
#include "audioapi/audio_api_dir.h"

#include "audioapi/audio_api_file_search.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"
#include "audioapi/audio_api_string.h"
#include "audioapi/audio_api_system.h"
#include "audioapi/audio_api_worker.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <mutex>

namespace
{
constexpr int OPEN_ATTEMPTS = 4;
constexpr DWORD OPEN_PAUSE = 3; // milliseconds
constexpr DWORD dwAccess = GENERIC_READ | GENERIC_WRITE | FILE_LIST_DIRECTORY;
constexpr DWORD dwShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD dwFlags = FILE_FLAG_OVERLAPPED | FILE_FLAG_BACKUP_SEMANTICS;

bool IsDirectory(const std::string& strPath)
{
    const DWORD dwAttributes = GetFileAttributesA(strPath.c_str());
    return dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string ParentOf(const std::string& strPath)
{
    return strPath.substr(0, strPath.rfind('\\'));
}

// The name ends at its first zero or at its length.
std::wstring NameOf(const FILE_NOTIFY_INFORMATION& stNotification)
{
    const WCHAR* const pEnd = stNotification.FileName + stNotification.FileNameLength / sizeof(WCHAR);
    return {stNotification.FileName, std::find(stNotification.FileName, pEnd, WCHAR{0})};
}
} // namespace

CAudioDir::~CAudioDir()
{
    {
        const std::lock_guard<CAudioLock> oGuard(m_oDirectoryLock);
        m_iThreadRun = 0;
    }
    // Again and again: the worker may be on its way into the read.
    while (m_iThreadAlive == 1 && !CAudioWorker::IsProcessEnding())
    {
        CancelRead();
        Sleep(1);
    }
    CAudioWorker::Close(m_pThreadWorker);
    CloseDirectory();
}

void CAudioDir::Initialize(const std::string& strDirName, const std::string& strFileType, const UINT32& iMaxFileNum)
{
    m_strFileType = strFileType;
    m_strDirName = strDirName;
    m_iMaxFileNum = iMaxFileNum;
    m_strDirPath = CAudioSYS::GetDiagnosticsPath(strDirName);
    if (IsDirectory(m_strDirPath))
    {
        m_iDirExist = 1;
    }
    else
    {
        const std::string strDirPath = ParentOf(m_strDirPath);
        if (AUDIO_CHECK_WIN(CreateDirectoryA(strDirPath.c_str(), nullptr)) != 0)
            return;
        AUDIOLOG_DEBUG("Creat Directory Path is: " + strDirPath);
    }
    m_pThreadWorker = CAudioWorker::Start(ProcessDirectoryThread, this, &m_iThreadRun);
}

void CALLBACK CAudioDir::ProcessDirectoryThread(PTP_CALLBACK_INSTANCE, PVOID pContext, PTP_WORK)
{
    auto* pThis = static_cast<CAudioDir*>(pContext);
    if (AUDIO_MISSING(pThis, AUDIO_NO_POINTER))
        return;
    {
        const std::lock_guard<CAudioLock> oGuard(pThis->m_oDirectoryLock);
        pThis->m_iThreadAlive = 1;
    }
    try
    {
        if (AUDIO_CHECK(pThis->CreateDirectoryHandle()) == 0)
            pThis->WatchDirectory();
    }
    catch (const std::exception&)
    {
        // No exception leaves a worker; without memory at its start nothing is watched.
    }
    // Nobody would see the folder go: what isn't there any more is given up now.
    if (!IsDirectory(pThis->m_strDirPath))
        pThis->m_iDirExist = 0;
    pThis->m_iThreadAlive = 0; // last touch but for the pool's
}

void CAudioDir::WatchDirectory()
{
    CAudioDir* const pThis = this; // the name that the failure lines carry
    alignas(FILE_NOTIFY_INFORMATION) BYTE aBuffer[1024];
    bool bReadBefore = true; // since the watch was opened again for a failed read, once for each
    while (m_iThreadRun == 1)
    {
        if (AUDIO_FAIL_IF(pThis->m_hDirectory == INVALID_HANDLE_VALUE, AUDIO_NO_HANDLE))
            return;
        std::fill(std::begin(aBuffer), std::end(aBuffer), BYTE{0});
        DWORD iReturned = 0;
        const bool bRead = ReadDirectoryChangesW(m_hDirectory, aBuffer, sizeof(aBuffer), TRUE,
                                                 FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_DIR_NAME, &iReturned,
                                                 nullptr, nullptr) != FALSE;
        if (!bRead)
        {
            AUDIOLOG_ERROR(AudioLastError(), "Read Directory Changes failed!");
            if (bReadBefore && ReopenDirectory())
            {
                bReadBefore = false;
                continue;
            }
            m_iDirExist = 0; // behind the line, which wouldn't be kept any more
            return;
        }
        bReadBefore = true;
        const auto* pNotification = reinterpret_cast<const FILE_NOTIFY_INFORMATION*>(aBuffer);
        try
        {
            if (pNotification->Action == FILE_ACTION_ADDED || pNotification->Action == FILE_ACTION_RENAMED_OLD_NAME)
                AUDIO_CHECK(pThis->ProcessAddEvent(pNotification));
            else if (pNotification->Action == FILE_ACTION_REMOVED)
                AUDIO_CHECK(pThis->ProcessRemoveEvent(pNotification));
        }
        catch (const std::exception&)
        {
            // Without memory this event is lost; the files it would have cost go at the next.
        }
    }
}

// A read fails for a folder that is gone, too; another may have come in its place by now.
bool CAudioDir::ReopenDirectory()
{
    CloseDirectory();
    return m_iThreadRun == 1 && IsDirectory(m_strDirPath) && AUDIO_CHECK(CreateDirectoryHandle()) == 0;
}

// Again, when the folder came or went before its watch, or its parent's, was open: nobody would tell of it.
int CAudioDir::CreateDirectoryHandle()
{
    if (!IsDirectory(m_strDirPath) && m_hDirectory != INVALID_HANDLE_VALUE)
    {
        m_iDirExist = 0;
        return 0;
    }
    for (;;)
    {
        const bool bExists = IsDirectory(m_strDirPath);
        m_iDirExist = bExists ? 1 : 0;
        CloseDirectory();
        const int iResult = OpenDirectory(bExists ? m_strDirPath : ParentOf(m_strDirPath));
        if (bExists)
            CheckFileNum(); // behind the opening, which tells of the files that come from now on
        if (IsDirectory(m_strDirPath) == bExists || m_iThreadRun == 0)
            return iResult;
    }
}

int CAudioDir::OpenDirectory(const std::string& strTarget)
{
    DWORD dwError = 0;
    for (int iFailed = 0; iFailed < OPEN_ATTEMPTS; ++iFailed)
    {
        HANDLE hDirectory = CreateFileA(strTarget.c_str(), dwAccess, dwShare, nullptr, OPEN_EXISTING, dwFlags, nullptr);
        if (hDirectory != INVALID_HANDLE_VALUE)
        {
            {
                const std::lock_guard<CAudioLock> oGuard(m_oDirectoryLock);
                m_hDirectory = hDirectory;
            }
            AUDIOLOG_DEBUG(std::string("Try Create ") + "*" + m_strFileType + " monitor times(" +
                           std::to_string(iFailed) + ") for Directory:" + strTarget);
            return 0;
        }
        dwError = AudioLastError();
        Sleep(OPEN_PAUSE);
    }
    AUDIOLOG_ERROR(dwError, "Fail to Create File for monitor Directory:" + strTarget);
    return static_cast<int>(dwError);
}

bool CAudioDir::IsOwnName(const FILE_NOTIFY_INFORMATION& stNotification) const
{
    const std::string strName = CAudioSTR::ToString(NameOf(stNotification), CP_ACP);
    return strName.substr(0, strName.find('\\')) == m_strDirName;
}

int CAudioDir::ProcessAddEvent(const FILE_NOTIFY_INFORMATION* pNotification)
{
    if (AUDIO_MISSING(pNotification, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    // The folder itself is asked, for its coming may be told by a record behind the first.
    if (m_iDirExist == 0 && IsDirectory(m_strDirPath))
    {
        if (const int iResult = AUDIO_CHECK(CreateDirectoryHandle()))
            return iResult;
    }
    if (m_iDirExist == 1)
        CheckFileNum();
    return 0;
}

int CAudioDir::ProcessRemoveEvent(const FILE_NOTIFY_INFORMATION* pNotification)
{
    if (AUDIO_MISSING(pNotification, AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    if (!IsOwnName(*pNotification))
        return 0;
    CloseDirectory(); // whatever is there now: the watch may be of a folder that is gone, or lies elsewhere
    return AUDIO_CHECK(CreateDirectoryHandle());
}

// A stop ends it half done; the next start does the rest.
void CAudioDir::CheckFileNum()
{
    FileList oFileList;
    WIN32_FIND_DATAA stFound{};
    CFileSearch oSearch(m_strDirPath + "\\*" + m_strFileType, stFound);
    for (bool bFound = oSearch.IsOpen(); bFound && m_iThreadRun == 1; bFound = oSearch.Next(stFound))
        if (stFound.dwFileAttributes != PLAIN_DIRECTORY)
            oFileList.emplace(stFound.ftLastWriteTime, stFound.cFileName);
    RemoveExtraFile(oFileList);
}

void CAudioDir::RemoveExtraFile(const FileList& oFileList)
{
    size_t iExtra = oFileList.size() > m_iMaxFileNum ? oFileList.size() - m_iMaxFileNum : 0;
    for (auto itFile = oFileList.rbegin(); iExtra > 0 && m_iThreadRun == 1; ++itFile, --iExtra)
    {
        const std::string strFilePath = m_strDirPath + "\\" + itFile->second;
        AUDIOLOG_DEBUG("RemoveExtraFile strFilePath is: " + strFilePath);
        AUDIO_CHECK_WIN(DeleteFileA(strFilePath.c_str()));
    }
}

void CAudioDir::CancelRead()
{
    const std::lock_guard<CAudioLock> oGuard(m_oDirectoryLock);
    if (m_hDirectory != INVALID_HANDLE_VALUE)
        CancelIoEx(m_hDirectory, nullptr);
}

void CAudioDir::CloseDirectory()
{
    const std::lock_guard<CAudioLock> oGuard(m_oDirectoryLock);
    if (m_hDirectory == INVALID_HANDLE_VALUE)
        return;
    CancelIoEx(m_hDirectory, nullptr);
    CloseHandle(m_hDirectory);
    m_hDirectory = INVALID_HANDLE_VALUE;
}
