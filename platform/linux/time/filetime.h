// File times as numbers: 100 ns ticks since 1601.
#pragma once

#include <windows.h>

#include <ctime>

constexpr long long TICKS_PER_MILLISECOND = 10000;
constexpr long long TICKS_PER_SECOND = 10000000;

long long TicksOf(const FILETIME& stFileTime);
FILETIME FileTimeOf(long long iTicks);
// From this system's clock, which counts from 1970.
long long TicksOf(const timespec& stTime);
// What local time is ahead of UTC at a moment of UTC, in ticks.
long long LocalOffset(long long iUtcTicks);
// The UTC of a local time.
long long UtcOfLocal(long long iLocalTicks);
// This system's seconds of a moment.
time_t SecondsOf(long long iTicks);
