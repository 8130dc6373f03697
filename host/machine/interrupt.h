// Ctrl-C (SIGTERM too, Ctrl-Break under Windows) ends a run or a watch in order, and in any state ends it.
#pragma once

// From here on the first one only sets a flag. A second one ends the process at once, whatever its threads wait for,
// and so does the first when 30 s later it hasn't ended: with exit code 1 and a line on stderr. bTell: the first one is
// answered on stderr.
void CatchInterrupts(bool bTell);
// Whether one came. Any thread.
bool IsInterrupted();
