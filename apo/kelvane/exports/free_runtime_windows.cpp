// The module carries the C++ runtime within itself, and with each load a memory block that the runtime keeps for the
// day when there is no memory for an exception. It goes with the module.

#include "platform/compiler.h"

namespace __gnu_cxx
{
void __freeres();
}

KELVANE_AT_UNLOAD static void FreeRuntime()
{
    __gnu_cxx::__freeres();
}
