// On Windows a path needs no mapping.
#include "platform/hostpath.h"

std::string HostPath(const std::string& strPath)
{
    return strPath;
}
