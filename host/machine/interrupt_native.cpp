// Interrupts by signals. The handlers may find the process anywhere: they call what is safe there, and never wait.
#include "host/machine/interrupt.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace
{

constexpr unsigned END_LIMIT_S = 30;
constexpr const char* STOPPING = "\napohost: stopping; once more ends it at once\n";
constexpr const char* GIVEN_UP = "\napohost: it didn't end in order within 30 s\n";

std::atomic<bool> g_bInterrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);
bool g_bTell = false;
bool g_bTerminal = false; // whose line may hold a progress

// A reader that takes nothing must not hold back the end.
void Tell(const char* pText)
{
    pollfd oError{STDERR_FILENO, POLLOUT, 0};
    pText += g_bTerminal ? 0 : 1;
    if (poll(&oError, 1, 0) != 1 || write(STDERR_FILENO, pText, std::strlen(pText)) < 0)
        return; // nobody reads
}

void OnTimeOut(int)
{
    Tell(GIVEN_UP);
    _exit(1);
}

void OnInterrupt(int iSignal)
{
    const int iError = errno;
    if (g_bInterrupted.exchange(true))
    {
        // Ends the process as the handler returns, as if the signal had never been caught.
        std::signal(iSignal, SIG_DFL);
        std::raise(iSignal);
        return;
    }
    alarm(END_LIMIT_S);
    if (g_bTell)
        Tell(STOPPING);
    errno = iError;
}

} // namespace

void CatchInterrupts(bool bTell)
{
    g_bTell = bTell;
    g_bTerminal = isatty(STDERR_FILENO) != 0;
    std::signal(SIGALRM, OnTimeOut);
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
}

bool IsInterrupted()
{
    return g_bInterrupted;
}
