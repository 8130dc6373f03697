// Reads a file's attributes, size and times.
#include "files/filestatus.h"

#include "time/filetime.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

static long long TicksOf(const statx_timestamp& stTime)
{
    return TicksOf(timespec{static_cast<time_t>(stTime.tv_sec), static_cast<long>(stTime.tv_nsec)});
}

bool CFileStatus::Read(const std::string& strHostPath)
{
    struct statx stStatus;
    if (statx(AT_FDCWD, strHostPath.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &stStatus) != 0)
        return false;
    if (S_ISDIR(stStatus.stx_mode))
        dwAttributes = FILE_ATTRIBUTE_DIRECTORY;
    else
        dwAttributes = FILE_ATTRIBUTE_ARCHIVE | ((stStatus.stx_mode & 0222) == 0 ? FILE_ATTRIBUTE_READONLY : 0);
    iSize = S_ISDIR(stStatus.stx_mode) ? 0 : stStatus.stx_size;
    stWritten = FileTimeOf(TicksOf(stStatus.stx_mtime));
    stAccessed = FileTimeOf(TicksOf(stStatus.stx_atime));
    // Where the file system keeps no birth time, the oldest time it has.
    stCreated = (stStatus.stx_mask & STATX_BTIME) != 0
                    ? FileTimeOf(TicksOf(stStatus.stx_btime))
                    : FileTimeOf(std::min(TicksOf(stStatus.stx_ctime), TicksOf(stStatus.stx_mtime)));
    return true;
}
