// The variables by which clients find what a program serves.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvan {

// Names and values; without a value: to be removed.
using ClientEnvironment = std::vector<std::pair<std::string, std::optional<std::string>>>;

// Puts the variables into this process. Not while another thread looks at its environment.
void adoptEnvironment(const ClientEnvironment& environment);

// The variables as "export" and "unset" commands for a shell, one a line.
std::string shellCommands(const ClientEnvironment& environment);

} // namespace orvan
