// The command file of CUPS, application/vnd.cups-command.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// What a command job asks, and in whose name.
struct CommandFile {
    std::vector<std::string> commands; // names, in the order of the file
    // Those of the first command that has a password; no user name without a password.
    std::optional<std::string> user;
    std::optional<std::string> password;
};

// Reads "#CUPS-COMMAND" and a line a command: a name, and behind a space " username=" and " password=" with
// their values, unquoted and in this order. The user name ends at the first " password=", the password with
// its line. Other comments and empty lines are passed over. Nothing when the first line is another.
std::optional<CommandFile> readCommandFile(std::string_view text);

} // namespace orvan
