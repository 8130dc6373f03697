// What device calls, automation values and the instrumentation's interfaces share with the platform: sizes, slots.
#include <windows.h>

#include <winioctl.h>

#include <gtest/gtest.h>
#include <oleauto.h>
#include <setupapi.h>
#include <wbemidl.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace
{
static_assert(sizeof(OVERLAPPED) == 32 && offsetof(OVERLAPPED, hEvent) == 24);
static_assert(sizeof(SP_DEVICE_INTERFACE_DATA) == 32 && offsetof(SP_DEVICE_INTERFACE_DATA, Reserved) == 24);
static_assert(sizeof(SP_DEVINFO_DATA) == 32 && sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W) == 8);
static_assert(offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_W, DevicePath) == 4);
static_assert(sizeof(VARIANT) == 24 && offsetof(VARIANT, bstrVal) == 8 && offsetof(VARIANT, parray) == 8);
static_assert(sizeof(SAFEARRAY) == 32 && offsetof(SAFEARRAY, pvData) == 16 && offsetof(SAFEARRAY, rgsabound) == 24);
static_assert(CTL_CODE(0x0400, 0x705, METHOD_BUFFERED, FILE_ANY_ACCESS) == 0x04001C14);
static_assert(CTL_CODE(FILE_DEVICE_UNKNOWN, 0x10B, METHOD_OUT_DIRECT, FILE_ANY_ACCESS) == 0x0022042E);
static_assert((DIGCF_PRESENT | DIGCF_DEVICEINTERFACE) == 18 && LPTR == 0x40 && OPEN_EXISTING == 3);
static_assert((GENERIC_READ | GENERIC_WRITE | FILE_FLAG_OVERLAPPED) == 0xC0000000 && CIM_UINT64 == 21);
static_assert(ERROR_IO_PENDING == 997 && ERROR_IO_INCOMPLETE == 996 && ERROR_OPERATION_ABORTED == 995);

// A pointer to a virtual operation holds its table offset and 1, in both builds.
template <class Operation> size_t SlotOf(Operation pOperation)
{
    std::uintptr_t iOffset = 0;
    std::memcpy(&iOffset, &pOperation, sizeof iOffset);
    return (iOffset - 1) / sizeof(void*);
}
} // namespace

TEST(DeviceContract, InstrumentationSlotsStandInPublishedOrder)
{
    EXPECT_EQ(SlotOf(&IWbemLocator::ConnectServer), 3U);
    EXPECT_EQ(SlotOf(&IWbemServices::GetObject), 6U);
    EXPECT_EQ(SlotOf(&IWbemServices::ExecMethod), 24U);
    EXPECT_EQ(SlotOf(&IWbemServices::ExecMethodAsync), 25U);
    EXPECT_EQ(SlotOf(&IWbemClassObject::Get), 4U);
    EXPECT_EQ(SlotOf(&IWbemClassObject::Put), 5U);
    EXPECT_EQ(SlotOf(&IWbemClassObject::SpawnInstance), 15U);
    EXPECT_EQ(SlotOf(&IWbemClassObject::GetMethod), 19U);
    EXPECT_EQ(SlotOf(&IWbemClassObject::GetMethodOrigin), 26U);
}
