// Makes DEFINE_GUID define the constants in the source that includes this first.
#pragma once

#ifndef INITGUID
#define INITGUID
#endif
#include <guiddef.h>
