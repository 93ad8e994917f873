// Bytes in.
#pragma once

#include "Formats/Failure.h"

#include <optional>
#include <string>

namespace platform {

// How messages name a file that somebody gave: "standard input" for "-".
std::string nameOfInput(const std::string& file);

// The whole of a file, which may be a pipe, or of standard input for "-". Nothing, and a message for people
// in `error`, when it cannot be read.
std::optional<std::string> readFile(const std::string& file, Failure& error);

} // namespace platform
