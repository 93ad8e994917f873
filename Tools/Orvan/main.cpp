#include "Tools/Orvan/Command.h"
#include "Tools/Orvan/Interruption.h"

#include <poll.h>
#include <unistd.h>

#include <clocale>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace orvan {

int cannot(const std::string& message) {
    std::fprintf(stderr, "orvan: %s\n", message.c_str());
    return kNotDone;
}

namespace {

// One line: what is wrong with the arguments, and where to read on.
std::string wrongUsage(const CLI::App* program, const CLI::Error& problem) {
    std::string what = problem.what();
    const std::vector<std::string> unknown = program->remaining();
    if (program->get_subcommands().empty())
        what = unknown.empty() ? "a command is missing" : "there is no command " + unknown.front();
    return "orvan: " + what + " (\"orvan --help\" says more)\n";
}

// Whether nobody reads standard output any more: no failure of ours.
bool hasNoReader() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & POLLERR) != 0;
}

int runProgram(int argc, char** argv) {
    CLI::App program("Paper options of Orvan printers, from the command line.", "orvan");
    program.set_version_flag("--version", "orvan " ORVAN_VERSION);
    program.require_subcommand(1);
    program.failure_message(wrongUsage);
    program.footer("Exit codes: 0 done, 1 it could not be done, 2 wrong usage.\n"
                   "\"orvan COMMAND --help\" says more about a command.");
    CommandBody run;
    addPanelCommand(program, run);
    addCheckCommand(program, run);
    addStatusCommand(program, run);
    addPapersCommand(program, run);
    addPlistCommand(program, run);
    addChunksCommand(program, run);
    addTicketCommand(program, run);
    addURLCommand(program, run);
    addPingCommand(program, run);
    addFetchCommand(program, run);
    addDoctorCommand(program, run);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& problem) {
        return program.exit(problem) == 0 ? kDone : kWrongUsage;
    }
    return run();
}

} // namespace
} // namespace orvan

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    try {
        const int code = orvan::runProgram(argc, argv);
        std::cout.flush();
        if (orvan::wasInterrupted()) orvan::endAsInterrupted();
        if (std::cout || orvan::hasNoReader()) return code;
        return orvan::cannot("cannot write to standard output");
    } catch (const std::exception& problem) {
        return orvan::cannot(problem.what());
    }
}
