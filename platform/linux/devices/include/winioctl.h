// How the codes of device requests are made up.
#pragma once

#include <windef.h>

#define CTL_CODE(DeviceType, Function, Method, Access)                                                                 \
    (((DeviceType) << 16) | ((Access) << 14) | ((Function) << 2) | (Method))

#define FILE_DEVICE_UNKNOWN 0x00000022

#define METHOD_BUFFERED 0
#define METHOD_OUT_DIRECT 2

#define FILE_ANY_ACCESS 0
