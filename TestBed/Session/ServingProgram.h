// The outside of a program that serves: its arguments, its exit code, its last words.
#pragma once

#include "TestBed/Session/CommandSession.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace orvan {

// Why a program could not do it, for people; a wrong use of it among others.
struct Refusal {
    std::string text;
    bool isWrongUsage = false;
};

// Takes the last option of such a program, "command", which is all that is left of its arguments.
void addCommandArgument(CLI::App& app, std::vector<std::string>& command);

struct ServingProgram {
    const char* name;
    const char* purpose; // for --help
    // Adds the arguments.
    std::function<void(CLI::App& app)> describe;
    // Does it; *exitCode is 0 when this leaves it alone.
    std::function<std::optional<Refusal>(const CommandSession& session, int* exitCode)> serve;
};

// Reads the arguments, makes the session and serves. Answers the exit code: that of `serve`, 1 when it
// refuses or throws, 2 for wrong usage; what is wrong is written to standard error, behind the program's
// name.
int runServingProgram(const ServingProgram& program, int count, char** arguments);

} // namespace orvan
