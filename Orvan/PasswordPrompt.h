// A password from the person at the terminal.
#pragma once

#include <optional>
#include <string>

namespace orvan {

// Asks on standard error and reads a line of standard input, which is not shown while it is typed. Nothing
// when standard input is no terminal or ends. A signal that ends or stops the program finds the terminal as
// it was.
std::optional<std::string> askForPassword(const std::string& question);

} // namespace orvan
