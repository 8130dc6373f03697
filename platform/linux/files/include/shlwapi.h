// Path text helpers of the shell's light library.
#pragma once

#include <windef.h>

extern "C"
{
    // Resolves "." and ".." parts into pszBuf, which holds MAX_PATH characters. A result or path beyond that fails.
    BOOL PathCanonicalizeA(LPSTR pszBuf, LPCSTR pszPath);
}
