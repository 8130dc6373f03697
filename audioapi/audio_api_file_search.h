// A search for files, closed with its scope.
#pragma once

#include <windows.h>

#include <string>

constexpr DWORD PLAIN_DIRECTORY = FILE_ATTRIBUTE_DIRECTORY; // the attributes of a folder that is nothing else

// Finds the first file when made. strWanted is a path whose last part may hold "*".
class CFileSearch
{
public:
    CFileSearch(const std::string& strWanted, WIN32_FIND_DATAA& stFound)
        : m_hSearch(FindFirstFileA(strWanted.c_str(), &stFound))
    {
    }
    ~CFileSearch()
    {
        if (IsOpen())
            FindClose(m_hSearch);
    }
    CFileSearch(const CFileSearch&) = delete;
    CFileSearch& operator=(const CFileSearch&) = delete;

    bool IsOpen() const { return m_hSearch != INVALID_HANDLE_VALUE; }
    bool Next(WIN32_FIND_DATAA& stFound) { return FindNextFileA(m_hSearch, &stFound) != FALSE; }

private:
    HANDLE m_hSearch;
};
