// The machine's folder: chosen by the environment or by a test.
#include "machine/folder.h"

#include "machine/power.h"
#include "platform/control/machine_native.h"
#include "time/clock.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <mutex>

namespace
{
std::atomic<unsigned> g_iGeneration{0};

struct CFolder
{
    std::mutex oMutex;
    std::string strFolder; // empty until first asked for
};

CFolder& TheFolder()
{
    static CFolder* const pFolder = new CFolder;
    return *pFolder;
}

std::string Variable(const char* pName)
{
    const char* pValue = std::getenv(pName);
    return pValue == nullptr ? "" : pValue;
}

std::string FolderOfEnvironment()
{
    std::string strMachine = Variable("KELVANE_MACHINE");
    if (!strMachine.empty())
        return strMachine;
    const std::string strData = Variable("XDG_DATA_HOME");
    return (strData.empty() ? Variable("HOME") + "/.local/share" : strData) + "/kelvane/machine";
}

std::string AbsoluteFolder(const std::string& strFolder)
{
    std::error_code oError;
    std::string strAbsolute = std::filesystem::absolute(strFolder, oError).lexically_normal().string();
    while (strAbsolute.size() > 1 && strAbsolute.back() == '/')
        strAbsolute.pop_back();
    return strAbsolute;
}
} // namespace

std::string machine::Folder()
{
    CFolder& oFolder = TheFolder();
    const std::lock_guard<std::mutex> oLock(oFolder.oMutex);
    if (oFolder.strFolder.empty())
        oFolder.strFolder = AbsoluteFolder(FolderOfEnvironment());
    return oFolder.strFolder;
}

void machine::UseFolder(const std::string& strFolder)
{
    {
        CFolder& oFolder = TheFolder();
        const std::lock_guard<std::mutex> oLock(oFolder.oMutex);
        oFolder.strFolder = AbsoluteFolder(strFolder);
    }
    ++g_iGeneration;
    Reset();
    DivideTimeouts(1);
    ClearFailures();
}

void machine::Reset()
{
    ResetClock();
    ResetPowerStatus();
}

unsigned MachineGeneration()
{
    return g_iGeneration;
}
