// Devices of the native machine: opened, asked, late, hanging, cancelled, found by interface, and what they were sent.
#include "tests/platform/machine_file.h"
#include "tests/support/machine_test.h"

#include <winioctl.h>

#include <setupapi.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <thread>

namespace
{
constexpr DWORD SET_STATUS = CTL_CODE(0x0400, 0x705, METHOD_BUFFERED, FILE_ANY_ACCESS);
constexpr GUID EVEREST = {0xF27CDC00, 0x203E, 0x4107, {0xA5, 0x03, 0x21, 0x21, 0x15, 0x37, 0xEA, 0x43}};
constexpr GUID SENARY = {0x54C9343C, 0x2A17, 0x42E8, {0xB4, 0xFD, 0x9F, 0x9D, 0xA2, 0x7B, 0x94, 0xD6}};

class DeviceTest : public MachineTest
{
protected:
    static HANDLE Open(DWORD dwFlags, DWORD dwShare = 0, const char* pName = "\\\\.\\KELVANE_DEVICE0")
    {
        return CreateFileA(pName, GENERIC_READ | GENERIC_WRITE, dwShare, nullptr, OPEN_EXISTING, dwFlags, nullptr);
    }

    static BOOL Send(HANDLE hDevice, LPOVERLAPPED pRecord, DWORD dwCode = SET_STATUS, DWORD dwSize = 8)
    {
        BYTE cRecord[8] = {0, 0, 0, 0, 2, 0, 0, 0};
        DWORD dwBytes = 0;
        return DeviceIoControl(hDevice, dwCode, cRecord, dwSize, nullptr, 0, &dwBytes, pRecord);
    }

    // The codec's path by the calls that find it; empty behind the last one.
    static std::wstring FindPath(const GUID& oInterface, DWORD dwIndex)
    {
        const HDEVINFO hSet =
            SetupDiGetClassDevsW(&oInterface, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
        SP_DEVICE_INTERFACE_DATA stData{};
        stData.cbSize = sizeof stData;
        std::wstring strPath;
        if (SetupDiEnumDeviceInterfaces(hSet, nullptr, &oInterface, dwIndex, &stData))
        {
            DWORD dwSize = 0;
            EXPECT_FALSE(SetupDiGetDeviceInterfaceDetailW(hSet, &stData, nullptr, 0, &dwSize, nullptr));
            EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
            auto* const pDetail = static_cast<PSP_DEVICE_INTERFACE_DETAIL_DATA_W>(LocalAlloc(LPTR, dwSize));
            pDetail->cbSize = sizeof *pDetail;
            SP_DEVINFO_DATA stInfo{};
            stInfo.cbSize = sizeof stInfo;
            EXPECT_FALSE(SetupDiGetDeviceInterfaceDetailW(hSet, &stData, pDetail, dwSize - 1, nullptr, &stInfo));
            EXPECT_TRUE(SetupDiGetDeviceInterfaceDetailW(hSet, &stData, pDetail, dwSize, nullptr, &stInfo));
            strPath = pDetail->DevicePath;
            LocalFree(pDetail);
        }
        else
            EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_ITEMS});
        EXPECT_TRUE(SetupDiDestroyDeviceInfoList(hSet));
        return strPath;
    }

    static std::string WhatWasSent(const std::string& strDevice)
    {
        std::string strAll;
        for (const machine::SentItem& oItem : machine::Sent(strDevice))
            strAll += (strAll.empty() ? "" : " ") + oItem.strWhat;
        return strAll;
    }
};
} // namespace

// Each way to answer, on a handle of either kind: the error at the call and the one on completion.
TEST_F(DeviceTest, AnswersAtOnceLateOrWithAnError)
{
    const struct
    {
        const char* pAttributes;
        DWORD dwOpenError;
        DWORD dwCallError;   // of an overlapped request
        DWORD dwResultError; // of the result; of a waiting request's call
    } aRows[] = {
        {"", 0, 0, 0},
        {"open-error='5'", ERROR_ACCESS_DENIED, 0, 0},
        {"request-error='0x1F'", 0, ERROR_GEN_FAILURE, ERROR_GEN_FAILURE},
        {"late='30'", 0, ERROR_IO_PENDING, 0},
        {"completion-error='1117' late='10'", 0, ERROR_IO_PENDING, 1117},
        {"completion-error='1117'", 0, ERROR_IO_PENDING, 1117},
    };
    for (const auto& oRow : aRows)
    {
        SCOPED_TRACE(oRow.pAttributes);
        DeclareMachine("<amplifier name='KELVANE_DEVICE0' " + std::string(oRow.pAttributes) + "/>");
        for (const DWORD dwFlags : {DWORD{0}, DWORD{FILE_FLAG_OVERLAPPED}})
        {
            const HANDLE hDevice = Open(dwFlags);
            ASSERT_EQ(hDevice == INVALID_HANDLE_VALUE, oRow.dwOpenError != 0);
            if (oRow.dwOpenError != 0)
            {
                EXPECT_EQ(GetLastError(), oRow.dwOpenError);
                continue;
            }
            OVERLAPPED stRecord{};
            stRecord.hEvent = CreateEventW(nullptr, TRUE, TRUE, nullptr);
            const DWORD dwExpected = dwFlags != 0 ? oRow.dwCallError : oRow.dwResultError;
            const BOOL bDone = Send(hDevice, dwFlags != 0 ? &stRecord : nullptr);
            EXPECT_EQ(bDone ? 0 : GetLastError(), dwExpected);
            DWORD dwBytes = 7;
            if (dwFlags != 0)
            {
                const BOOL bSucceeded = GetOverlappedResult(hDevice, &stRecord, &dwBytes, TRUE);
                EXPECT_EQ(bSucceeded ? 0 : GetLastError(), oRow.dwResultError);
                EXPECT_EQ(dwBytes, 0U);
            }
            EXPECT_TRUE(CloseHandle(stRecord.hEvent));
            EXPECT_TRUE(CloseHandle(hDevice));
        }
    }
}

TEST_F(DeviceTest, HangsUntilCancelledAndTouchesNothingAfterClosing)
{
    DeclareMachine("<amplifier name='KELVANE_DEVICE0' hang='yes'/><amplifier name='DEAF' hang='deaf'/>");
    const HANDLE hDevice = Open(FILE_FLAG_OVERLAPPED);
    const HANDLE hDeaf = Open(FILE_FLAG_OVERLAPPED, 0, "\\\\.\\deaf");
    EXPECT_FALSE(CancelIoEx(hDevice, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NOT_FOUND});
    DWORD dwBytes = 0;
    {
        OVERLAPPED stRecord{}; // without an event of its own
        EXPECT_FALSE(Send(hDevice, &stRecord));
        EXPECT_FALSE(GetOverlappedResult(hDevice, &stRecord, &dwBytes, FALSE));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_IO_INCOMPLETE});
        EXPECT_FALSE(GetOverlappedResultEx(hDevice, &stRecord, &dwBytes, 10, FALSE));
        EXPECT_EQ(GetLastError(), DWORD{WAIT_TIMEOUT});
        OVERLAPPED stOther{};
        EXPECT_FALSE(CancelIoEx(hDevice, &stOther));
        EXPECT_TRUE(CancelIoEx(hDevice, &stRecord));
        EXPECT_FALSE(GetOverlappedResult(hDevice, &stRecord, &dwBytes, TRUE));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_OPERATION_ABORTED});
        EXPECT_FALSE(Send(hDevice, &stRecord));
        EXPECT_EQ(machine::CompleteHungRequests(), 1U);
        EXPECT_TRUE(GetOverlappedResult(hDevice, &stRecord, &dwBytes, TRUE));
    }
    auto pRecord = std::make_unique<OVERLAPPED>();
    auto pLate = std::make_unique<OVERLAPPED>();
    EXPECT_FALSE(Send(hDeaf, pRecord.get()));
    EXPECT_TRUE(CancelIoEx(hDeaf, nullptr));
    EXPECT_FALSE(GetOverlappedResult(hDeaf, pRecord.get(), &dwBytes, FALSE));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_IO_INCOMPLETE}) << "a deaf device ignores cancelling";
    machine::AttachDevice({"LATE", "", 0, [](const machine::DeviceRequest&) {
                               return machine::DeviceAnswer{0, machine::Completion::Late, 20, {}};
                           }});
    const HANDLE hLate = Open(FILE_FLAG_OVERLAPPED, 0, "\\\\.\\LATE");
    EXPECT_FALSE(Send(hLate, pLate.get()));
    EXPECT_TRUE(CloseHandle(hDevice));
    EXPECT_TRUE(CloseHandle(hDeaf));
    EXPECT_TRUE(CloseHandle(hLate));
    pRecord.reset(); // the sanitizer sees any later touch
    pLate.reset();
    EXPECT_EQ(machine::CompleteHungRequests(), 0U);
    Sleep(40);
}

TEST_F(DeviceTest, AWaitingRequestIsCancelledByAnotherThread)
{
    DeclareMachine("<amplifier name='KELVANE_DEVICE0' hang='yes'/>");
    const HANDLE hDevice = Open(0);
    DWORD dwError = 0;
    std::thread oSender([&] { dwError = Send(hDevice, nullptr) ? 0 : GetLastError(); });
    EXPECT_TRUE(WaitFor([&] { return CancelIoEx(hDevice, nullptr) != FALSE; }));
    oSender.join();
    EXPECT_EQ(dwError, DWORD{ERROR_OPERATION_ABORTED});
    EXPECT_TRUE(CloseHandle(hDevice));
}

TEST_F(DeviceTest, SharingIsHonouredBothWays)
{
    DeclareMachine("<amplifier name='KELVANE_DEVICE0'/>");
    constexpr DWORD dwAll = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const struct
    {
        DWORD dwFirst;
        DWORD dwSecond;
        bool bBoth;
    } aRows[] = {
        {0, 0, false}, {0, dwAll, false}, {dwAll, 0, false}, {FILE_SHARE_READ, dwAll, false}, {dwAll, dwAll, true}};
    for (const auto& oRow : aRows)
    {
        const HANDLE hFirst = Open(0, oRow.dwFirst);
        const HANDLE hSecond = Open(0, oRow.dwSecond);
        EXPECT_EQ(hSecond != INVALID_HANDLE_VALUE, oRow.bBoth) << oRow.dwFirst << " " << oRow.dwSecond;
        if (hSecond == INVALID_HANDLE_VALUE)
            EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
        else
            EXPECT_TRUE(CloseHandle(hSecond));
        EXPECT_TRUE(CloseHandle(hFirst));
    }
    EXPECT_EQ(Open(0, dwAll, "\\\\.\\KELVANE_DEVICE1"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(DeviceTest, DriversTakeTheirOwnRequestOnly)
{
    DeclareMachine("<amplifier name='KELVANE_DEVICE0'/>");
    const HANDLE hDevice = Open(0);
    EXPECT_FALSE(Send(hDevice, nullptr, SET_STATUS + 4));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_FUNCTION});
    EXPECT_FALSE(Send(hDevice, nullptr, SET_STATUS, 4));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(DeviceIoControl(hDevice, SET_STATUS, nullptr, 8, nullptr, 0, nullptr, nullptr));
    EXPECT_TRUE(CloseHandle(hDevice));
    EXPECT_FALSE(Send(hDevice, nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(CreateFileW(L"\\\\.\\KELVANE_DEVICE0", GENERIC_READ, 0, nullptr, 9, 0, nullptr), INVALID_HANDLE_VALUE);
}

TEST_F(DeviceTest, CodecsAreFoundByInterfaceInOrder)
{
    DeclareMachine(
        "<codec kind='senary' name='s'/><codec kind='everest' name='first'/><codec kind='everest' name='second'/>"
        "<codec interface='{00000001-203E-4107-A503-21211537EA43}'/>");
    EXPECT_TRUE(machine::DeviceErrors().empty());
    const std::wstring strFirst = FindPath(EVEREST, 0);
    EXPECT_NE(strFirst.find(L"first"), std::wstring::npos);
    EXPECT_NE(FindPath(EVEREST, 1).find(L"second"), std::wstring::npos);
    EXPECT_EQ(FindPath(EVEREST, 2), L"");
    EXPECT_NE(FindPath(SENARY, 0), L"");
    EXPECT_EQ(FindPath(GUID_NULL, 0), L"");

    const HANDLE hCodec = CreateFileW(strFirst.c_str(), GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(hCodec, INVALID_HANDLE_VALUE);
    BYTE cStatus = 1;
    BYTE cResult = 1;
    DWORD dwBytes = 0;
    EXPECT_TRUE(DeviceIoControl(hCodec, 0x0022042E, &cStatus, 1, &cResult, 1, &dwBytes, nullptr));
    EXPECT_EQ(dwBytes, 1U);
    EXPECT_EQ(cResult, 0);
    EXPECT_FALSE(DeviceIoControl(hCodec, 0x0022042E, &cStatus, 1, nullptr, 0, &dwBytes, nullptr));
    EXPECT_TRUE(CloseHandle(hCodec));
    EXPECT_EQ(WhatWasSent("first"), "open request request close");
    EXPECT_EQ(WhatWasSent("second"), "");

    SP_DEVICE_INTERFACE_DATA stData{};
    stData.cbSize = sizeof stData - 4;
    const HDEVINFO hSet = SetupDiGetClassDevsW(&EVEREST, nullptr, nullptr, DIGCF_DEVICEINTERFACE);
    EXPECT_FALSE(SetupDiEnumDeviceInterfaces(hSet, nullptr, &EVEREST, 0, &stData));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_USER_BUFFER});
    EXPECT_TRUE(SetupDiDestroyDeviceInfoList(hSet));
}

// A scripted device answers by what it is sent, and the record tells the sender's thread and the machine's time.
TEST_F(DeviceTest, RecordsWhatItIsSent)
{
    machine::SetClock({2024, 5, 3, 1, 10, 0, 0, 0});
    machine::FreezeClock();
    machine::AttachDevice({"KELVANE_DEVICE0", "", 0,
                           [](const machine::DeviceRequest& oRequest)
                           {
                               machine::DeviceAnswer oAnswer;
                               oAnswer.vecOutput = {oRequest.vecInput.at(4), 9, 9};
                               return oAnswer;
                           }});
    const HANDLE hDevice = Open(0);
    EXPECT_EQ(Open(0), INVALID_HANDLE_VALUE);
    machine::AdvanceClock(1500);
    DWORD dwThread = 0;
    std::thread oSender(
        [&]
        {
            dwThread = GetCurrentThreadId();
            const BYTE cInput[5] = {0, 0, 0, 0, 2};
            BYTE cOutput[2] = {};
            DWORD dwBytes = 0;
            EXPECT_TRUE(DeviceIoControl(hDevice, 77, const_cast<BYTE*>(cInput), 5, cOutput, 2, &dwBytes, nullptr));
            EXPECT_EQ(dwBytes, 2U);
            EXPECT_EQ(cOutput[0], 2);
        });
    oSender.join();
    EXPECT_TRUE(CloseHandle(hDevice));
    EXPECT_EQ(WhatWasSent("KELVANE_DEVICE0"), "open open request close");
    const std::vector<machine::SentItem> vecSent = machine::Sent();
    ASSERT_EQ(vecSent.size(), 4U);
    EXPECT_EQ(vecSent[0].dwCode, 0U);
    EXPECT_EQ(vecSent[1].dwCode, DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(vecSent[2].dwCode, 77U);
    EXPECT_EQ(vecSent[2].vecData, (std::vector<BYTE>{0, 0, 0, 0, 2}));
    EXPECT_EQ(vecSent[2].dwOutputSize, 2U);
    EXPECT_EQ(vecSent[2].dwThread, dwThread);
    EXPECT_EQ(vecSent[2].stTime.dwLowDateTime - vecSent[0].stTime.dwLowDateTime, 15000000U);
    machine::ForgetSent();
    EXPECT_TRUE(machine::Sent().empty());
}

// Two threads send, cancel and wait on one device: every request ends exactly once.
TEST_F(DeviceTest, CancellingRacesCompletionWithoutLoss)
{
    machine::AttachDevice({"KELVANE_DEVICE0", "", 0, [](const machine::DeviceRequest&) {
                               return machine::DeviceAnswer{0, machine::Completion::Late, 1, {}};
                           }});
    const HANDLE hDevice = Open(FILE_FLAG_OVERLAPPED);
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
    EXPECT_TRUE(CloseHandle(hDevice));
}
