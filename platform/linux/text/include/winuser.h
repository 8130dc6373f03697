// Text calls of the platform's user interface part.
#pragma once

#include <windef.h>
#include <winnt.h>

// In place, up to the text's zero, one letter for one whatever the locale. Gives its argument.
EXTERN_C LPWSTR WINAPI CharUpperW(LPWSTR lpsz);
EXTERN_C LPWSTR WINAPI CharLowerW(LPWSTR lpsz);
