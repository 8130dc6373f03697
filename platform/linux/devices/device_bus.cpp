// The machine's devices: found, shared, and what they were sent.
#include "devices/device_bus.h"

#include "devices/device_file.h"
#include "machine/folder.h"
#include "machine/machine_xml.h"
#include "platform/control/machine_native.h"
#include "text/wide.h"
#include "threads/kernel.h"

#include <combaseapi.h>

#include <strings.h>

#include <algorithm>
#include <cctype>

namespace
{
constexpr size_t SENT_ITEMS = 100000;

bool IsSameName(const std::string& strOne, const std::string& strOther)
{
    return strcasecmp(strOne.c_str(), strOther.c_str()) == 0;
}

std::string OpenNameOf(const machine::Device& oDevice)
{
    return oDevice.strInterface.empty() ? "\\\\.\\" + oDevice.strName : PathOf(oDevice);
}
} // namespace

std::string PathOf(const machine::Device& oDevice)
{
    std::string strPath = "\\\\?\\kelvane#" + oDevice.strName + "#" + oDevice.strInterface;
    std::transform(strPath.begin(), strPath.end(), strPath.begin(),
                   [](unsigned char cLetter) { return static_cast<char>(std::tolower(cLetter)); });
    return strPath;
}

// Never destroyed: pool threads may still come after the process's end began.
CDeviceBus& CDeviceBus::Instance()
{
    static CDeviceBus* const pBus = new CDeviceBus;
    return *pBus;
}

void CDeviceBus::LoadIfOther(const CLock&)
{
    const unsigned iGeneration = MachineGeneration();
    if (m_bLoaded && iGeneration == m_iGeneration)
        return;
    if (iGeneration != m_iGeneration)
        m_oSent.clear();
    m_bLoaded = true;
    m_iGeneration = iGeneration;
    CDeclaredMachine oDeclared = ReadMachineXml(machine::Folder() + "/machine.xml");
    m_vecDevices.clear();
    for (machine::Device& oDevice : oDeclared.vecDevices)
        m_vecDevices.push_back(std::make_shared<const machine::Device>(std::move(oDevice)));
    m_pController.reset();
    if (oDeclared.oController.has_value())
        m_pController = std::make_shared<const machine::Controller>(std::move(*oDeclared.oController));
    m_oPower = oDeclared.oPower;
    m_vecErrors = std::move(oDeclared.vecErrors);
}

CDevicePointer CDeviceBus::Find(const std::string& strOpenName)
{
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    for (const CDevicePointer& pDevice : m_vecDevices)
        if (IsSameName(OpenNameOf(*pDevice), strOpenName))
            return pDevice;
    return nullptr;
}

std::vector<CDevicePointer> CDeviceBus::OfInterface(const GUID& oInterface)
{
    OLECHAR strWide[40] = {};
    StringFromGUID2(oInterface, strWide, 40);
    const std::string strInterface = NarrowOf(strWide);

    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    std::vector<CDevicePointer> vecFound;
    for (const CDevicePointer& pDevice : m_vecDevices)
        if (IsSameName(pDevice->strInterface, strInterface))
            vecFound.push_back(pDevice);
    return vecFound;
}

CControllerPointer CDeviceBus::Controller()
{
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    return m_pController;
}

std::optional<SYSTEM_POWER_STATUS> CDeviceBus::Power()
{
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    return m_oPower;
}

void CDeviceBus::Attach(machine::Device oDevice)
{
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    auto pNew = std::make_shared<const machine::Device>(std::move(oDevice));
    for (CDevicePointer& pDevice : m_vecDevices)
    {
        if (!IsSameName(pDevice->strName, pNew->strName))
            continue;
        pDevice = std::move(pNew);
        return;
    }
    m_vecDevices.push_back(std::move(pNew));
}

void CDeviceBus::SetController(CControllerPointer pController)
{
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    m_pController = std::move(pController);
}

void CDeviceBus::Reload()
{
    const CLock oLock(m_oMutex);
    m_bLoaded = false;
    LoadIfOther(oLock);
}

std::vector<std::string> CDeviceBus::Errors()
{
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    return m_vecErrors;
}

DWORD CDeviceBus::Enter(const std::shared_ptr<CDeviceFile>& pFile)
{
    const CLock oLock(m_oMutex);
    for (const std::weak_ptr<CDeviceFile>& pWeak : m_vecOpen)
    {
        const std::shared_ptr<CDeviceFile> pOpen = pWeak.lock();
        const bool bSame = pOpen != nullptr && IsSameName(pOpen->Device()->strName, pFile->Device()->strName);
        if (bSame && !pFile->MayStandBeside(*pOpen))
            return ERROR_SHARING_VIOLATION;
    }
    m_vecOpen.push_back(pFile);
    return ERROR_SUCCESS;
}

void CDeviceBus::Leave(const CDeviceFile* pFile)
{
    const CLock oLock(m_oMutex);
    m_vecOpen.erase(std::remove_if(m_vecOpen.begin(), m_vecOpen.end(),
                                   [pFile](const std::weak_ptr<CDeviceFile>& pOpen)
                                   { return pOpen.expired() || pOpen.lock().get() == pFile; }),
                    m_vecOpen.end());
}

void CDeviceBus::Record(machine::SentItem oItem)
{
    oItem.dwThread = GetCurrentThreadId();
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    GetSystemTimeAsFileTime(&oItem.stTime); // under the lock, so that times rise
    m_oSent.push_back(std::move(oItem));
    if (m_oSent.size() > SENT_ITEMS)
        m_oSent.pop_front();
}

std::vector<machine::SentItem> CDeviceBus::Sent(const std::string& strDevice)
{
    const CLock oLock(m_oMutex);
    LoadIfOther(oLock);
    std::vector<machine::SentItem> vecSent;
    for (const machine::SentItem& oItem : m_oSent)
        if (strDevice.empty() || IsSameName(oItem.strDevice, strDevice))
            vecSent.push_back(oItem);
    return vecSent;
}

void CDeviceBus::ForgetSent()
{
    const CLock oLock(m_oMutex);
    m_oSent.clear();
}

size_t CDeviceBus::CompleteHung()
{
    std::vector<std::shared_ptr<CDeviceFile>> vecOpen;
    size_t iCompleted = 0;
    {
        const CLock oLock(m_oMutex);
        for (const std::weak_ptr<CDeviceFile>& pWeak : m_vecOpen)
            if (std::shared_ptr<CDeviceFile> pFile = pWeak.lock())
                vecOpen.push_back(std::move(pFile));
        iCompleted = m_iHungWaiting;
        ++m_iHungCompletions;
        m_oHungDone.notify_all();
    }
    for (const std::shared_ptr<CDeviceFile>& pFile : vecOpen)
        iCompleted += pFile->CompleteHung();
    return iCompleted;
}

void CDeviceBus::WaitForHungCompletion()
{
    const CKernelIdleScope oIdle;
    CLock oLock(m_oMutex);
    const unsigned iBefore = m_iHungCompletions;
    ++m_iHungWaiting;
    m_oHungDone.wait(oLock, [this, iBefore] { return m_iHungCompletions != iBefore; });
    --m_iHungWaiting;
}

void machine::AttachDevice(Device oDevice)
{
    CDeviceBus::Instance().Attach(std::move(oDevice));
}

void machine::AttachController(machine::Controller oController)
{
    CDeviceBus::Instance().SetController(std::make_shared<const machine::Controller>(std::move(oController)));
}

void machine::RemoveController()
{
    CDeviceBus::Instance().SetController(nullptr);
}

size_t machine::CompleteHungRequests()
{
    return CDeviceBus::Instance().CompleteHung();
}

std::vector<machine::SentItem> machine::Sent(const std::string& strDevice)
{
    return CDeviceBus::Instance().Sent(strDevice);
}

void machine::ForgetSent()
{
    CDeviceBus::Instance().ForgetSent();
}

void machine::ReloadDevices()
{
    CDeviceBus::Instance().Reload();
}

std::vector<std::string> machine::DeviceErrors()
{
    return CDeviceBus::Instance().Errors();
}
