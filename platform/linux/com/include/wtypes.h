// Types of automation values.
#pragma once

#include <wtypesbase.h>

typedef OLECHAR* BSTR; // null is the empty text
typedef unsigned short VARTYPE;

enum VARENUM
{
    VT_EMPTY = 0,
    VT_NULL = 1,
    VT_BSTR = 8,
    VT_UI1 = 17,
    VT_ARRAY = 0x2000
};
