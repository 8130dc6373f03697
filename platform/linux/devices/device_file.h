// One open device: its pending requests, and how the device answers them.
#pragma once

#include "devices/device_bus.h"
#include "files/iofile.h"

// A request as DeviceIoControl takes it.
struct CControlCall
{
    machine::DeviceRequest oRequest;
    BYTE* pOutput = nullptr;
    LPDWORD pReturned = nullptr;
    LPOVERLAPPED pRecord = nullptr;
};

class CDeviceFile : public CIoFile, public std::enable_shared_from_this<CDeviceFile>
{
public:
    CDeviceFile(CDevicePointer pDevice, const COpenCall& oCall);
    const machine::Device* Device() const { return m_pDevice.get(); }
    // Whether each side's sharing mode grants the other's access.
    bool MayStandBeside(const CDeviceFile& oOther) const;

    BOOL Control(const CControlCall& oCall);
    bool Cancel(LPOVERLAPPED pRecord) override;
    // Completes, with success, what the device holds back for ever. Gives how many.
    size_t CompleteHung();
    // Forgets what is pending: after this no record or buffer of a caller is touched.
    void HandleClosed() override;

private:
    struct CPending
    {
        LPOVERLAPPED pRecord = nullptr;
        std::shared_ptr<CKernelEvent> pEvent;
        BYTE* pOutput = nullptr;
        DWORD dwOutputSize = 0;
        machine::DeviceAnswer oAnswer;
        bool bSenderWaits = false; // in the call itself
    };
    using CPendingPointer = std::shared_ptr<CPending>;

    BOOL Answer(const CControlCall& oCall, const CPendingPointer& pPending);
    void Hold(const CPendingPointer& pPending);
    // Does nothing for a request that isn't pending any more.
    void Complete(const CPendingPointer& pPending, DWORD dwError);
    void Finish(const CPending& oPending, DWORD dwError) const;

    const CDevicePointer m_pDevice;
    const DWORD m_dwAccess;
    const DWORD m_dwShare;
    const bool m_bOverlapped;
    std::mutex m_oMutex;
    std::vector<CPendingPointer> m_vecPending;
};
