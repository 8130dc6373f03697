// Conversion between wide and narrow text. Narrow text of this machine is UTF-8 in every code page offered.
#pragma once

#include <windef.h>

#define CP_ACP 0
#define CP_UTF8 65001

extern "C"
{
    // A buffer size of 0 asks for the size needed. No flags are known, and no text that runs to its zero.
    int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWCH lpWideCharStr, int cchWideChar, LPSTR lpMultiByteStr,
                            int cbMultiByte, LPCCH lpDefaultChar, LPBOOL lpUsedDefaultChar);
    int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCCH lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr,
                            int cchWideChar);
}
