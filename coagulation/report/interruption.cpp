// SPDX-License-Identifier: MIT
#include "coagulation/report/interruption.h"

#include <csignal>

namespace coagulation::report {

namespace {

// NOLINTNEXTLINE(*-avoid-non-const-global-variables): all that a signal may touch
volatile std::sig_atomic_t asked = 0;

extern "C" void ask(int /*signal*/)
{
    asked = 1;
}

} // namespace

void catchInterruptions()
{
    std::signal(SIGINT, ask);
    std::signal(SIGTERM, ask);
#ifdef SIGHUP
    std::signal(SIGHUP, ask); // the terminal was closed
#endif
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN); // nobody reads the progress any more
#endif
}

bool interrupted()
{
    return asked != 0;
}

} // namespace coagulation::report
