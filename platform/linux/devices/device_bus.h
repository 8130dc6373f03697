// The machine's devices as they stand: declared, attached, open, and what they were sent.
#pragma once

#include "platform/control/devices_native.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

class CDeviceFile;

// A device as it was attached; a later one of its name is another.
using CDevicePointer = std::shared_ptr<const machine::Device>;
using CControllerPointer = std::shared_ptr<const machine::Controller>;

// The path that an interface's device opens by: "\\?\kelvane#name#{class}".
std::string PathOf(const machine::Device& oDevice);

// Reads machine.xml when it is first asked and whenever the folder is another. Any thread; scripts never run under its
// lock.
class CDeviceBus
{
public:
    static CDeviceBus& Instance();

    // By "\\.\NAME" or an interface's path, without regard to case; null if there is none.
    CDevicePointer Find(const std::string& strOpenName);
    std::vector<CDevicePointer> OfInterface(const GUID& oInterface);
    CControllerPointer Controller();
    // What the machine declares of its power supply, if anything.
    std::optional<SYSTEM_POWER_STATUS> Power();

    void Attach(machine::Device oDevice);
    void SetController(CControllerPointer pController);
    void Reload();
    std::vector<std::string> Errors();

    // ERROR_SHARING_VIOLATION if the file can't be open beside those that are, else it is among them until Leave.
    DWORD Enter(const std::shared_ptr<CDeviceFile>& pFile);
    void Leave(const CDeviceFile* pFile);

    // Time and thread are the moment's.
    void Record(machine::SentItem oItem);
    std::vector<machine::SentItem> Sent(const std::string& strDevice);
    void ForgetSent();

    size_t CompleteHung();
    // Returns when CompleteHung is called next: a method of the controller that never completes.
    void WaitForHungCompletion();

private:
    using CLock = std::unique_lock<std::mutex>;
    void LoadIfOther(const CLock& oLock);

    std::mutex m_oMutex;
    std::condition_variable m_oHungDone;
    bool m_bLoaded = false;
    unsigned m_iGeneration = 0;
    std::vector<CDevicePointer> m_vecDevices;
    CControllerPointer m_pController;
    std::optional<SYSTEM_POWER_STATUS> m_oPower;
    std::vector<std::string> m_vecErrors;
    std::vector<std::weak_ptr<CDeviceFile>> m_vecOpen;
    std::deque<machine::SentItem> m_oSent;
    unsigned m_iHungWaiting = 0;
    unsigned m_iHungCompletions = 0;
};
