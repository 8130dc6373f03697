// The calling thread's last error, and the mapping of this system's error numbers onto it.
#include "base/error.h"

#include <cerrno>

namespace
{
thread_local DWORD t_dwLastError = ERROR_SUCCESS;

struct CErrnoCode
{
    int iErrno;
    DWORD dwError;
};
constexpr CErrnoCode g_aErrnoCodes[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EBUSY, ERROR_SHARING_VIOLATION},
    {EROFS, ERROR_WRITE_PROTECT},
    {EEXIST, ERROR_FILE_EXISTS},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {ELOOP, ERROR_INVALID_NAME},
};
} // namespace

DWORD GetLastError()
{
    return t_dwLastError;
}

void SetLastError(DWORD dwErrCode)
{
    t_dwLastError = dwErrCode;
}

DWORD ErrorOfErrno(int iErrno)
{
    for (const CErrnoCode& stEntry : g_aErrnoCodes)
        if (stEntry.iErrno == iErrno)
            return stEntry.dwError;
    return ERROR_GEN_FAILURE;
}

BOOL FailWith(DWORD dwError)
{
    SetLastError(dwError);
    return FALSE;
}

BOOL FailWithErrno(int iErrno)
{
    return FailWith(ErrorOfErrno(iErrno));
}
