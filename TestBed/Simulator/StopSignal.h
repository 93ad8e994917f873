// Wakes the threads of the simulator when it is to end.
#pragma once

#include "Platform/FileDescriptor.h"

#include <chrono>

namespace orvan {

// Raised once and for all. Any thread may raise it, look at it and wait for it.
class StopSignal {
public:
    // Throws std::system_error when the system has no descriptor left.
    StopSignal();

    void raise() const;
    // Readable from when it is raised.
    int descriptor() const { return event_.get(); }

    // Waits until it is raised, but not for longer than `time`; true when it is raised.
    bool waitFor(std::chrono::milliseconds time) const;
    // Waits until it is raised, or one of poll(2)'s `events` has come on the descriptor, but not for longer
    // than `time`, which is for ever when it is negative. The events that have come; none when it was raised
    // or the time is over.
    short waitForEvents(int descriptor, short events, std::chrono::milliseconds time) const;

private:
    platform::FileDescriptor event_;
};

} // namespace orvan
