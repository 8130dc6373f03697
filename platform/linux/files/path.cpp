// Paths of the platform and where they lie on this host: drives are folders of the machine, Z: is the host's root.
#include "platform/control/machine_native.h"
#include "platform/hostpath.h"

#include <cctype>
#include <dirent.h>
#include <memory>
#include <strings.h>
#include <unistd.h>
#include <vector>

namespace
{
bool IsDrivePath(const std::string& strPath)
{
    return strPath.size() >= 2 && std::isalpha(static_cast<unsigned char>(strPath[0])) && strPath[1] == ':';
}

// The parts between slashes, with "." and ".." resolved; ".." ends at the root.
std::vector<std::string> Parts(const std::string& strPath)
{
    std::vector<std::string> vecParts;
    for (size_t iStart = 0; iStart < strPath.size();)
    {
        const size_t iEnd = std::min(strPath.find('/', iStart), strPath.size());
        const std::string strPart = strPath.substr(iStart, iEnd - iStart);
        if (strPart == ".." && !vecParts.empty())
            vecParts.pop_back();
        else if (!strPart.empty() && strPart != "." && strPart != "..")
            vecParts.push_back(strPart);
        iStart = iEnd + 1;
    }
    return vecParts;
}

bool Exists(const std::string& strHostPath)
{
    return access(strHostPath.c_str(), F_OK) == 0;
}

// The name in the folder that is the same but for case; the name itself if there is none.
std::string FindName(const std::string& strFolder, const std::string& strName)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> pFolder(opendir((strFolder + "/").c_str()), closedir);
    if (pFolder == nullptr)
        return strName;
    while (const dirent* pEntry = readdir(pFolder.get()))
        if (strcasecmp(pEntry->d_name, strName.c_str()) == 0)
            return pEntry->d_name;
    return strName;
}

// strRoot holds the parts, in whatever case they exist there.
std::string Resolve(const std::string& strRoot, const std::vector<std::string>& vecParts)
{
    std::string strExact = strRoot;
    for (const std::string& strPart : vecParts)
        strExact += "/" + strPart;
    if (vecParts.empty() || Exists(strExact))
        return strExact.empty() ? "/" : strExact;

    std::string strFound = strRoot;
    for (const std::string& strPart : vecParts)
        strFound += "/" + (Exists(strFound + "/" + strPart) ? strPart : FindName(strFound, strPart));
    return strFound;
}

std::string CurrentFolder()
{
    const std::unique_ptr<char, void (*)(void*)> pFolder(getcwd(nullptr, 0), free);
    return pFolder == nullptr ? "" : pFolder.get();
}
} // namespace

std::string HostPath(const std::string& strPath)
{
    std::string strSlashes = strPath;
    for (char& cLetter : strSlashes)
        if (cLetter == '\\')
            cLetter = '/';
    if (strSlashes.compare(0, 4, "//?/") == 0)
        strSlashes.erase(0, 4);
    if (strSlashes.empty())
        return strSlashes;

    if (!IsDrivePath(strSlashes))
    {
        const bool bAbsolute = strSlashes[0] == '/';
        return Resolve("", Parts(bAbsolute ? strSlashes : CurrentFolder() + "/" + strSlashes));
    }
    const char cDrive = static_cast<char>(std::tolower(static_cast<unsigned char>(strSlashes[0])));
    const std::string strRoot = cDrive == 'z' ? "" : machine::Folder() + "/" + cDrive;
    return Resolve(strRoot, Parts(strSlashes.substr(2)));
}

std::string machine::PlatformPath(const std::string& strHostPath)
{
    const std::string strFolder = Folder() + "/";
    const size_t iDrive = strFolder.size();
    const bool bOfMachine = strHostPath.compare(0, iDrive, strFolder) == 0 && strHostPath.size() > iDrive + 1 &&
                            std::isalpha(static_cast<unsigned char>(strHostPath[iDrive])) &&
                            strHostPath[iDrive + 1] == '/';
    std::string strPath = "Z:" + strHostPath;
    if (bOfMachine)
        strPath = std::string(1, static_cast<char>(std::toupper(static_cast<unsigned char>(strHostPath[iDrive])))) +
                  ":" + strHostPath.substr(iDrive + 1);
    for (char& cLetter : strPath)
        if (cLetter == '/')
            cLetter = '\\';
    return strPath;
}
