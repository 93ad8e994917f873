// The outside of a program that serves: its arguments, its exit code, its last words.
#pragma once

#include "Tools/Session/CommandSession.h"

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

// Reads the arguments, makes the session and calls `serve`, whose *exitCode is 0 if it leaves it alone.
// Answers the exit code: that one, 1 when it refuses or throws, 2 for wrong usage; what is wrong is written
// to standard error, behind the program's name.
int runServingProgram(CLI::App& app, int count, char** arguments,
    const std::function<std::optional<Refusal>(const CommandSession& session, int* exitCode)>& serve);

} // namespace orvan
