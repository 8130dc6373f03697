// Requests to one open device: answered at once, late, or never.
#include "devices/device_file.h"

#include "base/error.h"
#include "base/failure.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

namespace
{
constexpr DWORD READ_WRITE = FILE_SHARE_READ | FILE_SHARE_WRITE;

// The access rights as the sharing mode that grants them.
DWORD ShareFor(DWORD dwAccess)
{
    const DWORD dwRead = (dwAccess & GENERIC_READ) != 0 ? FILE_SHARE_READ : 0;
    const DWORD dwWrite = (dwAccess & GENERIC_WRITE) != 0 ? FILE_SHARE_WRITE : 0;
    return dwRead | dwWrite;
}

void Record(const machine::Device& oDevice, const char* pWhat, DWORD dwCode = 0)
{
    machine::SentItem oItem;
    oItem.strDevice = oDevice.strName;
    oItem.strWhat = pWhat;
    oItem.dwCode = dwCode;
    CDeviceBus::Instance().Record(std::move(oItem));
}

void Record(const machine::Device& oDevice, const machine::DeviceRequest& oRequest)
{
    machine::SentItem oItem;
    oItem.strDevice = oDevice.strName;
    oItem.strWhat = "request";
    oItem.dwCode = oRequest.dwCode;
    oItem.vecData = oRequest.vecInput;
    oItem.dwOutputSize = oRequest.dwOutputSize;
    CDeviceBus::Instance().Record(std::move(oItem));
}
} // namespace

CDeviceFile::CDeviceFile(CDevicePointer pDevice, const COpenCall& oCall)
    : m_pDevice(std::move(pDevice)),
      m_dwAccess(ShareFor(oCall.dwAccess)),
      m_dwShare(oCall.dwShare & READ_WRITE),
      m_bOverlapped((oCall.dwFlags & FILE_FLAG_OVERLAPPED) != 0)
{
}

bool CDeviceFile::MayStandBeside(const CDeviceFile& oOther) const
{
    return (m_dwAccess & ~oOther.m_dwShare) == 0 && (oOther.m_dwAccess & ~m_dwShare) == 0;
}

BOOL CDeviceFile::Control(const CControlCall& oCall)
{
    if (m_bOverlapped && oCall.pRecord == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    OVERLAPPED stOwn{};
    auto pPending = std::make_shared<CPending>();
    pPending->pRecord = oCall.pRecord != nullptr ? oCall.pRecord : &stOwn;
    pPending->pOutput = oCall.pOutput;
    pPending->dwOutputSize = oCall.oRequest.dwOutputSize;
    pPending->bSenderWaits = !m_bOverlapped;
    if (pPending->pRecord->hEvent != nullptr)
        pPending->pEvent = KernelObjectAs<CKernelEvent>(pPending->pRecord->hEvent);
    else
        pPending->pEvent = m_bOverlapped ? DoneEvent() : std::make_shared<CKernelEvent>(true, false);
    if (pPending->pEvent == nullptr)
        return FALSE;
    pPending->pEvent->Reset();
    MarkPending(*pPending->pRecord);
    return Answer(oCall, pPending);
}

BOOL CDeviceFile::Answer(const CControlCall& oCall, const CPendingPointer& pPending)
{
    Record(*m_pDevice, oCall.oRequest);
    if (m_pDevice->fScript)
        pPending->oAnswer = m_pDevice->fScript(oCall.oRequest);
    const machine::DeviceAnswer& oAnswer = pPending->oAnswer;
    DWORD dwIgnored = 0;
    const LPDWORD pReturned = oCall.pReturned != nullptr ? oCall.pReturned : &dwIgnored;
    *pReturned = 0;
    if (oAnswer.eCompletion == machine::Completion::AtOnce && oAnswer.dwError != ERROR_SUCCESS)
        return FailWith(oAnswer.dwError); // signals nothing, and leaves the record's mark at pending
    if (oAnswer.eCompletion == machine::Completion::AtOnce)
    {
        Finish(*pPending, ERROR_SUCCESS);
        return ResultOf(*pPending->pRecord, pReturned);
    }
    Hold(pPending);
    if (m_bOverlapped)
        return FailWith(ERROR_IO_PENDING);
    pPending->pEvent->Wait(INFINITE);
    return ResultOf(*pPending->pRecord, pReturned);
}

void CDeviceFile::Hold(const CPendingPointer& pPending)
{
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        m_vecPending.push_back(pPending);
    }
    if (pPending->oAnswer.eCompletion != machine::Completion::Late)
        return;
    const std::weak_ptr<CDeviceFile> pWeak = weak_from_this();
    std::thread(
        [pWeak, pPending]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(pPending->oAnswer.dwDelay));
            if (const std::shared_ptr<CDeviceFile> pFile = pWeak.lock())
                pFile->Complete(pPending, pPending->oAnswer.dwError);
        })
        .detach();
}

void CDeviceFile::Complete(const CPendingPointer& pPending, DWORD dwError)
{
    const std::lock_guard<std::mutex> oLock(m_oMutex);
    const auto itPending = std::find(m_vecPending.begin(), m_vecPending.end(), pPending);
    if (itPending == m_vecPending.end())
        return;
    m_vecPending.erase(itPending);
    Finish(*pPending, dwError);
}

void CDeviceFile::Finish(const CPending& oPending, DWORD dwError) const
{
    const std::vector<BYTE>& vecOutput = oPending.oAnswer.vecOutput;
    size_t iBytes = 0;
    if (dwError == ERROR_SUCCESS && oPending.pOutput != nullptr)
        iBytes = std::min<size_t>(vecOutput.size(), oPending.dwOutputSize);
    if (iBytes > 0)
        std::memcpy(oPending.pOutput, vecOutput.data(), iBytes);
    MarkCompleted(*oPending.pRecord, dwError, static_cast<DWORD>(iBytes));
    oPending.pEvent->Set();
}

bool CDeviceFile::Cancel(LPOVERLAPPED pRecord)
{
    Record(*m_pDevice, "cancel");
    std::vector<CPendingPointer> vecAsked;
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        for (const CPendingPointer& pPending : m_vecPending)
            if (pRecord == nullptr || pPending->pRecord == pRecord)
                vecAsked.push_back(pPending);
    }
    for (const CPendingPointer& pPending : vecAsked)
        if (pPending->oAnswer.eCompletion != machine::Completion::Deaf)
            Complete(pPending, ERROR_OPERATION_ABORTED);
    return !vecAsked.empty();
}

size_t CDeviceFile::CompleteHung()
{
    std::vector<CPendingPointer> vecHung;
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        for (const CPendingPointer& pPending : m_vecPending)
            if (pPending->oAnswer.eCompletion != machine::Completion::Late)
                vecHung.push_back(pPending);
    }
    for (const CPendingPointer& pPending : vecHung)
        Complete(pPending, ERROR_SUCCESS);
    return vecHung.size();
}

void CDeviceFile::HandleClosed()
{
    CDeviceBus::Instance().Leave(this);
    {
        const std::lock_guard<std::mutex> oLock(m_oMutex);
        for (const CPendingPointer& pPending : m_vecPending)
            if (pPending->bSenderWaits)
                Finish(*pPending, ERROR_OPERATION_ABORTED);
        m_vecPending.clear();
    }
    Record(*m_pDevice, "close");
}

bool IsDeviceName(const std::string& strName)
{
    return strName.compare(0, 4, "\\\\.\\") == 0 || strName.compare(0, 4, "\\\\?\\") == 0;
}

HANDLE OpenDevice(const COpenCall& oCall)
{
    CDeviceBus& oBus = CDeviceBus::Instance();
    const CDevicePointer pDevice = oBus.Find(oCall.strName);
    if (pDevice == nullptr)
    {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    const auto pFile = std::make_shared<CDeviceFile>(pDevice, oCall);
    const DWORD dwError = pDevice->dwOpenError != ERROR_SUCCESS ? pDevice->dwOpenError : oBus.Enter(pFile);
    Record(*pDevice, "open", dwError);
    if (dwError != ERROR_SUCCESS)
    {
        SetLastError(dwError);
        return INVALID_HANDLE_VALUE;
    }
    return OpenKernelHandle(pFile);
}

BOOL DeviceIoControl(HANDLE hDevice, DWORD dwIoControlCode, LPVOID lpInBuffer, DWORD nInBufferSize, LPVOID lpOutBuffer,
                     DWORD nOutBufferSize, LPDWORD lpBytesReturned, LPOVERLAPPED lpOverlapped)
{
    if (IsToldToFail("DeviceIoControl"))
        return FALSE;
    const std::shared_ptr<CDeviceFile> pFile = KernelObjectAs<CDeviceFile>(hDevice);
    if (pFile == nullptr)
        return FALSE;
    if (lpBytesReturned == nullptr && lpOverlapped == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if ((lpInBuffer == nullptr && nInBufferSize > 0) || (lpOutBuffer == nullptr && nOutBufferSize > 0))
        return FailWith(ERROR_NOACCESS);
    CControlCall oCall;
    oCall.oRequest.dwCode = dwIoControlCode;
    oCall.oRequest.dwOutputSize = nOutBufferSize;
    if (nInBufferSize > 0)
        oCall.oRequest.vecInput.assign(static_cast<const BYTE*>(lpInBuffer),
                                       static_cast<const BYTE*>(lpInBuffer) + nInBufferSize);
    oCall.pOutput = static_cast<BYTE*>(lpOutBuffer);
    oCall.pReturned = lpBytesReturned;
    oCall.pRecord = lpOverlapped;
    return pFile->Control(oCall);
}
