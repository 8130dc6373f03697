// Text by a printf format.
#pragma once

#include <string>

// At most 511 characters.
__attribute__((format(printf, 1, 2))) std::string Print(const char* pFormat, ...);

// "1 query", "2 queries".
std::string Count(size_t iCount, const char* pOne, const char* pMany);
