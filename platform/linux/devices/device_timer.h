// Devices that complete late: calls made after a time, on a thread of their own.
#pragma once

#include <windows.h>

#include <functional>

// Any thread. Calls of the same moment keep their order.
void CallLater(DWORD dwMilliseconds, std::function<void()> fCall);
