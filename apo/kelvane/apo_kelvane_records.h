// The protection library's contract as the module binds to it.
#pragma once

#include "protection/kelvane_protection.h"

// Codes of the binding to the library.
inline constexpr int32_t KELVANE_ERROR_NO_MEMORY = 1001;
inline constexpr int32_t KELVANE_ERROR_NO_EXPORT = 1626;
inline constexpr int32_t KELVANE_ERROR_NOT_LOADED = 4301;
