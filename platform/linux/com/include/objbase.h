// The component object model's main header.
#pragma once

#include <combaseapi.h>
#include <oaidl.h>
