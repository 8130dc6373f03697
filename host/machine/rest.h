// How long the host waits for the module's threads.
#pragma once

inline constexpr int REST_LIMIT_S = 10; // what takes longer waits for something that the host can't hasten

// Returns when every thread of the module waits for something to happen. False: one of them didn't come to that within
// the seconds, nor did an interrupt.
bool WaitForRest(int iLimitS = REST_LIMIT_S);
