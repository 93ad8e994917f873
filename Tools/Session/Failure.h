// The answer of an operation that can go wrong.
#pragma once

#include <optional>
#include <string>

namespace orvan {

// Absent when the operation did what it was asked for; otherwise one text for people: what was tried, on
// what, why it failed and what to do about it.
using Failure = std::optional<std::string>;

} // namespace orvan
