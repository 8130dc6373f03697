// The result codes of the module's own operations, each with its one name: what results and ERROR lines hold.
#pragma once

#include <windows.h>

// 0 is success. Beside these an operation yields what it was given: the platform's codes, under the published names
// (ERROR_TIMEOUT, E_POINTER), and the library's own. A number here stands for what its name says, also where the
// platform gives it another meaning.

// A platform call failed, and its code isn't asked for.
inline constexpr INT32 AUDIO_FAILED = -1;
// A handle, an event, a worker, an entry point, a connection or a process isn't there or can't be had.
inline constexpr INT32 AUDIO_NO_HANDLE = 6;
// An object, a device or an answer of the system isn't there or can't be had.
inline constexpr INT32 AUDIO_NO_OBJECT = 12;
// An argument is out of its range, or data is missing, refused or without memory.
inline constexpr INT32 AUDIO_BAD_DATA = 13;
// A checked copy had no source or no room; the runtime's own copies give it too, and 34 for too little room.
inline constexpr INT32 AUDIO_BAD_COPY = 22;
// A worker has no context, or an item no memory.
inline constexpr INT32 AUDIO_NO_POINTER = 87;
// The library's instance, or a record or buffer that it needs, isn't there.
inline constexpr INT32 AUDIO_NO_INSTANCE = 1001;
// The tuning data holds no parameter set of the key.
inline constexpr INT32 AUDIO_NO_PARAMETERS = 1171;
// A tuning file lacks a tag.
inline constexpr INT32 AUDIO_NO_TAG = 1465;
// The library lacks an entry point.
inline constexpr INT32 AUDIO_NO_EXPORT = 1626;
// The library can't be loaded.
inline constexpr INT32 AUDIO_NO_LIBRARY = 4301;
// A size or a count is below 1.
inline constexpr INT32 AUDIO_BAD_SIZE = static_cast<INT32>(0x80E7000E);
// A channel's array has no memory.
inline constexpr INT32 AUDIO_NO_MEMORY = static_cast<INT32>(0x80E70002);
