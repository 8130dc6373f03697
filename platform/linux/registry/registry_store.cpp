// The registry's file: read when it changed, written whole and at once under a lock that all processes honour.
#include "registry/registry_store.h"

#include "base/error.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <new>
#include <sstream>
#include <sys/file.h>
#include <tuple>
#include <unistd.h>

namespace
{
// A file descriptor of its own.
class CFileDescriptor
{
public:
    explicit CFileDescriptor(int iFile) : m_iFile(iFile) {}
    CFileDescriptor(const CFileDescriptor&) = delete;
    CFileDescriptor& operator=(const CFileDescriptor&) = delete;
    ~CFileDescriptor()
    {
        if (m_iFile >= 0)
            close(m_iFile);
    }

    const int m_iFile; // -1: none
};

LSTATUS LastWriteError()
{
    return static_cast<LSTATUS>(ErrorOfErrno(errno));
}

// Waits until no other process writes. The lock ends with the descriptor.
bool LockFile(int iFile)
{
    int iResult = 0;
    do
        iResult = flock(iFile, LOCK_EX);
    while (iResult != 0 && errno == EINTR);
    return iResult == 0;
}

bool WriteAll(int iFile, const std::string& strText)
{
    for (size_t iDone = 0; iDone < strText.size();)
    {
        const ssize_t iWritten = write(iFile, strText.data() + iDone, strText.size() - iDone);
        if (iWritten < 0 && errno != EINTR)
            return false;
        iDone += iWritten > 0 ? static_cast<size_t>(iWritten) : 0;
    }
    return true;
}
} // namespace

bool CRegistryStore::Stamp::operator==(const Stamp& oOther) const
{
    return std::tie(iDevice, iNode, iSize, iSeconds, iNanoseconds) ==
           std::tie(oOther.iDevice, oOther.iNode, oOther.iSize, oOther.iSeconds, oOther.iNanoseconds);
}

CRegistryStore::Stamp CRegistryStore::StampOf(const struct stat& oStat)
{
    return {oStat.st_dev, oStat.st_ino, oStat.st_size, oStat.st_mtim.tv_sec, oStat.st_mtim.tv_nsec};
}

CRegistryStore::CRegistryStore(const std::string& strFolder) : m_strFile(strFolder + "/registry.reg")
{
}

void CRegistryStore::Refresh(bool bForce, std::vector<RegistryChange>& vecChanges)
{
    struct stat oStat = {};
    const bool bExists = stat(m_strFile.c_str(), &oStat) == 0;
    const Stamp oStamp = bExists ? StampOf(oStat) : Stamp{};
    if (m_bLoaded && !bForce && oStamp == m_oStamp)
    {
        m_oDoubtSince.reset();
        return;
    }
    const bool bFile = bExists && S_ISREG(oStat.st_mode);
    if (m_bLoaded && (!bExists || (bFile && oStamp.iSize == 0)) && !BelieveEmpty(oStamp))
        return;
    m_oDoubtSince.reset();

    // If the file changes between the look and the reading, the next look sees another stamp and reads again.
    try
    {
        Read(bExists, bFile, vecChanges);
    }
    catch (const std::bad_alloc&)
    {
        m_bUnreadable = true; // what was read last holds
        m_vecErrors.assign({{0, "there is no memory for the file"}});
    }
    m_oStamp = oStamp;
    m_bLoaded = true;
}

void CRegistryStore::Read(bool bExists, bool bFile, std::vector<RegistryChange>& vecChanges)
{
    std::ostringstream oText;
    m_vecErrors.clear();
    m_bUnreadable = bExists && !bFile;
    if (bFile)
    {
        std::ifstream oFile(m_strFile, std::ios::binary);
        oText << oFile.rdbuf();
        m_bUnreadable = !oFile.is_open() || oText.bad();
    }
    if (m_bUnreadable)
        m_vecErrors.push_back({0, "the file can't be read"});
    CRegistryTree oTree = ParseRegistryFile(oText.str(), m_vecErrors);
    for (RegistryChange& oChange : DiffRegistry(m_oTree, oTree))
        vecChanges.push_back(std::move(oChange));
    m_oTree = std::move(oTree);
}

// Whether a file that is gone or empty shall count as an empty registry.
bool CRegistryStore::BelieveEmpty(const Stamp& oStamp)
{
    if (oStamp == m_oStamp)
        return true;
    const auto oNow = std::chrono::steady_clock::now();
    if (!m_oDoubtSince.has_value())
        m_oDoubtSince = oNow;
    return oNow - *m_oDoubtSince >= std::chrono::milliseconds(c_iDoubtMs);
}

LSTATUS CRegistryStore::Update(const std::function<LSTATUS(CRegistryTree&)>& fnChange,
                               std::vector<RegistryChange>& vecChanges)
{
    const std::string strLockFile = m_strFile.substr(0, m_strFile.rfind('/')) + "/registry.lock";
    const CFileDescriptor oLock(open(strLockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (oLock.m_iFile < 0 || !LockFile(oLock.m_iFile))
        return LastWriteError();
    Refresh(true, vecChanges);
    if (m_bUnreadable)
        return ERROR_ACCESS_DENIED;
    CRegistryTree oTree = m_oTree;
    const LSTATUS lResult = fnChange(oTree);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    std::vector<RegistryChange> vecOwn = DiffRegistry(m_oTree, oTree);
    if (vecOwn.empty())
        return ERROR_SUCCESS;
    const LSTATUS lWritten = WriteFile(oTree, m_oStamp);
    if (lWritten != ERROR_SUCCESS)
        return lWritten;
    m_oTree = std::move(oTree);
    m_vecErrors.clear(); // what couldn't be read is comment now
    m_oDoubtSince.reset();
    vecChanges.insert(vecChanges.end(), vecOwn.begin(), vecOwn.end());
    return ERROR_SUCCESS;
}

// Readers see the old file or the new one, never part of one. On success oStamp is the new file's.
LSTATUS CRegistryStore::WriteFile(const CRegistryTree& oTree, Stamp& oStamp) const
{
    const std::string strNewFile = m_strFile + ".new"; // its only writer holds the lock
    const CFileDescriptor oFile(open(strNewFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (oFile.m_iFile < 0)
        return LastWriteError();
    // The system stamps files with a clock of milliseconds, too coarse to tell two quick writes apart.
    timespec oTimes[2] = {};
    clock_gettime(CLOCK_REALTIME, &oTimes[0]);
    oTimes[1] = oTimes[0];
    struct stat oStat = {};
    const bool bWritten = WriteAll(oFile.m_iFile, FormatRegistryFile(oTree)) && futimens(oFile.m_iFile, oTimes) == 0 &&
                          fstat(oFile.m_iFile, &oStat) == 0 && rename(strNewFile.c_str(), m_strFile.c_str()) == 0;
    if (!bWritten)
    {
        const LSTATUS lResult = LastWriteError();
        unlink(strNewFile.c_str());
        return lResult;
    }
    oStamp = StampOf(oStat);
    return ERROR_SUCCESS;
}
