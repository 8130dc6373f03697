// Types of automation values.
#pragma once

#include <wtypesbase.h>

// Characters with their count of bytes in front; null is the empty text.
typedef OLECHAR* BSTR;
typedef unsigned short VARTYPE;
typedef short VARIANT_BOOL;
typedef LONG SCODE;

enum VARENUM
{
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_BSTR = 8,
    VT_BOOL = 11,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_INT = 22,
    VT_UINT = 23,
    VT_ARRAY = 0x2000,
    VT_BYREF = 0x4000,
    VT_TYPEMASK = 0xFFF
};
