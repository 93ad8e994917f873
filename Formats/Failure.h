// Why something of ours could not be done.
#pragma once

#include <optional>
#include <string>

namespace platform {

// Absent when an operation did what it was asked for; otherwise one text for people: what was tried, on what,
// why it failed and what to do about it. An operation answers it, or, where it answers something else, sets
// the one that it is given when it fails and leaves it alone otherwise.
using Failure = std::optional<std::string>;

// For who does not want to know. Each thread has one; what it holds means nothing.
inline Failure& ignoredFailure() {
    static thread_local Failure failure;
    return failure;
}

} // namespace platform
