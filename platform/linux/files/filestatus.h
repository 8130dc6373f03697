// What the platform tells of a file, read from this host.
#pragma once

#include <windows.h>

#include <string>

struct CFileStatus
{
    // False with errno when there is no such file. Links are followed.
    bool Read(const std::string& strHostPath);
    bool IsFolder() const { return (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

    DWORD dwAttributes = 0;
    unsigned long long iSize = 0;
    FILETIME stCreated{};
    FILETIME stAccessed{};
    FILETIME stWritten{};
};
