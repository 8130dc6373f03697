// Files and folders by name: attributes, creation, deletion, copying; fopen_s.
#include "base/error.h"
#include "base/failure.h"
#include "files/filestatus.h"
#include "platform/hostpath.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace
{
// A missing folder on the way is told apart from a missing file.
BOOL FailForPath(int iErrno, const std::string& strHostPath)
{
    struct stat stFolder;
    const std::string strFolder = std::filesystem::path(strHostPath).parent_path().string();
    if (iErrno == ENOENT && stat(strFolder.c_str(), &stFolder) != 0)
        return FailWith(ERROR_PATH_NOT_FOUND);
    return FailWithErrno(iErrno);
}

// The C library's mode without the text flag; empty for a mode that neither knows.
std::string HostMode(const char* pMode)
{
    std::string strMode;
    for (const char* pLetter = pMode; *pLetter != 0; ++pLetter)
    {
        if (std::strchr(pLetter == pMode ? "rwa" : "+bt", *pLetter) == nullptr)
            return "";
        if (*pLetter != 't')
            strMode += *pLetter;
    }
    return strMode.empty() ? "" : strMode + "e";
}

bool IsFolder(FILE* pFile)
{
    struct stat stFile;
    return fstat(fileno(pFile), &stFile) == 0 && S_ISDIR(stFile.st_mode);
}
} // namespace

DWORD GetFileAttributesA(LPCSTR lpFileName)
{
    CountCallThatMayWait();
    if (lpFileName == nullptr || lpFileName[0] == 0)
    {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_FILE_ATTRIBUTES;
    }
    const std::string strFile = HostPath(lpFileName);
    CFileStatus oStatus;
    if (!oStatus.Read(strFile))
    {
        FailForPath(errno, strFile);
        return INVALID_FILE_ATTRIBUTES;
    }
    return oStatus.dwAttributes;
}

BOOL CreateDirectoryA(LPCSTR lpPathName, LPSECURITY_ATTRIBUTES)
{
    if (IsToldToFail("CreateDirectoryA"))
        return FALSE;
    if (lpPathName == nullptr || lpPathName[0] == 0)
        return FailWith(ERROR_PATH_NOT_FOUND);
    const std::string strFolder = HostPath(lpPathName);
    if (mkdir(strFolder.c_str(), 0777) == 0)
        return TRUE;
    if (errno == EEXIST)
        return FailWith(ERROR_ALREADY_EXISTS);
    return errno == ENOENT ? FailWith(ERROR_PATH_NOT_FOUND) : FailWithErrno(errno);
}

BOOL DeleteFileA(LPCSTR lpFileName)
{
    if (IsToldToFail("DeleteFileA"))
        return FALSE;
    if (lpFileName == nullptr || lpFileName[0] == 0)
        return FailWith(ERROR_PATH_NOT_FOUND);
    const std::string strFile = HostPath(lpFileName);
    return unlink(strFile.c_str()) == 0 ? TRUE : FailForPath(errno, strFile);
}

BOOL CopyFileA(LPCSTR lpExistingFileName, LPCSTR lpNewFileName, BOOL bFailIfExists)
{
    if (IsToldToFail("CopyFileA"))
        return FALSE;
    if (lpExistingFileName == nullptr || lpNewFileName == nullptr)
        return FailWith(ERROR_PATH_NOT_FOUND);
    const std::string strFrom = HostPath(lpExistingFileName);
    const std::string strTo = HostPath(lpNewFileName);
    CFileStatus oFrom;
    if (!oFrom.Read(strFrom))
        return FailForPath(errno, strFrom);
    CFileStatus oTo;
    if (oFrom.IsFolder() || (oTo.Read(strTo) && oTo.IsFolder()))
        return FailWith(ERROR_ACCESS_DENIED);
    const auto eOptions =
        bFailIfExists ? std::filesystem::copy_options::none : std::filesystem::copy_options::overwrite_existing;
    std::error_code oError;
    if (std::filesystem::copy_file(strFrom, strTo, eOptions, oError))
        return TRUE;
    return FailForPath(oError.value(), strTo);
}

errno_t fopen_s(FILE** ppFile, const char* pFileName, const char* pMode)
{
    if (ppFile == nullptr)
        return EINVAL;
    *ppFile = nullptr;
    if (pFileName == nullptr || pMode == nullptr)
        return EINVAL;
    if (IsToldToFail("fopen_s"))
        return static_cast<errno_t>(GetLastError());
    const std::string strMode = HostMode(pMode);
    if (strMode.empty())
        return EINVAL;
    FILE* const pFile = fopen(HostPath(pFileName).c_str(), strMode.c_str());
    if (pFile == nullptr)
        return errno == EISDIR ? EACCES : errno;
    if (IsFolder(pFile))
    {
        fclose(pFile);
        return EACCES;
    }
    *ppFile = pFile;
    return 0;
}
