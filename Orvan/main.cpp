#include "Orvan/Command.h"
#include "Orvan/CommandLine.h"
#include "Orvan/Interruption.h"
#include "Orvan/TerminalEncoding.h"

#include <poll.h>
#include <unistd.h>

#include <clocale>
#include <exception>
#include <iostream>

namespace {

// Whether nobody reads standard output any more: no failure of ours.
bool hasNoReader() {
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & POLLERR) != 0;
}

} // namespace

int main(int argc, char** argv) {
    // The commands speak English and write numbers that programs read; characters and times are the person's.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_TIME, "");
    const orvan::TerminalEncoding output(std::cout, STDOUT_FILENO);
    const orvan::TerminalEncoding errors(std::cerr, STDERR_FILENO);
    try {
        const int code = orvan::runCommandLine(argc, argv, ORVAN_VERSION);
        std::cout.flush();
        if (orvan::wasInterrupted()) orvan::endAsInterrupted();
        if (std::cout || hasNoReader()) return code;
        return orvan::cannot("cannot write to standard output");
    } catch (const std::exception& problem) {
        return orvan::cannot(problem.what());
    }
}
