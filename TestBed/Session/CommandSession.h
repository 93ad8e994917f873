// How a program that serves lasts: as long as a command runs, or until somebody ends it.
#pragma once

#include "TestBed/Session/Failure.h"

#include <signal.h>

#include <functional>
#include <string>
#include <vector>

namespace orvan {

// Takes SIGINT, SIGTERM, SIGHUP and SIGCHLD out of the hands of the system's default, so that the process
// always ends in order; make it before anything that has to be cleaned up, and before any other thread, which
// must leave those signals alone.
class CommandSession {
public:
    CommandSession();

    // Runs the command with this process's environment and the signals as this process found them, and waits
    // for its end. A signal to end goes on to the command, a second one kills it. *exitCode is the command's,
    // or 128 and the number of the signal that ended it.
    [[nodiscard]] Failure run(const std::vector<std::string>& command, int* exitCode) const;

    // Waits for a signal to end. False when what is served ends before; that is looked at whenever a child of
    // this process has ended.
    [[nodiscard]] bool waitForSignal(const std::function<bool()>& isServing) const;

private:
    sigset_t previous_{};
    sigset_t awaited_{};
    // Those that libraries for servers make this process ignore.
    sigset_t defaults_{};
};

} // namespace orvan
