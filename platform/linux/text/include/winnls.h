// Conversion between wide and narrow text. Narrow text of this machine is UTF-8 in every code page offered.
#pragma once

#include <windef.h>

#define CP_ACP 0
#define CP_UTF8 65001
#define WC_ERR_INVALID_CHARS 0x00000080
#define MB_ERR_INVALID_CHARS 0x00000008

extern "C"
{
    // A count of -1 takes text to its zero and converts that too; a buffer size of 0 asks for the size needed.
    int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWCH lpWideCharStr, int cchWideChar, LPSTR lpMultiByteStr,
                            int cbMultiByte, LPCCH lpDefaultChar, LPBOOL lpUsedDefaultChar);
    int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCCH lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr,
                            int cchWideChar);
}
