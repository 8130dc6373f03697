// What compilers say each in its own way, and what they are asked for beyond the standard: all of it is here.
#pragma once

#include <cstdio>

// Places a function in the section of that name.
#define KELVANE_SECTION(name) [[gnu::section(name)]]

// Keeps a function a call of its own.
#define KELVANE_NOINLINE [[gnu::noinline]]

// Runs a function when the module goes, behind the destructors of its statics.
#define KELVANE_AT_UNLOAD [[gnu::destructor]]

// Has the argument of that number, a printf format, checked against those from the second number on; by the rules of
// this build's printf.
#ifdef __MINGW_PRINTF_FORMAT
#define KELVANE_PRINTF(format_at, arguments_at) [[gnu::format(__MINGW_PRINTF_FORMAT, format_at, arguments_at)]]
#else
#define KELVANE_PRINTF(format_at, arguments_at) [[gnu::format(printf, format_at, arguments_at)]]
#endif

// Whether ASan or TSan watches this program: they keep what is freed, and take their time.
#ifdef __has_feature
#define KELVANE_FEATURE(name) __has_feature(name)
#else
#define KELVANE_FEATURE(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || KELVANE_FEATURE(address_sanitizer) ||             \
    KELVANE_FEATURE(thread_sanitizer)
inline constexpr bool SANITIZED = true;
#else
inline constexpr bool SANITIZED = false;
#endif
