// The platform's master header, answered natively: types, codes, system calls, registry.
#pragma once

#include <guiddef.h>
#include <sec_api.h>
#include <winbase.h>
#include <windef.h>
#include <winerror.h>
#include <winnls.h>
#include <winnt.h>
#include <winreg.h>
#include <winuser.h>
