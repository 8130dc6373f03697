// Text types of the component object model.
#pragma once

#include <windef.h>
#include <winnt.h>

typedef WCHAR OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
