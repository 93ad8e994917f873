// What "--help" says, of the tables of the commands.
#pragma once

#include "Orvan/Command.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvan {

// Whether the argument is an option without a value.
bool isFlag(const ArgumentSpec& spec);
// The name by which an argument goes: of "-q,--queue", "--queue".
std::string lastName(const ArgumentSpec& spec);
// Whether the word is one of the argument's names.
bool isNamed(const ArgumentSpec& spec, std::string_view word);

// "encode or decode"; without the commands that are not for people.
std::string listOf(const std::vector<const Command*>& commands, const char* conjunction);

// The help for a command ("orvan status"), or for the program when `command` is null; wrapped to that many
// columns, or not at all for 0. It ends with a line feed.
std::string helpText(const std::string& path, const Command* command,
    const std::vector<const Command*>& below, std::size_t width);

} // namespace orvan
