// The search for files by pattern.
#include "base/error.h"
#include "base/failure.h"
#include "files/filestatus.h"
#include "platform/hostpath.h"
#include "threads/kernel.h"

#include <dirent.h>
#include <fnmatch.h>
#include <strings.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

namespace
{
struct CFoundFile
{
    std::string strName;
    CFileStatus oStatus;
};

// The found files wait in it, last first.
class CFileSearch : public CKernelObject
{
public:
    std::mutex m_oMutex;
    std::vector<CFoundFile> m_vecLeft;
};

// '*' stands for any text, '?' for one character, case doesn't count; brackets are letters like others.
bool Matches(const char* pName, const std::string& strPattern)
{
    std::string strLiteral;
    for (const char cLetter : strPattern)
        strLiteral += cLetter == '[' ? std::string("\\[") : std::string(1, cLetter);
    return fnmatch(strLiteral.c_str(), pName, FNM_CASEFOLD) == 0;
}

// In the order of the platform's file system: by name without case, latest first here.
std::vector<CFoundFile> FilesOf(DIR* pFolder, const std::string& strFolder, const std::string& strPattern)
{
    std::vector<CFoundFile> vecFound;
    while (const dirent* pEntry = readdir(pFolder))
    {
        CFoundFile oFile;
        oFile.strName = pEntry->d_name;
        if (Matches(pEntry->d_name, strPattern) && oFile.strName.size() < MAX_PATH &&
            oFile.oStatus.Read(strFolder + "/" + oFile.strName))
            vecFound.push_back(std::move(oFile));
    }
    std::sort(vecFound.begin(), vecFound.end(),
              [](const CFoundFile& oOne, const CFoundFile& oOther)
              { return strcasecmp(oOne.strName.c_str(), oOther.strName.c_str()) > 0; });
    return vecFound;
}

void Tell(const CFoundFile& oFile, WIN32_FIND_DATAA& stData)
{
    stData = WIN32_FIND_DATAA{};
    stData.dwFileAttributes = oFile.oStatus.dwAttributes;
    stData.ftCreationTime = oFile.oStatus.stCreated;
    stData.ftLastAccessTime = oFile.oStatus.stAccessed;
    stData.ftLastWriteTime = oFile.oStatus.stWritten;
    stData.nFileSizeHigh = static_cast<DWORD>(oFile.oStatus.iSize >> 32);
    stData.nFileSizeLow = static_cast<DWORD>(oFile.oStatus.iSize & 0xFFFFFFFF);
    std::memcpy(stData.cFileName, oFile.strName.c_str(), oFile.strName.size() + 1);
}

bool TakeNext(CFileSearch& oSearch, WIN32_FIND_DATAA& stData)
{
    const std::lock_guard<std::mutex> oLock(oSearch.m_oMutex);
    if (oSearch.m_vecLeft.empty())
        return false;
    Tell(oSearch.m_vecLeft.back(), stData);
    oSearch.m_vecLeft.pop_back();
    return true;
}

HANDLE NoSearch(DWORD dwError)
{
    SetLastError(dwError);
    return INVALID_HANDLE_VALUE;
}
} // namespace

HANDLE FindFirstFileA(LPCSTR lpFileName, LPWIN32_FIND_DATAA lpFindFileData)
{
    if (IsToldToFail("FindFirstFileA"))
        return INVALID_HANDLE_VALUE;
    if (lpFileName == nullptr || lpFileName[0] == 0)
        return NoSearch(ERROR_PATH_NOT_FOUND);
    const std::string strPath = lpFileName;
    const size_t iName = strPath.find_last_of("\\/:") + 1; // npos + 1 is 0
    const std::string strPattern = strPath.substr(iName) == "*.*" ? "*" : strPath.substr(iName);
    if (strPattern.empty())
        return NoSearch(ERROR_FILE_NOT_FOUND);
    const std::string strFolder = HostPath(iName == 0 ? "." : strPath.substr(0, iName));
    const std::unique_ptr<DIR, int (*)(DIR*)> pFolder(opendir(strFolder.c_str()), closedir);
    if (pFolder == nullptr)
        return NoSearch(errno == EACCES ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND);

    auto pSearch = std::make_shared<CFileSearch>();
    pSearch->m_vecLeft = FilesOf(pFolder.get(), strFolder, strPattern);
    if (!TakeNext(*pSearch, *lpFindFileData))
        return NoSearch(ERROR_FILE_NOT_FOUND);
    return OpenKernelHandle(std::move(pSearch));
}

BOOL FindNextFileA(HANDLE hFindFile, LPWIN32_FIND_DATAA lpFindFileData)
{
    const std::shared_ptr<CFileSearch> pSearch = KernelObjectAs<CFileSearch>(hFindFile);
    if (pSearch == nullptr)
        return FALSE;
    return TakeNext(*pSearch, *lpFindFileData) ? TRUE : FailWith(ERROR_NO_MORE_FILES);
}

BOOL FindClose(HANDLE hFindFile)
{
    return KernelObjectAs<CFileSearch>(hFindFile) != nullptr && CloseKernelHandle(hFindFile) ? TRUE : FALSE;
}
