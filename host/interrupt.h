// Ctrl-C ends a run or a watch in order instead of killing it.
#pragma once

// From here on SIGINT and SIGTERM only set a flag.
void CatchInterrupts();
// Whether one came. Any thread.
bool IsInterrupted();
