// Text by a printf format.
#pragma once

#include "platform/compiler.h"

#include <string>

// At most 511 characters.
KELVANE_PRINTF(1, 2) std::string Print(const char* pFormat, ...);

// "1 query", "2 queries".
std::string Count(size_t iCount, const char* pOne, const char* pMany);
