// Events by their names.
#include "tests/support/machine_test.h"

namespace
{
using NamedEventTest = MachineTest;
} // namespace

TEST_F(NamedEventTest, NameLeadsToOneEventWhileAHandleIsOpen)
{
    EXPECT_EQ(OpenEventW(EVENT_ALL_ACCESS, FALSE, L"Global\\Test"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    const HANDLE hFirst = CreateEventW(nullptr, TRUE, TRUE, L"Global\\Test");
    const HANDLE hSecond = CreateEventW(nullptr, FALSE, FALSE, L"Global\\Test");
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
    CloseHandle(hFirst);
    EXPECT_EQ(WaitForSingleObject(hSecond, 0), DWORD{WAIT_OBJECT_0}); // the first creation's state and kind
    CloseHandle(hSecond);
    EXPECT_EQ(OpenEventW(EVENT_ALL_ACCESS, FALSE, L"Global\\Test"), nullptr);
}
