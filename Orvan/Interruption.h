// What becomes of Ctrl-C while a command has something to take back.
#pragma once

namespace orvan {

// While it exists, a request to end (SIGINT, SIGTERM, SIGHUP) is noted instead of ending the process; a
// second one of the same kind ends it at once. One at a time.
class InterruptionGuard {
public:
    InterruptionGuard();
    ~InterruptionGuard();
    InterruptionGuard(const InterruptionGuard&) = delete;
    InterruptionGuard& operator=(const InterruptionGuard&) = delete;
};

// Whether a request to end was noted, by any guard.
bool wasInterrupted();

// Ends this process by the signal that was noted, so that a shell knows and ends its script as well. Only
// after everything is cleaned up: nothing runs any more.
[[noreturn]] void endAsInterrupted();

} // namespace orvan
