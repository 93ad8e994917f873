// commandtoorvan: the command filter of Orvan printers, run by the print scheduler as filter(7) says.
#include "CommandFilter/Program/CommandFilter.h"
#include "CommandFilter/Program/FilterMessages.h"
#include "CommandFilter/Program/KnownCertificates.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string_view>

namespace {

constexpr int kUsageError = 1;
constexpr std::string_view kAccept = "--accept-certificate";

// A command file has a line a command.
constexpr std::size_t kMaximumJob = std::size_t{1} << 20U;

std::optional<std::string> readJob(const char* file) {
    std::ifstream opened;
    if (file != nullptr) {
        opened.open(file, std::ios::binary);
        if (!opened) return std::nullopt;
    }
    std::istream& stream = file != nullptr ? opened : std::cin;
    std::string job(kMaximumJob, '\0');
    stream.read(job.data(), static_cast<std::streamsize>(job.size()));
    job.resize(static_cast<std::size_t>(stream.gcount()));
    return job;
}

std::string variable(const char* name, const char* otherwise) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

// The job's password is in this process's memory.
void refuseCoreFiles() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
#ifndef __SANITIZE_ADDRESS__ // whose search for leaks looks at this process from another
    prctl(PR_SET_DUMPABLE, 0);
#endif
}

} // namespace

// Whatever happens to the job's questions, the exit code is 0: the scheduler would keep a job of a failed
// filter, and each later question would wait for it.
int main(int count, char** arguments) {
    if (count == 3 && std::string_view(arguments[1]) == kAccept)
        return orvan::acceptCertificate(arguments[2]);
    if (count < 6 || count > 7) {
        std::cerr
            << "ERROR: commandtoorvan is a filter of the print scheduler: commandtoorvan job-id user "
               "title copies options [file]; for root: commandtoorvan --accept-certificate HOST[:PORT]\n";
        return kUsageError;
    }
    refuseCoreFiles();
    // Standard output goes to the printer: what a library says there is for the scheduler's log instead.
    dup2(STDERR_FILENO, STDOUT_FILENO);
    try {
        const char* const file = count == 7 ? arguments[6] : nullptr;
        std::optional<std::string> job = readJob(file);
        if (job)
            orvan::runCommandFilter({*std::move(job), variable("DEVICE_URI", ""), variable("PPD", ""),
                variable("CUPS_SERVERROOT", "/etc/cups"), arguments[1]});
        else
            orvan::tellError("The job's file cannot be read: " + std::string(std::strerror(errno)));
    } catch (const std::exception& problem) {
        orvan::tellError(std::string("The printer was not asked: ") + problem.what());
    }
    return 0;
}
