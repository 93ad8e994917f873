// Bytes in.
#pragma once

#include <istream>
#include <optional>
#include <string>

namespace orvan {

// The whole of a file, or of standard input for "-". Nothing, and a message for people in *error, when it
// cannot be read.
std::optional<std::string> readFile(const std::string& file, std::string* error);

// All that a stream still has.
std::string readAll(std::istream& stream);

} // namespace orvan
