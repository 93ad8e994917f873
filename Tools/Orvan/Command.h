// What the commands of `orvan` have in common.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace orvan {

// Exit codes, the same for every command and for ever.
enum ExitCode : int {
    kDone = 0,       // it was done
    kNotDone = 1,    // it could not be done; standard error says why
    kWrongUsage = 2, // the arguments make no sense
};

// Writes "orvan: message" to standard error and answers kNotDone.
int cannot(const std::string& message);

// Each adds its command to the program and sets `run` to its body when the person asked for it.
using CommandBody = std::function<int()>;
void addPanelCommand(CLI::App& program, CommandBody& run);
void addCheckCommand(CLI::App& program, CommandBody& run);
void addStatusCommand(CLI::App& program, CommandBody& run);
void addPapersCommand(CLI::App& program, CommandBody& run);
void addPlistCommand(CLI::App& program, CommandBody& run);
void addChunksCommand(CLI::App& program, CommandBody& run);
void addURLCommand(CLI::App& program, CommandBody& run);
void addPingCommand(CLI::App& program, CommandBody& run);
void addTicketCommand(CLI::App& program, CommandBody& run);
void addDoctorCommand(CLI::App& program, CommandBody& run);
void addFetchCommand(CLI::App& program, CommandBody& run);

} // namespace orvan
