// Text by a printf format.
#pragma once

#include <cstdio>
#include <string>

// How this build's printf is checked.
#ifdef __MINGW_PRINTF_FORMAT
#define KELVANE_PRINTF __MINGW_PRINTF_FORMAT
#else
#define KELVANE_PRINTF printf
#endif

// At most 511 characters.
__attribute__((format(KELVANE_PRINTF, 1, 2))) std::string Print(const char* pFormat, ...);

// "1 query", "2 queries".
std::string Count(size_t iCount, const char* pOne, const char* pMany);
