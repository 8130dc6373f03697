// The body of the two codec gain classes: the search for the driver, its opening, the gain request.
#include "apo/kelvane/apo_kelvane_codec.h"

#include "audioapi/audio_api_handle.h"
#include "audioapi/audio_api_log.h"
#include "audioapi/audio_api_result.h"

#include <mutex>

namespace
{
static_assert(sizeof(SP_DEVICE_INTERFACE_DATA) == 32 && sizeof(SP_DEVINFO_DATA) == 32 &&
              sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W) == 8);
} // namespace

CCodecGainConfig::~CCodecGainConfig()
{
    SetLowHWGain();
    if (m_hDevInfo != INVALID_HANDLE_VALUE)
        SetupDiDestroyDeviceInfoList(m_hDevInfo);
}

DWORD CCodecGainConfig::FindCodecRes()
{
    SP_DEVICE_INTERFACE_DATA oDevInterfaceData = {};
    SP_DEVINFO_DATA oDevInfoData = {};
    oDevInterfaceData.cbSize = sizeof(oDevInterfaceData);
    oDevInfoData.cbSize = sizeof(oDevInfoData);
    DWORD ulSize = 0;
    SetLastError(ERROR_SUCCESS);
    if (const DWORD dwResult = FindTargetGuid(m_oDesign.guidInterface, &oDevInterfaceData, ulSize))
    {
        AUDIOLOG_ERROR(dwResult, m_oDesign.pFindGuid);
        return dwResult;
    }
    return AUDIO_CHECK(OpenDeviceInterface(oDevInterfaceData, oDevInfoData, ulSize));
}

// The walk leaves the record at the last interface; the first one is the one wanted.
DWORD CCodecGainConfig::FindTargetGuid(const GUID& guidInterface, PSP_DEVICE_INTERFACE_DATA pDevInterfaceData,
                                       DWORD& ulSize)
{
    m_hDevInfo = SetupDiGetClassDevsW(&guidInterface, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
    if (AUDIO_FAIL_IF((INVALID_HANDLE_VALUE == m_hDevInfo), AUDIO_NO_HANDLE))
        return AUDIO_NO_HANDLE;
    DWORD index = 0;
    while (SetupDiEnumDeviceInterfaces(m_hDevInfo, nullptr, &guidInterface, index, pDevInterfaceData))
        ++index;
    if (index == 0)
        return AUDIO_NO_OBJECT;
    index = 0;
    if (const DWORD dwResult = AUDIO_CHECK_WIN(
            SetupDiEnumDeviceInterfaces(m_hDevInfo, nullptr, (LPGUID)&guidInterface, index, pDevInterfaceData)))
        return dwResult;
    if (SetupDiGetDeviceInterfaceDetailW(m_hDevInfo, pDevInterfaceData, nullptr, 0, &ulSize, nullptr))
        return 0;
    const DWORD dwError = AudioLastError();
    return dwError == ERROR_INSUFFICIENT_BUFFER ? 0 : dwError;
}

DWORD CCodecGainConfig::OpenDeviceInterface(SP_DEVICE_INTERFACE_DATA& oDevInterfaceData, SP_DEVINFO_DATA& oDevInfoData,
                                            const DWORD& ulSize)
{
    if (AUDIO_FAIL_IF((ulSize == 0), AUDIO_BAD_DATA))
        return AUDIO_BAD_DATA;
    const CAudioLocalMemory pMemory(LocalAlloc(LPTR, ulSize));
    auto* const pDevInterfaceDetailData = static_cast<PSP_DEVICE_INTERFACE_DETAIL_DATA_W>(pMemory.get());
    if (AUDIO_MISSING(pDevInterfaceDetailData, AUDIO_NO_OBJECT))
        return AUDIO_NO_OBJECT;
    pDevInterfaceDetailData->cbSize = sizeof(*pDevInterfaceDetailData);
    if (const DWORD dwResult =
            AudioCheckWin(SetupDiGetDeviceInterfaceDetailW(m_hDevInfo, &oDevInterfaceData, pDevInterfaceDetailData,
                                                           ulSize, nullptr, &oDevInfoData),
                          AUDIO_LOG_SITE,
                          "SetupDiGetDeviceInterfaceDetail(m_hDevInfo, &oDevInterfaceData, pDevInterfaceDetailData, "
                          "ulSize, nullptr, &oDevInfoData)"))
        return dwResult;
    // Overlapped, so that no thread is needed to wait within bounds: while a module is loaded or freed none can begin.
    const HANDLE m_hDevicePath = // the message's name for it
        CreateFileW(pDevInterfaceDetailData->DevicePath, GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    m_oDevice.Open(m_hDevicePath);
    return AUDIO_FAIL_IF((INVALID_HANDLE_VALUE == m_hDevicePath), AUDIO_NO_HANDLE) ? AUDIO_NO_HANDLE : 0;
}

DWORD CCodecGainConfig::SetHWGain(ULONG ulGain, const char* pDone)
{
    const std::lock_guard<CAudioLock> oGuard(m_csRequest);
    if (!m_oDevice.IsOpen())
        return 0;
    DWORD cbBytesReturned = 0;
    if (const DWORD dwResult = AudioCheckResult(Request(ulGain, cbBytesReturned), AUDIO_LOG_SITE, m_oDesign.pRequest))
        return dwResult;
    AUDIOLOG_DEBUG(pDone + (m_oDesign.bTellReturned ? std::to_string(cbBytesReturned) : std::string()));
    return 0;
}

// The driver's answer is its own business; it finds 1 there. Little-endian: a request of one byte carries the first.
DWORD CCodecGainConfig::Request(ULONG ulGain, DWORD& dwReturned)
{
    if (m_oDevice.IsPending())
        return ERROR_TIMEOUT;
    CKelvaneRequest* const pRequest = m_oDevice.NewRequest();
    if (pRequest == nullptr)
        return ERROR_OUTOFMEMORY;
    pRequest->dwCode = m_oDesign.dwRequest;
    pRequest->aInput[0] = ulGain;
    pRequest->dwInputSize = m_oDesign.dwSize;
    pRequest->ulOutput = 1;
    pRequest->dwOutputSize = m_oDesign.dwSize;
    DWORD dwResult = m_oDevice.Send(*pRequest);
    if (dwResult == ERROR_IO_PENDING)
        dwResult = m_oDevice.Wait(*pRequest, DEVICE_CALL_WAIT);
    dwReturned = pRequest->dwReturned;
    return dwResult;
}
