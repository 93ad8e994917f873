// The commands of `orvan` as rows of tables: what a person types, what it means, and the function that does
// it. CommandLine.cpp makes the parser and the help of them.
#pragma once

#include "Orvan/Arguments.h"

#include <span>
#include <string>

namespace orvan {

// Exit codes, the same for every command and for ever.
enum ExitCode : int {
    kDone = 0,       // it was done
    kNotDone = 1,    // it could not be done; standard error says why
    kWrongUsage = 2, // the arguments make no sense
};

// Writes "orvan: message" to standard error, wrapped where that is a terminal.
void say(const std::string& message);
// The same, and answers kNotDone.
int cannot(const std::string& message);

// One argument of a command. All texts live as long as the program.
struct ArgumentSpec {
    enum class Count { optional, required, repeatable };

    const char* name;            // "FILE" stands at its place; "--json" or "-q,--queue" is an option
    const char* text;            // for the help
    const char* value = nullptr; // what the help calls the value of an option; null for a flag
    Count count = Count::optional;
    // What is wrong with a value, for people; "" for nothing. Null takes any.
    std::string (*check)(const std::string& value) = nullptr;
    // Of the options with the same group at most one can be given.
    const char* group = nullptr;
};

struct Command {
    const char* name;
    const char* text; // one line for the help; null for a command that is not for people
    std::span<const ArgumentSpec> arguments = {};
    const char* footer = nullptr; // what stands below the help: more, and examples
    // Does it, and answers an exit code. Null for a command that only has others below it.
    int (*run)(const Arguments& arguments) = nullptr;
    std::span<const Command> below = {};
};

} // namespace orvan
