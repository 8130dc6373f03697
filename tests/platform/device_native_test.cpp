// Devices of the native machine: cancelled, and closed with a request that they hold.
#include "tests/platform/machine_file.h"
#include "tests/support/machine_test.h"

#include <winioctl.h>

#include <atomic>
#include <memory>
#include <thread>

namespace
{
constexpr DWORD SET_STATUS = CTL_CODE(0x0400, 0x705, METHOD_BUFFERED, FILE_ANY_ACCESS);

class DeviceTest : public MachineTest
{
protected:
    static BOOL Send(HANDLE hDevice, LPOVERLAPPED pRecord)
    {
        BYTE cRecord[8] = {0, 0, 0, 0, 2, 0, 0, 0};
        DWORD dwBytes = 0;
        return DeviceIoControl(hDevice, SET_STATUS, cRecord, sizeof(cRecord), nullptr, 0, &dwBytes, pRecord);
    }
};
} // namespace

// Two threads send, cancel and wait on one device: every request ends exactly once.
TEST_F(DeviceTest, CancellingRacesCompletionWithoutLoss)
{
    machine::AttachDevice({"KELVANE_DEVICE0", "", 0, [](const machine::DeviceRequest&) {
                               return machine::DeviceAnswer{0, machine::Completion::Late, 1, {}};
                           }});
    const HANDLE hDevice = CreateFileA("\\\\.\\KELVANE_DEVICE0", GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                       OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    std::atomic<bool> bStop{false};
    std::thread oCanceller(
        [&]
        {
            while (!bStop)
                CancelIoEx(hDevice, nullptr);
        });
    for (int i = 0; i < 100; i++)
    {
        auto pRecord = std::make_unique<OVERLAPPED>();
        pRecord->hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        EXPECT_FALSE(Send(hDevice, pRecord.get()));
        DWORD dwBytes = 0;
        const BOOL bDone = GetOverlappedResult(hDevice, pRecord.get(), &dwBytes, TRUE);
        EXPECT_TRUE(bDone || GetLastError() == ERROR_OPERATION_ABORTED) << GetLastError();
        EXPECT_TRUE(CloseHandle(pRecord->hEvent));
    }
    bStop = true;
    oCanceller.join();
    auto pRecord = std::make_unique<OVERLAPPED>();
    EXPECT_FALSE(Send(hDevice, pRecord.get()));
    EXPECT_TRUE(CloseHandle(hDevice));
    pRecord.reset(); // the sanitizer sees any later touch
    Sleep(20);
}
