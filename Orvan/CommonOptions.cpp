#include "Orvan/CommonOptions.h"

#include "Platform/Gestalt.h"
#include "Scheduler/PrintScheduler.h"

#include <algorithm>

namespace orvan {
namespace {

constexpr double kDefaultTimeout = 10; // seconds
constexpr double kLongest = 1e6;       // seconds; clocks cannot count everything

} // namespace

std::string checkPositive(const std::string& number) {
    const double seconds = numberIn(number).value_or(0);
    return seconds > 0 && seconds <= kLongest
               ? ""
               : "\"" + number + "\" is not a number above 0, such as 2.5, and at most 1000000";
}

std::string checkNotNegative(const std::string& number) {
    const double seconds = numberIn(number).value_or(-1);
    return seconds >= 0 && seconds <= kLongest
               ? ""
               : "\"" + number + "\" is not a number of 0 or more, such as 2.5, and at most 1000000";
}

std::string checkFile(const std::string& file) {
    return file.empty() ? "the name of a file is missing" : "";
}

std::string checkServer(const std::string& server) {
    return server.empty() ? "a host is missing" : "";
}

std::string checkSet(const std::string& set) {
    const std::size_t equals = set.find('=');
    const bool wellFormed = equals != std::string::npos && equals > 0 && equals + 1 < set.size();
    return wellFormed ? "" : "\"" + set + "\" is not KEYWORD=CHOICE";
}

std::string checkRelease(const std::string& release) {
    const bool wellFormed = !release.empty() &&
                            release.find_first_not_of("0123456789.") == std::string::npos &&
                            release.front() != '.' && release.back() != '.' &&
                            release.find("..") == std::string::npos && std::ranges::count(release, '.') <= 2;
    return wellFormed ? ""
                      : "\"" + release + "\" is not a release such as " + platform::kDefaultSystemRelease;
}

std::optional<std::string> queueIn(
    const Arguments& arguments, std::chrono::duration<double> time, SchedulerProblem& problem) {
    if (arguments.has("--queue")) return arguments.text("--queue");
    std::optional<std::string> queue = findDefaultQueue(time, problem);
    if (!queue || !queue->empty()) return queue;
    problem = {SchedulerProblem::Kind::unknown,
        "no queue is named, and there is no default queue at " + schedulerName() +
            ": name one with -q (\"lpstat -v\" lists them), or set a default (\"lpoptions -d QUEUE\")"};
    return std::nullopt;
}

std::chrono::duration<double> timeoutIn(const Arguments& arguments) {
    return std::chrono::duration<double>(arguments.number("--timeout").value_or(kDefaultTimeout));
}

} // namespace orvan
