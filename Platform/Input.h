// Bytes in.
#pragma once

#include "Formats/Failure.h"

#include <istream>
#include <optional>
#include <string>

namespace platform {

// The whole of a file, or of standard input for "-". Nothing, and a message for people in `error`, when it
// cannot be read.
std::optional<std::string> readFile(const std::string& file, Failure& error);

// All that a stream still has.
std::string readAll(std::istream& stream);

} // namespace platform
