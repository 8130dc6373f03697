// The search for device interfaces.
#include "base/error.h"
#include "base/failure.h"
#include "devices/device_bus.h"
#include "text/wide.h"
#include "threads/kernel.h"

#include <setupapi.h>

#include <cstring>

namespace
{
constexpr DWORD DETAIL_SIZE = 8; // of the detail record's fixed part

// The interfaces of one class as they stood at the search.
class CDeviceInfoSet : public CKernelObject
{
public:
    GUID m_oInterface{};
    std::vector<CDevicePointer> m_vecDevices;
};
} // namespace

HDEVINFO SetupDiGetClassDevsW(CONST GUID* ClassGuid, PCWSTR, HWND, DWORD Flags)
{
    if (IsToldToFail("SetupDiGetClassDevsW"))
        return INVALID_HANDLE_VALUE;
    if (ClassGuid == nullptr || (Flags & DIGCF_DEVICEINTERFACE) == 0)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    const auto pSet = std::make_shared<CDeviceInfoSet>();
    pSet->m_oInterface = *ClassGuid;
    pSet->m_vecDevices = CDeviceBus::Instance().OfInterface(*ClassGuid);
    return OpenKernelHandle(pSet);
}

BOOL SetupDiEnumDeviceInterfaces(HDEVINFO DeviceInfoSet, PSP_DEVINFO_DATA, CONST GUID* InterfaceClassGuid,
                                 DWORD MemberIndex, PSP_DEVICE_INTERFACE_DATA DeviceInterfaceData)
{
    if (IsToldToFail("SetupDiEnumDeviceInterfaces"))
        return FALSE;
    const std::shared_ptr<CDeviceInfoSet> pSet = KernelObjectAs<CDeviceInfoSet>(DeviceInfoSet);
    if (pSet == nullptr)
        return FALSE;
    if (InterfaceClassGuid == nullptr || DeviceInterfaceData == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    if (DeviceInterfaceData->cbSize != sizeof(SP_DEVICE_INTERFACE_DATA))
        return FailWith(ERROR_INVALID_USER_BUFFER);
    if (*InterfaceClassGuid != pSet->m_oInterface || MemberIndex >= pSet->m_vecDevices.size())
        return FailWith(ERROR_NO_MORE_ITEMS);
    DeviceInterfaceData->InterfaceClassGuid = pSet->m_oInterface;
    DeviceInterfaceData->Flags = SPINT_ACTIVE;
    DeviceInterfaceData->Reserved = MemberIndex + 1;
    return TRUE;
}

BOOL SetupDiGetDeviceInterfaceDetailW(HDEVINFO DeviceInfoSet, PSP_DEVICE_INTERFACE_DATA DeviceInterfaceData,
                                      PSP_DEVICE_INTERFACE_DETAIL_DATA_W DeviceInterfaceDetailData,
                                      DWORD DeviceInterfaceDetailDataSize, PDWORD RequiredSize, PSP_DEVINFO_DATA)
{
    if (IsToldToFail("SetupDiGetDeviceInterfaceDetailW"))
        return FALSE;
    const std::shared_ptr<CDeviceInfoSet> pSet = KernelObjectAs<CDeviceInfoSet>(DeviceInfoSet);
    if (pSet == nullptr)
        return FALSE;
    if (DeviceInterfaceData == nullptr || DeviceInterfaceData->Reserved == 0 ||
        DeviceInterfaceData->Reserved > pSet->m_vecDevices.size())
        return FailWith(ERROR_INVALID_PARAMETER);
    const bool bSizeOnly = DeviceInterfaceDetailData == nullptr;
    const bool bWrongDetail =
        bSizeOnly ? DeviceInterfaceDetailDataSize != 0 : DeviceInterfaceDetailData->cbSize != DETAIL_SIZE;
    if (DeviceInterfaceData->cbSize != sizeof(SP_DEVICE_INTERFACE_DATA) || bWrongDetail)
        return FailWith(ERROR_INVALID_USER_BUFFER);

    const std::wstring strWide = WideOf(PathOf(*pSet->m_vecDevices[DeviceInterfaceData->Reserved - 1]));
    const size_t iPathSize = (strWide.size() + 1) * sizeof(WCHAR);
    const size_t iSize = offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath) + iPathSize;
    if (RequiredSize != nullptr)
        *RequiredSize = static_cast<DWORD>(iSize);
    if (DeviceInterfaceDetailDataSize < iSize)
        return FailWith(ERROR_INSUFFICIENT_BUFFER);
    BYTE* const pPath =
        reinterpret_cast<BYTE*>(DeviceInterfaceDetailData) + iSize - iPathSize; // runs on behind the record
    std::memcpy(pPath, strWide.c_str(), iPathSize);
    return TRUE;
}

BOOL SetupDiDestroyDeviceInfoList(HDEVINFO DeviceInfoSet)
{
    return KernelObjectAs<CDeviceInfoSet>(DeviceInfoSet) != nullptr && CloseKernelHandle(DeviceInfoSet) ? TRUE : FALSE;
}
