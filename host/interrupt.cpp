// Ctrl-C ends a run or a watch in order.
#include "host/interrupt.h"

#include <csignal>

namespace
{

volatile std::sig_atomic_t g_iInterrupted = 0;

void OnInterrupt(int)
{
    g_iInterrupted = 1;
}

} // namespace

void CatchInterrupts()
{
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
}

bool IsInterrupted()
{
    return g_iInterrupted != 0;
}
