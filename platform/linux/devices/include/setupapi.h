// The search for device interfaces.
#pragma once

#include <windows.h>

#define DIGCF_PRESENT 0x00000002
#define DIGCF_DEVICEINTERFACE 0x00000010

#define SPINT_ACTIVE 0x00000001

#define ANYSIZE_ARRAY 1

typedef PVOID HDEVINFO;

typedef struct _SP_DEVINFO_DATA
{
    DWORD cbSize;
    GUID ClassGuid;
    DWORD DevInst;
    ULONG_PTR Reserved;
} SP_DEVINFO_DATA, *PSP_DEVINFO_DATA;

typedef struct _SP_DEVICE_INTERFACE_DATA
{
    DWORD cbSize;
    GUID InterfaceClassGuid;
    DWORD Flags;
    ULONG_PTR Reserved;
} SP_DEVICE_INTERFACE_DATA, *PSP_DEVICE_INTERFACE_DATA;

// cbSize is that of the fixed part, 8; the path runs on behind it.
typedef struct _SP_DEVICE_INTERFACE_DETAIL_DATA_W
{
    DWORD cbSize;
    WCHAR DevicePath[ANYSIZE_ARRAY];
} SP_DEVICE_INTERFACE_DETAIL_DATA_W, *PSP_DEVICE_INTERFACE_DETAIL_DATA_W;

extern "C"
{
    // The set of the machine's interfaces of a class as they stand at the call; only with DIGCF_DEVICEINTERFACE.
    // INVALID_HANDLE_VALUE on failure. A class without devices gives an empty set.
    HDEVINFO SetupDiGetClassDevsW(CONST GUID* ClassGuid, PCWSTR Enumerator, HWND hwndParent, DWORD Flags);
    // ERROR_NO_MORE_ITEMS behind the last one, ERROR_INVALID_USER_BUFFER for a record whose cbSize isn't its size.
    BOOL SetupDiEnumDeviceInterfaces(HDEVINFO DeviceInfoSet, PSP_DEVINFO_DATA DeviceInfoData,
                                     CONST GUID* InterfaceClassGuid, DWORD MemberIndex,
                                     PSP_DEVICE_INTERFACE_DATA DeviceInterfaceData);
    // ERROR_INSUFFICIENT_BUFFER, and the size in bytes, when the room (none at first) is too small. Nothing is told of
    // the device itself.
    BOOL SetupDiGetDeviceInterfaceDetailW(HDEVINFO DeviceInfoSet, PSP_DEVICE_INTERFACE_DATA DeviceInterfaceData,
                                          PSP_DEVICE_INTERFACE_DETAIL_DATA_W DeviceInterfaceDetailData,
                                          DWORD DeviceInterfaceDetailDataSize, PDWORD RequiredSize,
                                          PSP_DEVINFO_DATA DeviceInfoData);
    BOOL SetupDiDestroyDeviceInfoList(HDEVINFO DeviceInfoSet);
}
