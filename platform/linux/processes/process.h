// Processes of this system, as /proc tells of them.
#pragma once

#include "threads/kernel.h"

#include <string>

#include <sys/types.h>

// A process's folder, held open: once the process is gone nothing is read from it, whoever has its id then.
class CProcessFolder
{
public:
    explicit CProcessFolder(DWORD dwProcessID);
    ~CProcessFolder();
    CProcessFolder(const CProcessFolder&) = delete;
    CProcessFolder& operator=(const CProcessFolder&) = delete;

    bool IsOpen() const { return m_iFolder >= 0; }
    // Empty when it can't be read.
    std::string Read(const char* pFile) const;
    // The executable's file name, or what the system calls the process where its file is no one's to see.
    std::string Name() const;
    // Fields of "status": a number behind its name, in the file's own unit.
    bool Field(const char* pName, unsigned long long& iValue) const;

private:
    int m_iFolder;
};

// What OpenProcess opens.
struct CProcess : public CKernelObject
{
    explicit CProcess(DWORD dwProcessID) : oFolder(dwProcessID) {}
    const CProcessFolder oFolder;
};
