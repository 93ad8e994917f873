// How the program orvan-printing-system lasts: as long as a command runs, or until somebody ends it.
#pragma once

#include "Tools/PrintingSystem/PrintingSystem.h"

#include <signal.h>

#include <string>
#include <vector>

namespace orvan {

// Takes SIGINT, SIGTERM, SIGHUP and SIGCHLD out of the hands of the system's default, so that the process
// always ends in order; make it before anything that has to be cleaned up. For a program with one thread.
class CommandSession {
public:
    CommandSession();

    // Runs the command with the system's environment and the signals as this process found them, and waits
    // for its end. A signal to end goes on to the command, a second one kills it. *exitCode is the command's,
    // or 128 and the number of the signal that ended it.
    [[nodiscard]] Failure run(
        const std::vector<std::string>& command, const PrintingSystem& system, int* exitCode) const;

    // Waits for a signal to end. Fails when the scheduler ends before.
    [[nodiscard]] Failure waitForSignal(PrintingSystem& system) const;

private:
    sigset_t previous_{};
    sigset_t awaited_{};
};

} // namespace orvan
