// Makes the platform's header safe to include twice: the cross compiler's has no guard of its own.
#pragma once

#include <windows.h>

#include_next <audioapotypes.h>
